// SPDX-License-Identifier: MIT
#include "raw/losslessjpeg.h"

#include "raw/losslessjpegheader.h"

#include "raw/bitreader.h"
#include "raw/error.h"
#include "raw/scandata.h"

#include <algorithm>

namespace raw {
namespace {

using Tables = std::array<const HuffmanTable *, maxComponents>;

/// The scan's state: where samples are predicted from and written to.
struct Scan
{
    BitReader reader;
    std::uint16_t *line; ///< of the frame, all components
    std::size_t lineLength;
    Tables tables;
    std::size_t components;
    bool invalid = false;
};

template <int predictor>
std::uint16_t predict(const std::uint16_t *sample, std::size_t left, std::size_t above)
{
    const int a = sample[-static_cast<std::ptrdiff_t>(left)];
    if constexpr (predictor == 1) {
        return static_cast<std::uint16_t>(a);
    } else {
        const int b = sample[-static_cast<std::ptrdiff_t>(above)];
        const int c = sample[-static_cast<std::ptrdiff_t>(above + left)];
        switch (predictor) {
        case 2:
            return static_cast<std::uint16_t>(b);
        case 3:
            return static_cast<std::uint16_t>(c);
        case 4:
            return static_cast<std::uint16_t>(a + b - c);
        case 5:
            return static_cast<std::uint16_t>(a + ((b - c) >> 1));
        case 6:
            return static_cast<std::uint16_t>(b + ((a - c) >> 1));
        default:
            return static_cast<std::uint16_t>((a + b) >> 1);
        }
    }
}

std::uint16_t add(std::uint16_t prediction, std::uint16_t difference)
{
    return static_cast<std::uint16_t>(prediction + difference);
}

/// The samples of a line behind its first of each component. With `fixedComponents` above 0 the
/// compiler knows their number.
template <int predictor, std::size_t fixedComponents>
void decodeRestOfLine(Scan &scan)
{
    const std::size_t components = fixedComponents > 0 ? fixedComponents : scan.components;
    // As many whole sets of components as one refill is enough for.
    const std::size_t groupSize =
        fixedComponents > 0 ? HuffmanTable::differencesPerRefill / fixedComponents * fixedComponents
                            : components;
    static_assert(maxComponents <= HuffmanTable::differencesPerRefill);
    BitReader reader = scan.reader; // a copy stays in registers
    const Tables tables = scan.tables;
    bool invalid = false;
    std::uint16_t *sample = scan.line + components;
    std::uint16_t *const end = scan.line + scan.lineLength;
    const auto decode = [&](std::size_t count) {
        reader.refill();
        for (std::size_t i = 0; i < count; ++i, ++sample) {
            const auto difference = tables[i % components]->decode(reader, invalid);
            *sample = add(predict<predictor>(sample, components, scan.lineLength), difference);
        }
    };
    while (static_cast<std::size_t>(end - sample) >= groupSize)
        decode(groupSize);
    if (sample < end)
        decode(static_cast<std::size_t>(end - sample));
    scan.reader = reader;
    scan.invalid = scan.invalid || invalid;
}

template <int predictor>
void decodeRestOfLine(Scan &scan)
{
    switch (scan.components) {
    case 1:
        return decodeRestOfLine<predictor, 1>(scan);
    case 2:
        return decodeRestOfLine<predictor, 2>(scan);
    default:
        return decodeRestOfLine<predictor, 0>(scan);
    }
}

using LineDecoder = void (*)(Scan &);

LineDecoder lineDecoder(int predictor)
{
    constexpr std::array<LineDecoder, 7> decoders{
        decodeRestOfLine<1>, decodeRestOfLine<2>, decodeRestOfLine<3>, decodeRestOfLine<4>,
        decodeRestOfLine<5>, decodeRestOfLine<6>, decodeRestOfLine<7>};
    return decoders[static_cast<std::size_t>(predictor - 1)];
}

/// The first sample of each component is predicted from the line above, in the first line from the
/// middle of the range.
void decodeStartOfLine(Scan &scan, bool isFirstLine, std::uint16_t middle)
{
    for (std::size_t component = 0; component < scan.components; ++component) {
        scan.reader.refill();
        std::uint16_t *sample = scan.line + component;
        const std::uint16_t prediction =
            isFirstLine ? middle : sample[-static_cast<std::ptrdiff_t>(scan.lineLength)];
        *sample = add(prediction, scan.tables[component]->decode(scan.reader, scan.invalid));
    }
}

/// The table of each component. Equal ones share the first, which then stays in the cache.
Tables tablesOf(const LosslessJpegHeader &header)
{
    Tables tables{};
    for (std::size_t i = 0; i < static_cast<std::size_t>(header.shape.components); ++i) {
        const HuffmanTable &own = *header.tables[header.tableOfComponent[i]];
        const auto equal =
            std::find_if(tables.begin(), tables.begin() + static_cast<std::ptrdiff_t>(i),
                         [&own](const HuffmanTable *table) { return *table == own; });
        tables[i] = *equal == nullptr ? &own : *equal;
    }
    return tables;
}

constexpr std::byte endOfImage{0xd9};

/// The size of the stream up to and with its end marker.
std::size_t streamEnd(std::span<const std::byte> stream, std::size_t position)
{
    for (std::size_t i = position; i + 1 < stream.size(); ++i)
        if (stream[i] == markerStart && stream[i + 1] == endOfImage)
            return i + 2;
    return stream.size();
}

} // namespace

LosslessJpegShape losslessJpegShape(std::span<const std::byte> stream)
{
    return readLosslessJpegHeader(stream).shape;
}

std::size_t decodeLosslessLines(const LosslessJpegHeader &header, std::span<const std::byte> stream,
                                std::span<std::uint16_t> samples)
{
    const auto &shape = header.shape;
    ScanData data(stream.subspan(header.scanStart));
    Scan scan{BitReader(data), samples.data(), shape.lineLength(), tablesOf(header),
              static_cast<std::size_t>(shape.components)};
    const auto middle = static_cast<std::uint16_t>(1U << (shape.precision - 1));
    const std::size_t lines = samples.size() / shape.lineLength();
    for (std::size_t line = 0; line < lines; ++line) {
        decodeStartOfLine(scan, line == 0, middle);
        lineDecoder(line == 0 ? 1 : header.predictor)(scan);
        scan.line += scan.lineLength;
        if (scan.invalid || scan.reader.isOverrun())
            throw Error("has a lossless picture that is damaged or cut off");
    }
    return header.scanStart + data.position();
}

std::size_t decodeLosslessJpeg(std::span<const std::byte> stream, std::span<std::uint16_t> samples)
{
    const auto header = readLosslessJpegHeader(stream);
    if (header.shape.sampleCount() != samples.size())
        throw Error("has a lossless picture of another size");
    return streamEnd(stream, decodeLosslessLines(header, stream, samples));
}

} // namespace raw
