// SPDX-License-Identifier: MIT
#include "desktop/desktopnotification.h"

#include "desktop/sessionbus.h"
#include "runner/systemlog.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingReply>

namespace filmwright {

namespace {

/// The service's own choice of how long a notification stays.
constexpr int defaultTimeout = -1;

QDBusMessage notificationsCall(const QString &method)
{
    return QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.Notifications"),
                                          QStringLiteral("/org/freedesktop/Notifications"),
                                          QStringLiteral("org.freedesktop.Notifications"), method);
}

void notify(const QString &title, const QString &body)
{
    QDBusMessage message = notificationsCall(QStringLiteral("Notify"));
    message << QStringLiteral("Filmwright") << 0U << QString(applicationId) << title << body
            << QStringList()
            << QVariantMap{{QStringLiteral("desktop-entry"), QString(applicationId)}}
            << defaultTimeout;
    callAsynchronously(sessionBus(), message, qApp, [](const QDBusPendingCall &shown) {
        const QDBusError error = shown.error();
        // That there is no bus was told once and for all.
        if (error.isValid() && error.type() != QDBusError::Disconnected)
            systemLog(QStringLiteral("No notification can be shown: %1").arg(error.message()));
    });
}

} // namespace

void showDesktopNotification(const QString &title, const QString &text)
{
    // Services that read a text as markup say so; there, a file name such as "a<b>.MLV" is escaped.
    callAsynchronously(sessionBus(), notificationsCall(QStringLiteral("GetCapabilities")), qApp,
                       [title, text](const QDBusPendingReply<QStringList> &reply) {
                           const bool markup =
                               reply.isValid() &&
                               reply.value().contains(QStringLiteral("body-markup"));
                           notify(title, markup ? text.toHtmlEscaped() : text);
                       });
}

} // namespace filmwright
