// SPDX-License-Identifier: MIT
#pragma once

#include <QLatin1String>

namespace filmwright {

// What mlv_dump calls a recording's frames and sound in its working folder: tmp000000.dng … and
// tmp.wav. dcraw puts its TIFFs beside the frames, under their names.

inline constexpr QLatin1String extractedStem("tmp");
inline constexpr QLatin1String extractedSound("tmp.wav");

} // namespace filmwright
