// SPDX-License-Identifier: MIT
// How fast one core decodes lossless frames, without reading or writing files: decodes the frames
// of a recording, ROUNDS times, and prints megapixels a second for each.
//
// Usage: benchmark_lossless RECORDING... (made with mlv_sample --compress lossless)
#include "mlv/recording.h"
#include "raw/losslessjpeg.h"

#include <cstdio>
#include <ctime>
#include <exception>
#include <vector>

namespace {

constexpr int rounds = 5;

/// Of this program on its core, seconds: what others do on the machine does not count.
double timeSpent()
{
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

void measure(const char *path)
{
    const mlv::Recording recording(path);
    std::vector<std::vector<std::byte>> streams;
    for (const auto &frame : recording.videoFrames()) {
        streams.emplace_back(frame.size);
        recording.read(frame, streams.back());
    }
    std::vector<std::uint16_t> samples(raw::losslessJpegShape(streams.at(0)).sampleCount());
    std::printf("%s:", path);
    for (int round = 0; round < rounds; ++round) {
        const double begin = timeSpent();
        for (const auto &stream : streams)
            raw::decodeLosslessJpeg(stream, samples);
        const double seconds = timeSpent() - begin;
        const auto megapixels = static_cast<double>(samples.size() * streams.size()) / 1e6;
        std::printf(" %.0f", megapixels / seconds);
    }
    std::puts(" megapixels/s");
}

} // namespace

int main(int argc, char **argv)
{
    try {
        for (int i = 1; i < argc; ++i)
            measure(argv[i]);
        return 0;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
