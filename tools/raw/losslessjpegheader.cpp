// SPDX-License-Identifier: MIT
#include "raw/losslessjpegheader.h"

#include "raw/error.h"

namespace raw {
namespace {

namespace marker {
constexpr int startOfFrameLossless = 0xc3;
constexpr int huffmanTables = 0xc4;
constexpr int startOfImage = 0xd8;
constexpr int startOfScan = 0xda;
constexpr int restartInterval = 0xdd;
} // namespace marker

/// Takes big-endian numbers off the front of some bytes.
class ByteReader
{
public:
    explicit ByteReader(std::span<const std::byte> bytes)
        : m_bytes(bytes)
    {
    }

    std::span<const std::byte> take(std::size_t count)
    {
        if (count > m_bytes.size())
            throw Error("has a lossless picture without a whole header");
        const auto taken = m_bytes.first(count);
        m_bytes = m_bytes.subspan(count);
        return taken;
    }
    int byte() { return std::to_integer<int>(take(1)[0]); }
    int word()
    {
        const int high = byte();
        return high * 256 + byte();
    }
    std::size_t remaining() const { return m_bytes.size(); }

private:
    std::span<const std::byte> m_bytes;
};

struct Component
{
    int id;
    int sampling;
};

using Components = std::array<Component, maxComponents>;

void readTables(ByteReader segment, LosslessJpegHeader &header)
{
    while (segment.remaining() > 0) {
        const auto id = static_cast<std::size_t>(segment.byte());
        if (id >= header.tables.size())
            throw Error("has a Huffman table that no lossless picture has");
        const auto counts = segment.take(16).first<16>();
        std::size_t symbols = 0;
        for (const auto count : counts)
            symbols += std::to_integer<std::size_t>(count);
        header.tables[id].emplace(counts, segment.take(symbols));
    }
}

void readFrameHeader(ByteReader segment, LosslessJpegHeader &header, Components &components)
{
    LosslessJpegShape &shape = header.shape;
    shape.precision = segment.byte();
    shape.lines = segment.word();
    shape.width = segment.word();
    shape.components = segment.byte();
    if (shape.precision < 2 || shape.precision > 16 || shape.lines == 0 || shape.width == 0 ||
        shape.components == 0 || shape.components > static_cast<int>(maxComponents))
        throw Error("has a lossless picture of an impossible shape");
    for (int i = 0; i < shape.components; ++i) {
        auto &component = components[static_cast<std::size_t>(i)];
        component.id = segment.byte();
        component.sampling = segment.byte();
        segment.byte(); // the quantisation table, which lossless pictures do not use
        constexpr int notSubsampled = 0x11;
        if (shape.components > 1 && component.sampling != notSubsampled)
            throw Error("has a lossless picture with subsampled components");
        header.hasSamplingFactors = component.sampling != notSubsampled;
    }
}

void readScanHeader(ByteReader segment, const Components &components, LosslessJpegHeader &header)
{
    if (segment.byte() != header.shape.components)
        throw Error("has a lossless picture of several scans");
    for (std::size_t i = 0; i < static_cast<std::size_t>(header.shape.components); ++i) {
        const int id = segment.byte();
        const auto table = static_cast<std::size_t>(segment.byte() >> 4);
        if (id != components[i].id || table >= header.tables.size() || !header.tables[table])
            throw Error("has a lossless picture without its Huffman tables");
        header.tableOfComponent[i] = table;
    }
    header.predictor = segment.byte();
    segment.byte(); // the end of the spectral selection, without a meaning here
    const int pointTransform = segment.byte() & 15;
    if (header.predictor < 1 || header.predictor > 7 || pointTransform != 0)
        throw Error("has a lossless picture of a kind that can't be read");
}

} // namespace

LosslessJpegHeader readLosslessJpegHeader(std::span<const std::byte> stream)
{
    LosslessJpegHeader header{};
    Components components{};
    ByteReader reader(stream);
    if (reader.word() != 0xff00 + marker::startOfImage)
        throw Error("has a frame that is no lossless picture");
    while (true) {
        const int marker = reader.word() - 0xff00;
        const int length = reader.word();
        if (length < 2)
            throw Error("has a lossless picture without a whole header");
        ByteReader segment(reader.take(static_cast<std::size_t>(length - 2)));
        switch (marker) {
        case marker::huffmanTables:
            readTables(segment, header);
            break;
        case marker::startOfFrameLossless:
            readFrameHeader(segment, header, components);
            break;
        case marker::restartInterval:
            if (segment.word() != 0)
                throw Error("has a lossless picture with restart intervals, which can't be read");
            header.hasRestartInterval = true;
            break;
        case marker::startOfScan:
            if (header.shape.components == 0)
                throw Error("has a lossless picture without a shape");
            readScanHeader(segment, components, header);
            header.scanStart = stream.size() - reader.remaining();
            return header;
        default:
            // Application data and comments; anything else that matters has no segment of its own
            // and ends in an error here.
            if (marker < 0xe0 || marker > 0xfe)
                throw Error("has a frame that is no lossless picture");
        }
    }
}

} // namespace raw
