// SPDX-License-Identifier: MIT
#include "runner/systemlog.h"

#include <QDebug>

namespace filmwright {

void systemLog(const QString &line)
{
    qInfo().noquote().nospace() << line;
}

QString withoutDirectives(QString format)
{
    return format.replace(QLatin1String("%%"), QLatin1String("%"));
}

void systemLogFormat(const QString &format)
{
    systemLog(withoutDirectives(format));
}

} // namespace filmwright
