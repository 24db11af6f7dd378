// SPDX-License-Identifier: MIT
#include "app/plaintext.h"

#include <QTextDocument>

namespace filmwright {

QString shownAsItStands(const QString &text)
{
    return Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text, Qt::WhiteSpaceNormal) : text;
}

} // namespace filmwright
