// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/recording.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace mlvdump {

/// What is wrong with a recording, sentences.
struct Findings
{
    std::vector<std::string> losses;  ///< something of the recording isn't there any more
    std::vector<std::string> remarks; ///< unusual, but nothing is lost
};

/// Told now and then of the bytes that are read, on any thread, one call at a time.
using ReadingProgress = std::function<void(std::uint64_t done, std::uint64_t total)>;

/// Reads every byte of the recording and decodes every frame that is compressed, on several
/// threads. Of frames that aren't compressed every sample could be true: being there is all that
/// can be asked of them. Throws mlv::Error when frames of that recording can't be read at all.
[[nodiscard]] Findings verify(const mlv::Recording &recording, unsigned threads,
                              const ReadingProgress &progress);

} // namespace mlvdump
