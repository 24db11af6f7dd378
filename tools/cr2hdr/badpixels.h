// SPDX-License-Identifier: MIT
#pragma once

#include "cr2hdr/frame.h"
#include "cr2hdr/model.h"

namespace dualiso {

/// Replaces single values that stand out of their eight neighbours of the same colour, in a frame
/// whose exposures are matched: interpolation would make spots of them.
void repairBadPixels(Frame &frame, const Model &model, int threads);

} // namespace dualiso
