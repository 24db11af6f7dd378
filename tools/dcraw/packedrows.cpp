// SPDX-License-Identifier: MIT
#include "dcraw/packedrows.h"

#include "dcraw/notcovered.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace dcraw {
namespace {

static_assert(std::endian::native == std::endian::little, "samples of 16 bits are copied");

// Eight samples fill whole bytes at every depth.
constexpr std::size_t groupSize = 8;
// A group is read in whole words, which end this far behind it at the most.
constexpr std::size_t padding = 8;

std::uint64_t bigEndianWord(const std::byte *bytes)
{
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return __builtin_bswap64(word);
}

/// Reads eight samples out of `bits` bytes.
template <int bits>
void unpackGroup(const std::byte *packed, std::uint16_t *samples)
{
    if constexpr (bits == 16) {
        std::memcpy(samples, packed, groupSize * sizeof *samples);
    } else {
        constexpr int half = 4 * bits; // the bits of four samples, half a byte more in odd depths
        const std::uint64_t first = bigEndianWord(packed);
        const std::uint64_t second = bigEndianWord(packed + half / 8) << half % 8;
        for (int i = 0; i < 4; ++i) {
            const int left = i * bits;
            samples[i] = static_cast<std::uint16_t>(first << left >> (64 - bits));
            samples[i + 4] = static_cast<std::uint16_t>(second << left >> (64 - bits));
        }
    }
}

using Samples = std::span<std::uint16_t>;

/// Reads a row's samples from column `first` on.
template <int bits>
void unpackRow(const std::byte *row, std::size_t first, Samples samples)
{
    row += first / groupSize * bits;
    std::array<std::uint16_t, groupSize> group{};
    if (const std::size_t skipped = first % groupSize; skipped != 0) {
        unpackGroup<bits>(row, group.data());
        row += bits;
        const std::size_t count = std::min(groupSize - skipped, samples.size());
        std::copy_n(group.begin() + static_cast<std::ptrdiff_t>(skipped), count, samples.begin());
        samples = samples.subspan(count);
    }
    for (; samples.size() >= groupSize; samples = samples.subspan(groupSize)) {
        unpackGroup<bits>(row, samples.data());
        row += bits;
    }
    if (!samples.empty()) {
        unpackGroup<bits>(row, group.data());
        std::copy_n(group.begin(), samples.size(), samples.begin());
    }
}

using RowUnpacker = void (*)(const std::byte *, std::size_t, Samples);

RowUnpacker rowUnpacker(int bits)
{
    constexpr std::array<RowUnpacker, 9> unpackers{unpackRow<8>,  unpackRow<9>,  unpackRow<10>,
                                                   unpackRow<11>, unpackRow<12>, unpackRow<13>,
                                                   unpackRow<14>, unpackRow<15>, unpackRow<16>};
    return unpackers[static_cast<std::size_t>(bits) - 8];
}

class PackedRows final : public SampleRows
{
public:
    PackedRows(raw::File file, const Negative &negative)
        : m_file(std::move(file))
        , m_offset(negative.stripOffset)
        , m_rowBytes((static_cast<std::size_t>(negative.width) *
                          static_cast<std::size_t>(negative.bitsPerSample) +
                      7) /
                     8)
        , m_top(static_cast<std::size_t>(negative.active.top))
        , m_left(static_cast<std::size_t>(negative.active.left))
        , m_width(static_cast<std::size_t>(negative.active.width()))
        , m_unpack(rowUnpacker(negative.bitsPerSample))
    {
        const std::size_t size = m_rowBytes * static_cast<std::size_t>(negative.height);
        require(negative.stripBytes >= size, "has fewer samples than its size asks for");
        require(m_offset + size <= m_file.size(), "ends in the middle of the picture");
    }

    void read(int row, std::span<std::uint16_t> samples) const override
    {
        // Some rows into the same memory again and again: to touch as much of it as the frame has
        // takes a system longer than to read the frame.
        const std::size_t rows = samples.size() / m_width;
        const auto bytes = std::make_unique_for_overwrite<std::byte[]>(rows * m_rowBytes +
                                                                       2 * groupSize + padding);
        m_file.read(m_offset + (m_top + static_cast<std::size_t>(row)) * m_rowBytes,
                    {bytes.get(), rows * m_rowBytes});
        for (std::size_t i = 0; i < rows; ++i)
            m_unpack(bytes.get() + i * m_rowBytes, m_left, samples.subspan(i * m_width, m_width));
    }

private:
    raw::File m_file;
    std::uint64_t m_offset;
    std::size_t m_rowBytes;
    std::size_t m_top;
    std::size_t m_left;
    std::size_t m_width;
    RowUnpacker m_unpack;
};

} // namespace

std::unique_ptr<SampleRows> packedRows(raw::File file, const Negative &negative)
{
    return std::make_unique<PackedRows>(std::move(file), negative);
}

} // namespace dcraw
