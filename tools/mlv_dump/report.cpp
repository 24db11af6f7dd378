// SPDX-License-Identifier: MIT
#include "mlv_dump/report.h"

#include "mlv_dump/frameplan.h"
#include "mlv_dump/reportblocks.h"
#include "mlv_dump/text.h"

#include <algorithm>

namespace mlvdump {
namespace {

long countInChunk(const mlv::DataIndex &index, std::size_t chunk)
{
    return std::count_if(index.begin(), index.end(),
                         [chunk](const mlv::DataBlock &block) { return block.chunk == chunk; });
}

void printFileHeader(const mlv::Recording &recording, std::size_t chunk, Output &output)
{
    const auto &header = recording.chunks()[chunk].header();
    output.line("File Header (MLVI)");
    output.line(format("    Size        : 0x%08X", header.size));
    output.line("    Ver         : " + harmless(header.version));
    output.line(format("    GUID        : %llu", static_cast<unsigned long long>(header.guid)));
    output.line(format("    FPS         : %f", mlv::framesPerSecond(header)));
    output.line(format("    File        : %d / %d", header.chunk, header.chunkCount));
    output.line(format("    Frames Video: %ld", countInChunk(recording.videoFrames(), chunk)));
    output.line(format("    Frames Audio: %ld", countInChunk(recording.audioBlocks(), chunk)));
    output.line(format("    Class Video : 0x%08X", unsigned{header.videoClass}));
    output.line(format("    Class Audio : 0x%08X", unsigned{header.audioClass}));
}

} // namespace

void printReport(const mlv::Recording &recording, Output &output)
{
    for (std::size_t i = 0; i < recording.chunks().size(); ++i) {
        const auto &chunk = recording.chunks()[i];
        printFileHeader(recording, i, output);
        mlv::BlockWalk walk(chunk);
        while (const auto block = walk.next())
            printBlock(chunk, walk, *block, output);
    }
    const auto frames = planFrames(recording.videoFrames(), {}).frames.size();
    if (frames != recording.videoFrames().size())
        output.line(format("Frames with filled gaps: %zu", frames));
    output.flush();
}

} // namespace mlvdump
