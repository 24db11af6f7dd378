// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

namespace filmwright {

/// `filmwright-cli info`: what the recordings say of themselves, as text or as one JSON array.
/// Returns the exit status.
int runInfo(const QStringList &arguments);

} // namespace filmwright
