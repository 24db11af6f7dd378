// SPDX-License-Identifier: MIT
#include "desktop/filereveal.h"

#include "desktop/sessionbus.h"
#include "runner/systemlog.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDesktopServices>
#include <QFileInfo>
#include <QUrl>

namespace filmwright {

namespace {

void openFolder(const QString &folder)
{
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(folder)))
        systemLog(
            QStringLiteral("The folder %1 can't be shown: no file manager was found.").arg(folder));
}

} // namespace

void revealFile(const QString &path)
{
    const QFileInfo file(path);
    const QString uri = QString::fromLatin1(
        QUrl::fromLocalFile(file.absoluteFilePath()).toEncoded(QUrl::FullyEncoded));
    QDBusMessage message = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"),
        QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    message << QStringList{uri} << QString();
    callAsynchronously(sessionBus(), message, qApp,
                       [folder = file.absolutePath()](const QDBusPendingCall &shown) {
                           if (shown.isError())
                               openFolder(folder);
                       });
}

} // namespace filmwright
