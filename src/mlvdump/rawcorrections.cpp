// SPDX-License-Identifier: MIT
#include "mlvdump/rawcorrections.h"

#include <utility>

namespace filmwright {

QStringList RawCorrections::arguments() const
{
    const std::pair<QString, QString> options[] = {
        {QStringLiteral("--white-level"), whiteLevel},
        {QStringLiteral("--black-level"), blackLevel},
        {QStringLiteral("--matrix"), matrix},
        {QStringLiteral("--repair-pixels"), pixelRepair},
    };
    QStringList arguments;
    for (const auto &[option, value] : options) {
        if (!value.isEmpty())
            arguments << option << value;
    }
    if (repairsColumns)
        arguments << QStringLiteral("--repair-columns");
    return arguments;
}

QString RawCorrections::pixelMap() const
{
    return pixelRepair == QLatin1String("auto") ? QString() : pixelRepair;
}

} // namespace filmwright
