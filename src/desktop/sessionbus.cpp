// SPDX-License-Identifier: MIT
#include "desktop/sessionbus.h"

#include "runner/systemlog.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>

namespace filmwright {

QDBusConnection sessionBus()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    static bool told = false;
    if (!bus.isConnected() && !told) {
        told = true;
        systemLog(
            QStringLiteral("No session bus: the display may go to sleep during a batch, there "
                           "are no notifications, and a second start stands alone."));
    }
    return bus;
}

void callAsynchronously(const QDBusConnection &bus, const QDBusMessage &message, QObject *context,
                        std::function<void(const QDBusPendingCall &)> answered)
{
    // Without a bus, Qt's own call would never be heard of again.
    const QDBusPendingCall call =
        bus.isConnected() ? bus.asyncCall(message)
                          : QDBusPendingCall::fromError(
                                QDBusError(QDBusError::Disconnected, QStringLiteral("no bus")));
    auto *watcher = new QDBusPendingCallWatcher(call, context);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context,
                     [answered = std::move(answered)](QDBusPendingCallWatcher *finished) {
                         finished->deleteLater();
                         answered(*finished);
                     });
}

} // namespace filmwright
