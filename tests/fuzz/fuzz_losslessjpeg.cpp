// SPDX-License-Identifier: MIT
// The lossless decoder on arbitrary bytes.
#include "mlv/error.h"
#include "mlv/losslessjpeg.h"

#include <cstdlib>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const auto stream = std::as_bytes(std::span(data, size));
    try {
        const auto count = mlv::losslessJpegShape(stream).sampleCount();
        if (count / 8 > size) {
            return 0; // nobody who reads a recording gets this far
        }
        std::vector<std::uint16_t> samples(count);
        if (mlv::decodeLosslessJpeg(stream, samples) > size) {
            std::abort();
        }
    } catch (const mlv::Error &) {
        return 0;
    }
    return 0;
}
