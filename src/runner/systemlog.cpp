// SPDX-License-Identifier: MIT
#include "runner/systemlog.h"

#include <QDebug>

namespace filmwright {

void systemLog(const QString &line)
{
    qInfo().noquote().nospace() << line;
}

void systemLogFormat(QString format)
{
    systemLog(format.replace(QLatin1String("%%"), QLatin1String("%")));
}

} // namespace filmwright
