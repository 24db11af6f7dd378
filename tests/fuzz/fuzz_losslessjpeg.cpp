// SPDX-License-Identifier: MIT
// The lossless decoder on arbitrary bytes.
#include "raw/error.h"
#include "raw/losslessjpeg.h"

#include <cstdlib>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const auto stream = std::as_bytes(std::span(data, size));
    try {
        const auto count = raw::losslessJpegShape(stream).sampleCount();
        if (count / 8 > size)
            return 0; // nobody who reads a recording gets this far
        std::vector<std::uint16_t> samples(count);
        if (raw::decodeLosslessJpeg(stream, samples) > size)
            std::abort();
    } catch (const raw::Error &) {
        return 0;
    }
    return 0;
}
