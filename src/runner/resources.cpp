// SPDX-License-Identifier: MIT
#include "runner/resources.h"

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>

namespace filmwright {

QStringList resourceFolders()
{
    QStringList folders;
    const QString chosen = qEnvironmentVariable("FILMWRIGHT_RESOURCES");
    if (!chosen.isEmpty())
        folders << QDir(chosen).absolutePath();
    const QDir programs(QCoreApplication::applicationDirPath());
    folders << QDir::cleanPath(programs.filePath(QStringLiteral("../libexec/filmwright")))
            << QDir::cleanPath(programs.filePath(QStringLiteral("../resources")));
    return folders;
}

QString resourcePath(const QString &name)
{
    const QString bundled = QStandardPaths::findExecutable(name, resourceFolders());
    return bundled.isEmpty() ? QStandardPaths::findExecutable(name) : bundled;
}

QStringList missingTools(const QStringList &names)
{
    QStringList sentences;
    for (const QString &name : names) {
        if (resourcePath(name).isNull()) {
            sentences << QStringLiteral("the tool %1 was not found; it was looked for in "
                                        "%2 and in the folders of PATH")
                             .arg(name, resourceFolders().join(QStringLiteral(", ")));
        }
    }
    return sentences;
}

} // namespace filmwright
