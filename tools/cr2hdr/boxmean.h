// SPDX-License-Identifier: MIT
#pragma once

#include "cr2hdr/frame.h"

namespace dualiso {

/// Each value replaced by the mean of the values up to `reachX` columns and `reachY` rows away;
/// beyond the edges by mirrored ones.
Frame boxMean(const Frame &frame, int reachX, int reachY, int threads);

} // namespace dualiso
