// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

namespace filmwright {

/// `filmwright-cli recipes`: the recipes that are found, and why one of them can't be used. Returns
/// the exit status.
int runRecipes(const QStringList &arguments);

} // namespace filmwright
