// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/picture.h"

namespace dcraw {

/// Replaces the differences of red and blue to green by the median of three by three, `passes`
/// times, on `threads` threads.
void filterByMedian(Picture &picture, int passes, unsigned threads);

} // namespace dcraw
