// SPDX-License-Identifier: MIT
// A lossless JPEG encoder (ITU-T T.81, process 14) for raw frames.
#pragma once

#include "mlv_sample/settings.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace sample {

/// A complete stream of the frame's samples. `width` and `height` are even, `samples` holds their
/// product, each sample below 2^bits; `predictor` is 1 to 7.
std::vector<std::byte> encodeLosslessJpeg(std::span<const std::uint16_t> samples, int width,
                                          int height, int bits, LosslessShape shape, int predictor);

} // namespace sample
