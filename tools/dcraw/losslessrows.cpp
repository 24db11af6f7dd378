// SPDX-License-Identifier: MIT
#include "dcraw/losslessrows.h"

#include "dcraw/decodedrows.h"
#include "dcraw/notcovered.h"
#include "raw/losslessjpegheader.h"

#include <functional>
#include <numeric>
#include <vector>

namespace dcraw {
namespace {

/// The bytes of the strip.
std::vector<std::byte> readStrip(const raw::File &file, const Negative &negative,
                                 std::uint64_t samples)
{
    // A sample takes a bit at the least; at the most a code and a difference of 16 bits each, all
    // of whose bytes are stuffed. Before them stands what a header can hold.
    constexpr std::uint64_t longestHeader = 1 << 20;
    require(negative.stripBytes >= samples / 8, "has fewer samples than its size asks for");
    require(negative.stripBytes <= samples * 8 + longestHeader, "is followed by other data");
    std::vector<std::byte> strip(negative.stripBytes);
    file.read(negative.stripOffset, strip);
    return strip;
}

/// The real dcraw decodes component n with table n, or with the table of the component before it
/// when there is none, whatever the scan's header says.
void requireTablesInOrder(const raw::LosslessJpegHeader &header)
{
    std::size_t table = 0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(header.shape.components); ++i) {
        table = header.tables[i] ? i : table;
        require(header.tableOfComponent[i] == table, "has Huffman tables in another order");
    }
}

} // namespace

std::unique_ptr<SampleRows> readLosslessRows(const raw::File &file, const Negative &negative)
{
    const auto width = static_cast<std::size_t>(negative.width);
    const std::size_t count = width * static_cast<std::size_t>(negative.height);
    const auto strip = readStrip(file, negative, count);
    const auto header = raw::readLosslessJpegHeader(strip);
    require(!header.hasRestartInterval && !header.hasSamplingFactors,
            "has a lossless picture of another kind");
    requireTablesInOrder(header);
    require(header.shape.sampleCount() >= count, "has fewer samples than its size asks for");

    const std::size_t line = header.shape.lineLength();
    std::vector<std::uint16_t> samples((count + line - 1) / line * line);
    raw::decodeLosslessLines(header, strip, samples);
    samples.resize(count);
    const auto allBits = std::accumulate(samples.begin(), samples.end(), 0U, std::bit_or<>());
    require(allBits >> header.shape.precision == 0, "has samples beyond its range");
    const std::size_t first = static_cast<std::size_t>(negative.active.top) * width +
                              static_cast<std::size_t>(negative.active.left);
    return std::make_unique<DecodedRows>(std::move(samples), first, width,
                                         static_cast<std::size_t>(negative.active.width()));
}

} // namespace dcraw
