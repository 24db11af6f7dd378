// SPDX-License-Identifier: MIT
#include "conversion/dcrawarguments.h"

#include "runner/files.h"
#include "runner/fixedtext.h"

namespace filmwright {

namespace {

// What a frame needs at exposure 1 to look as the camera showed it: DNG frames are linear and keep
// headroom that dcraw doesn't remove without its automatic brightening.
constexpr float brightnessOfExposure = 4.0F;

} // namespace

QStringList dcRawArguments(const QString &dngPath, float exposure, const QStringList &develop)
{
    const float brightness = exposure * brightnessOfExposure;
    return develop + QStringList{QStringLiteral("-H"),
                                 QStringLiteral("3"),
                                 QStringLiteral("-q"),
                                 QStringLiteral("3"),
                                 QStringLiteral("-w"),
                                 QStringLiteral("-W"),
                                 QStringLiteral("-T"),
                                 QStringLiteral("-b"),
                                 fixedText(static_cast<double>(brightness), 6),
                                 dngPath};
}

QString tiffPathFor(const QString &dngPath)
{
    return pathWithExtension(dngPath, QStringLiteral("tiff"));
}

} // namespace filmwright
