// SPDX-License-Identifier: MIT
#include "mlvdump/rawcorrections.h"

#include <QList>
#include <QRegularExpression>

#include <algorithm>
#include <utility>

namespace filmwright {

QStringList RawCorrections::arguments() const
{
    const std::pair<QString, QString> options[] = {
        {QStringLiteral("--white-level"), whiteLevel},
        {QStringLiteral("--black-level"), blackLevel},
        {QStringLiteral("--matrix"), matrix},
        {QStringLiteral("--repair-pixels"), pixelRepair},
        {QStringLiteral("--white-balance"), whiteBalance},
        {QStringLiteral("--exposure"), exposure == 0 ? QString() : exposureValueText(exposure)},
    };
    QStringList arguments;
    for (const auto &[option, value] : options)
        if (!value.isEmpty())
            arguments << option << value;
    if (repairsColumns)
        arguments << QStringLiteral("--repair-columns");
    return arguments;
}

QString RawCorrections::pixelMap() const
{
    return pixelRepair == QLatin1String("auto") ? QString() : pixelRepair;
}

bool isWhiteBalance(const QString &text)
{
    if (text == QLatin1String("auto"))
        return true;
    static const QRegularExpression decimal(QStringLiteral("^\\d{1,6}(\\.\\d{1,6})?$"));
    const QStringList numbers = text.split(QLatin1Char(','));
    QList<double> values;
    for (const QString &number : numbers) {
        if (!decimal.match(number).hasMatch())
            return false;
        values << number.toDouble();
    }
    if (values.size() == 1)
        return values.constFirst() >= 2000 && values.constFirst() <= 25000;
    // Against green's; what is a hundred times stronger belongs to no light.
    const auto isModerate = [&values](double value) {
        return value > 0 && value / values.at(1) <= 100 && values.at(1) / value <= 100;
    };
    return values.size() == 3 && values.at(1) > 0 &&
           std::all_of(values.cbegin(), values.cend(), isModerate);
}

QString exposureValueText(double exposure)
{
    return QString::number(exposure, 'g', 4);
}

} // namespace filmwright
