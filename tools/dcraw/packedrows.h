// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/development.h"
#include "dcraw/negative.h"
#include "raw/file.h"

#include <memory>

namespace dcraw {

/// The samples of an uncompressed frame: a stream of bits, the most significant first, in which
/// each row starts on a new byte; at 16 bits little-endian words. Throws NotCovered when the strip
/// is too short for the frame. The rows are read from the file when they are asked for, and that
/// throws raw::Error.
std::unique_ptr<SampleRows> packedRows(raw::File file, const Negative &negative);

} // namespace dcraw
