// SPDX-License-Identifier: MIT
#include "desktop/filereveal.h"

#include "desktop/sessionbus.h"
#include "runner/systemlog.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDesktopServices>
#include <QFileInfo>
#include <QPointer>
#include <QUrl>

namespace filmwright {

namespace {

/// Empty when it is open, or is going to be.
QString openFolder(const QString &folder)
{
    if (QDesktopServices::openUrl(QUrl::fromLocalFile(folder)))
        return {};
    return QStringLiteral("No file manager was found that shows %1").arg(folder);
}

} // namespace

void revealFile(const QString &path, const QObject *context,
                std::function<void(const QString &error)> told)
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
                       [folder = file.absolutePath(), listener = QPointer<const QObject>(context),
                        told = std::move(told)](const QDBusPendingCall &shown) {
                           const QString error = shown.isError() ? openFolder(folder) : QString();
                           if (error.isEmpty())
                               return;
                           systemLog(error);
                           if (listener && told)
                               told(error);
                       });
}

} // namespace filmwright
