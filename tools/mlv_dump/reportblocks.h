// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/chunk.h"
#include "mlv_dump/output.h"

namespace mlvdump {

/// Prints the header line of the block that the walk gave last, where it stands and how large it
/// is, and, of the kinds that are known, its fields.
void printBlock(const mlv::Chunk &chunk, mlv::BlockWalk &walk, const mlv::Block &block,
                Output &output);

} // namespace mlvdump
