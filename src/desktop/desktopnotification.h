// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace filmwright {

/// Shows a notification of the desktop (org.freedesktop.Notifications) with a plain text; where
/// there is no such service, one log line says so. Main thread only; needs its event loop, returns
/// at once.
void showDesktopNotification(const QString &title, const QString &text);

} // namespace filmwright
