// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/development.h"
#include "dcraw/options.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace dcraw {

/// A frame that is ready to be developed: everything has been read, nothing written.
struct Frame
{
    Development development;
    std::unique_ptr<SampleRows> samples;
    std::vector<std::byte> head; ///< of the TIFF
};

/// Reads the DNG. Throws NotCovered, raw::Error or another std::exception when the real dcraw has
/// to do the work.
Frame readFrame(const Options &options);

} // namespace dcraw
