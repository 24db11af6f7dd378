// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/recording.h"
#include "mlv_dump/output.h"

namespace mlvdump {

/// Prints what stands in the recording, block by block in file order, one file header a chunk.
///
/// A reader finds a block by its header line, which stands alone, and takes each value from a fixed
/// line behind it, there from behind the first ":"; nothing else is printed between the lines of a
/// block. The frame counts are those of the frames and sound blocks that can be read, since a
/// recording that was not closed says 0 and one that was cut off says too many.
void printReport(const mlv::Recording &recording, Output &output);

} // namespace mlvdump
