// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/blocks.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <vector>

/// A recording for a test, block by block. The first chunk of an uncompressed recording at 25
/// frames a second unless the header is changed.
class RecordingBuilder
{
public:
    static constexpr int width = 32; ///< dcraw reads no frames of less than 22 rows
    static constexpr int height = 24;
    static constexpr int bits = 14;
    static constexpr int black = 2048;
    static constexpr std::uint32_t frameTime = 40000; ///< microseconds

    RecordingBuilder();

    mlv::FileHeader header;

    /// A RAWI block of the size, depth and levels above.
    static mlv::RawInfo rawInfo();
    /// A WAVI block of 8000 mono samples a second, 16 bits.
    static mlv::WaveInfo waveInfo();
    /// A packed frame whose samples all have that level.
    static QByteArray frameOf(std::uint16_t level);

    /// Adds a block: its layout, then more data.
    template <typename Layout>
    RecordingBuilder &add(mlv::BlockType type, const Layout &layout, std::uint64_t timestamp = 1,
                          const QByteArray &more = {})
    {
        const auto bytes = mlv::encodeLayout(layout);
        return addBytes(type,
                        QByteArray(reinterpret_cast<const char *>(bytes.data()),
                                   static_cast<qsizetype>(bytes.size())) +
                            more,
                        timestamp);
    }
    /// Adds a block with that data behind its header.
    RecordingBuilder &addBytes(mlv::BlockType type, const QByteArray &data,
                               std::uint64_t timestamp = 1);
    RecordingBuilder &addRawInfo() { return add(mlv::blocktype::rawInfo, rawInfo()); }
    /// Adds a frame of one level at the time that its number gives.
    RecordingBuilder &addFrame(std::uint32_t number, std::uint16_t level);
    /// Adds a frame with other data.
    RecordingBuilder &addFrameData(std::uint32_t number, const QByteArray &data);
    RecordingBuilder &addSound(std::uint32_t number, const QByteArray &data,
                               std::uint64_t timestamp = 0);
    /// Adds bytes that are no block.
    RecordingBuilder &addRaw(const QByteArray &bytes);

    QByteArray bytes() const;
    /// Writes the recording and answers the path.
    QString write(const QString &path) const;

private:
    QByteArray m_blocks;
};
