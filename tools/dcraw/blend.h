// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/development.h"
#include "dcraw/picture.h"

namespace dcraw {

/// Takes saturation from pixels with a colour above the lowest of the three saturation levels: as
/// much as limiting all colours to that level would take.
void blendHighlights(const Development &development, Picture &rows);

} // namespace dcraw
