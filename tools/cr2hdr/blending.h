// SPDX-License-Identifier: MIT
#pragma once

#include "cr2hdr/frame.h"
#include "cr2hdr/model.h"

namespace dualiso {

/// Blends the two exposures of a frame into one picture of the low rows' exposure: high rows scaled
/// to it, light and detail from whichever is better at each place.
///
/// Threads: the work is dealt out to `threads` threads.
void blend(Frame &frame, const Model &model, int threads);

} // namespace dualiso
