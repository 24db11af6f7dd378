// SPDX-License-Identifier: MIT
// The blocks of a recording that describe it.
#pragma once

#include "mlv_sample/settings.h"

#include "mlv/blocks.h"

#include <cstdint>
#include <string>

namespace sample {

/// Of file `chunk`, from 0, with frame counts of 0: they are set when the file is closed.
mlv::FileHeader fileHeader(const Settings &settings, int chunk);
mlv::RawInfo rawInfo(const Settings &settings);
mlv::RawInfo laterRawInfo(const Settings &settings); ///< for settings with levels for halfway
mlv::RawCapture rawCapture(const Settings &settings);
mlv::Identity identity(const Settings &settings);
mlv::Clock clock();
mlv::Lens lens(int focalLength); ///< mm
mlv::WhiteBalance whiteBalance(const Settings &settings);
mlv::WaveInfo waveInfo();
mlv::DualIso dualIso(const Settings &settings); ///< for settings with a second sensitivity
std::string versionText();
std::string infoText(const Settings &settings);

/// `stops` brighter than the settings say.
mlv::Exposure exposure(const Settings &settings, double stops);

} // namespace sample
