// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

namespace filmwright {

/// `filmwright-cli convert`: runs an event loop until all recordings are done or a signal comes.
/// Returns the exit status.
int runConvert(const QStringList &arguments);

} // namespace filmwright
