// SPDX-License-Identifier: MIT
#include "app/plaintext.h"

#include <QTextDocument>

namespace filmwright {

QString shownAsItStands(const QString &text)
{
    return Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text, Qt::WhiteSpaceNormal) : text;
}

QStringList shortened(QStringList lines)
{
    constexpr qsizetype longest = 15;
    if (lines.size() <= longest)
        return lines;
    const auto left = lines.size() - longest;
    return lines.mid(0, longest) << QStringLiteral("… and %1 more").arg(left);
}

} // namespace filmwright
