// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace filmwright {

// Keeps the display awake by org.freedesktop.ScreenSaver on the session bus. One inhibition at a
// time; it ends with the process, however that ends. Main thread only; each call waits for the
// service at most a second.

/// Asks for an inhibition. Returns its cookie, or 0 when there is none to be had; one log line then
/// says so.
quint32 inhibitDisplaySleep(const QString &reason);

/// Ends the inhibition of that cookie.
void uninhibitDisplaySleep(quint32 cookie);

} // namespace filmwright
