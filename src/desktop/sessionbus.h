// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>
#include <QDBusPendingCall>

#include <functional>

class QObject;

namespace filmwright {

/// The application's name on the bus and the id of its desktop entry.
inline constexpr QLatin1String applicationId("org.filmwright.Filmwright");

/// The session bus; without one, the answer is not connected, and one log line a process tells what
/// the person has to do without. Main thread only.
QDBusConnection sessionBus();

/// Sends the call and returns at once; its answer, or its error, arrives from the event loop as
/// long as the context lives. A bus that isn't there is an error of type QDBusError::Disconnected.
void callAsynchronously(const QDBusConnection &bus, const QDBusMessage &message, QObject *context,
                        std::function<void(const QDBusPendingCall &)> answered);

} // namespace filmwright
