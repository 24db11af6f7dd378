// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

namespace filmwright {

/// Tells on standard error which of the tools are found nowhere, and where they were looked for.
/// True when all are there.
bool checkTools(const QStringList &names);

} // namespace filmwright
