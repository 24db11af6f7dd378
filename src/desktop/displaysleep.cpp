// SPDX-License-Identifier: MIT
#include "desktop/displaysleep.h"

#include "desktop/sessionbus.h"
#include "runner/systemlog.h"

#include <QDBusMessage>
#include <QDBusReply>

#include <chrono>

namespace filmwright {

namespace {

using namespace std::chrono_literals;
constexpr std::chrono::milliseconds inhibitionPatience = 1s;

/// The inhibition has a connection of its own: closing it also takes back a grant that came after
/// nobody waited for it any more.
const QString connectionName = QStringLiteral("display-sleep");

QDBusMessage callScreenSaver(const QString &method, const QVariantList &arguments)
{
    QDBusMessage message =
        QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.ScreenSaver"),
                                       QStringLiteral("/org/freedesktop/ScreenSaver"),
                                       QStringLiteral("org.freedesktop.ScreenSaver"), method);
    message.setArguments(arguments);
    return QDBusConnection(connectionName)
        .call(message, QDBus::Block, static_cast<int>(inhibitionPatience.count()));
}

} // namespace

quint32 inhibitDisplaySleep(const QString &reason)
{
    if (!sessionBus().isConnected())
        return 0;
    QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName);
    const QDBusReply<quint32> cookie =
        callScreenSaver(QStringLiteral("Inhibit"), {QStringLiteral("Filmwright"), reason});
    if (cookie.isValid())
        return cookie;
    QDBusConnection::disconnectFromBus(connectionName);
    systemLog(QStringLiteral("The display may go to sleep: %1").arg(cookie.error().message()));
    return 0;
}

void uninhibitDisplaySleep(quint32 cookie)
{
    callScreenSaver(QStringLiteral("UnInhibit"), {cookie});
    QDBusConnection::disconnectFromBus(connectionName);
}

} // namespace filmwright
