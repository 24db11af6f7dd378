// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <stdexcept>
#include <vector>

namespace mlv {

/// Where the data of a video or audio block lie.
struct DataBlock
{
    std::uint64_t offset;    ///< of the data in the chunk's file
    std::uint64_t timestamp; ///< microseconds
    std::uint32_t size;      ///< of the data, bytes
    std::uint32_t number;    ///< of the frame, counted apart for video and audio
    std::uint16_t chunk;     ///< index into Recording::chunks()
    std::uint16_t cropX = 0; ///< of the frame's corner in the sensor's read-out; video only
    std::uint16_t cropY = 0;
};

/// The blocks of one kind, ascending by number, each number once.
using DataIndex = std::vector<DataBlock>;

/// Where a block that tells of the camera lies.
struct SettingsBlock
{
    std::uint64_t offset; ///< in the chunk's file
    std::uint16_t chunk;  ///< index into Recording::chunks()
};

/// By which a file is known again.
struct FileMark
{
    std::uint64_t size;    ///< bytes
    std::int64_t modified; ///< nanoseconds since 1970
    bool operator==(const FileMark &) const = default;
};

/// What the opening of a recording finds by reading something of every block: with it, it needs a
/// moment, however long the recording is.
struct RecordingIndex
{
    std::uint64_t guid;                  ///< of the recording
    std::vector<FileMark> chunks;        ///< their files
    std::vector<SettingsBlock> settings; ///< in the order in which they were met
    DataIndex videoFrames;
};

/// The index is not that of the recording.
class ForeignIndex : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

} // namespace mlv
