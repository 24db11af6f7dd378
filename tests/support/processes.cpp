// SPDX-License-Identifier: MIT
#include "support/processes.h"

#include <QFile>

bool processRuns(qint64 pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return false;
    const QByteArray fields = stat.readAll();
    const char state = fields.mid(fields.lastIndexOf(')') + 2, 1).at(0);
    return state != 'Z' && state != 'X';
}
