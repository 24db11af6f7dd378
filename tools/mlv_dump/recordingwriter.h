// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/frameformat.h"
#include "mlv/recording.h"
#include "output/outputfile.h"

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

namespace mlvdump {

/// Writes an uncompressed recording of one chunk that has the metadata of another one.
class RecordingWriter
{
public:
    /// Begins the file with all blocks of the source but its frames, its sound and its fillers, as
    /// they stand. Throws output::WriteError or raw::ReadError.
    RecordingWriter(const mlv::Recording &source, const std::filesystem::path &path,
                    std::uint32_t frameCount);

    /// Adds a frame of the source's format. Throws output::WriteError.
    void addFrame(std::uint32_t number, std::uint64_t timestamp,
                  std::span<const std::uint16_t> samples);

    /// Completes the file and waits until it is on the disk. Throws output::WriteError.
    void commit();

private:
    void writeHeader(const mlv::FileHeader &source, std::uint32_t frameCount);
    void copyMetadata(const mlv::Chunk &chunk);

    mlv::FrameFormat m_format;
    output::OutputFile m_file;
    std::vector<std::byte> m_packed;
};

} // namespace mlvdump
