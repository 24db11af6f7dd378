// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace filmwright {

/// The pixels of a frame whose resolution is given as in a recording's report, "1920x1080"; 0 for
/// any other text.
double pixelsOf(const QString &resolution);

} // namespace filmwright
