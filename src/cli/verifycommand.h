// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

namespace filmwright {

/// `verify`: reads recordings whole and tells what of them is lost. Returns the exit status.
int runVerify(const QStringList &arguments);

} // namespace filmwright
