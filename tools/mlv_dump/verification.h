// SPDX-License-Identifier: MIT
#pragma once

#include "mlv_dump/wholereading.h"

#include <string>
#include <vector>

namespace mlvdump {

/// What is wrong with a recording, sentences.
struct Findings
{
    std::vector<std::string> losses;  ///< something of the recording isn't there any more
    std::vector<std::string> remarks; ///< unusual, but nothing is lost
};

/// Reads the whole recording, see readWhole(), and holds its blocks against each other. Throws
/// raw::Error when frames of that recording can't be read at all.
Findings verify(const mlv::Recording &recording, unsigned threads, const ReadingProgress &progress);

} // namespace mlvdump
