// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace filmwright {

/// Writes one line to the system log: the message alone, without a prefix. Any thread.
void systemLog(const QString &line);

/// What a format string prints that has no arguments: "%%" becomes "%", every other directive stays
/// as it stands, so no text can read what isn't there. Any thread.
QString withoutDirectives(QString format);

/// Writes text that came from a tool as if it were such a format string. Any thread.
void systemLogFormat(const QString &format);

} // namespace filmwright
