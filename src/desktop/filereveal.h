// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace filmwright {

/// Shows the file, selected, in the desktop's file manager (org.freedesktop.FileManager1); where
/// none offers that, opens the folder that holds it. Main thread only; needs its event loop,
/// returns at once.
void revealFile(const QString &path);

} // namespace filmwright
