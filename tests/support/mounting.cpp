// SPDX-License-Identifier: MIT
#include "support/mounting.h"
#include "support/programrun.h"

#include <QProcess>
#include <QTemporaryDir>

namespace {

Mounting tried()
{
    const QTemporaryDir folder;
    const QString unshare = QStringLiteral("unshare");
    const QString mount = QStringLiteral("--mount");
    Mounting mounting;
    for (const QStringList &prefix :
         {QStringList{unshare, mount},
          QStringList{unshare, QStringLiteral("--map-root-user"), mount}}) {
        const Ended mounted =
            runProgram(prefix.first(),
                       prefix.mid(1) + QStringList{QStringLiteral("mount"), QStringLiteral("-t"),
                                                   QStringLiteral("tmpfs"), QStringLiteral("tmpfs"),
                                                   folder.path()});
        if (mounted.status == 0)
            return {prefix, {}};
        mounting.skipReason = QStringLiteral("no file system can be mounted here: ") +
                              QString::fromLocal8Bit(mounted.errors).trimmed();
    }
    return mounting;
}

} // namespace

const Mounting &Mounting::here()
{
    static const Mounting mounting = tried();
    return mounting;
}
