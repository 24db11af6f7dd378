// SPDX-License-Identifier: MIT
// Scenes that look like the faults of a sensor, and one in which such faults stand out.
#pragma once

#include "mlv_sample/camera.h"
#include "mlv_sample/settings.h"

namespace sample {

/// The linear sRGB colour of a scene at the pixel (x, y) of a frame; 1 is white, light sources are
/// brighter. All are seen through a lens: no point of light is narrower than about a pixel and a
/// half. For the subjects from Stars on.
Rgb sceneryColour(Subject subject, int x, int y, int frame);

} // namespace sample
