// SPDX-License-Identifier: MIT
// The sound of a recording: a soft hum, and a tick whenever the lamp goes on.
#pragma once

#include "mlv_sample/settings.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace sample {

constexpr int soundRate = 48000;
constexpr int soundChannels = 2;

/// `count` sample frames (left and right, interleaved) from sample frame `first` on, counted from
/// the start of the picture; `first` may be negative.
std::vector<std::int16_t> makeSound(const Settings &settings, std::int64_t first,
                                    std::size_t count);

} // namespace sample
