// SPDX-License-Identifier: MIT
#include "project/framesize.h"

#include <QStringList>

namespace filmwright {

double pixelsOf(const QString &resolution)
{
    const QStringList sides = resolution.split(QLatin1Char('x'));
    if (sides.size() != 2)
        return 0;
    return static_cast<double>(sides.first().toUInt()) * static_cast<double>(sides.last().toUInt());
}

} // namespace filmwright
