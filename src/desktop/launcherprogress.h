// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

namespace filmwright {

/// Shows on the application's icon in docks and task bars how far a batch is, 0 to 1; without a
/// value, that none runs. Told by the signal com.canonical.Unity.LauncherEntry.Update of the
/// session bus, which many desktops heed; where nobody does, it is lost. Main thread only.
void showLauncherProgress(std::optional<double> part);

} // namespace filmwright
