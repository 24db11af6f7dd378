// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace filmwright {

/// Writes one line to the system log: the message alone, without a prefix. Any thread.
void systemLog(const QString &line);

/// Writes text that came from a tool as if it were a format string without arguments: "%%" becomes
/// "%", every other directive stays as it stands, so no text can read what isn't there. Any thread.
void systemLogFormat(QString format);

} // namespace filmwright
