// SPDX-License-Identifier: MIT
// Compiled once for each instruction set.
#include "dcraw/highlightblocks.h"

#include <algorithm>

#include "dcraw/instructionset.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dcraw/highlightblocks.cpp"
#include <hwy/foreach_target.h> // before highway.h

#include "dcraw/vectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace dcraw::HWY_NAMESPACE {
namespace {

constexpr int darkest = 24000; // of the strongest colour, where a ratio is known
constexpr std::size_t chunk = 64;

std::uint16_t largest(const std::uint16_t *values, std::size_t columns)
{
    const hn::ScalableTag<std::uint16_t> tag;
    auto result = hn::Zero(tag);
    std::size_t x = 0;
    for (; x + hn::Lanes(tag) <= columns; x += hn::Lanes(tag)) {
        result = hn::Max(result, hn::LoadU(tag, values + x));
    }
    HWY_ALIGN std::uint16_t lanes[hn::MaxLanes(hn::ScalableTag<std::uint16_t>())];
    hn::Store(result, tag, lanes);
    const std::uint16_t ofVectors = *std::max_element(lanes, lanes + hn::Lanes(tag));
    return x < columns ? std::max(ofVectors, *std::max_element(values + x, values + columns))
                       : ofVectors;
}

/// The sums of each column of blocks, and how many of its values are fit for a ratio.
struct ColumnSums
{
    HWY_ALIGN std::int32_t values[chunk];
    HWY_ALIGN std::int32_t strongest[chunk];
    HWY_ALIGN std::int32_t fit[chunk];
};

HWY_INLINE void sumColumns(const BlockRow &blocks, std::size_t first, int saturation,
                           ColumnSums &sums)
{
    const Ints low = hn::Set(intTag, saturation - 1);
    const Ints high = hn::Set(intTag, 2 * saturation);
    const Ints dark = hn::Set(intTag, darkest);
    for (std::size_t x = 0; x < chunk; x += hn::Lanes(intTag)) {
        Ints valueSum = hn::Zero(intTag);
        Ints strongestSum = hn::Zero(intTag);
        Ints fit = hn::Zero(intTag);
        for (std::size_t row = 0; row < static_cast<std::size_t>(blocks.size); ++row) {
            const Ints value = ints(blocks.values + row * blocks.stride + first + x);
            const Ints strongest = ints(blocks.strongest + row * blocks.stride + first + x);
            valueSum = hn::Add(valueSum, value);
            strongestSum = hn::Add(strongestSum, strongest);
            const auto isFit =
                hn::And(hn::And(hn::Gt(value, low), hn::Lt(value, high)), hn::Gt(strongest, dark));
            fit = hn::Sub(fit, hn::VecFromMask(intTag, isFit));
        }
        hn::Store(valueSum, intTag, sums.values + x);
        hn::Store(strongestSum, intTag, sums.strongest + x);
        hn::Store(fit, intTag, sums.fit + x);
    }
}

/// The sums of blocks from those of their columns.
HWY_INLINE Ints sumOfBlocks(const std::int32_t *columns, int size)
{
    Ints sums[4] = {hn::Zero(intTag), hn::Zero(intTag), hn::Zero(intTag), hn::Zero(intTag)};
    if (size == 2)
        hn::LoadInterleaved2(intTag, columns, sums[0], sums[1]);
    else
        hn::LoadInterleaved4(intTag, columns, sums[0], sums[1], sums[2], sums[3]);
    return hn::Add(hn::Add(sums[0], sums[1]), hn::Add(sums[2], sums[3]));
}

void ratioRow(const BlockRow &blocks, int saturation, float *ratios)
{
    const auto size = static_cast<std::size_t>(blocks.size);
    const std::size_t blocksOfChunk = chunk / size;
    const Ints allFit = hn::Set(intTag, blocks.size * blocks.size);
    ColumnSums sums;
    HWY_ALIGN float ratiosOfChunk[chunk / 2];
    for (std::size_t block = 0; block < blocks.count; block += blocksOfChunk) {
        sumColumns(blocks, block * size, saturation, sums);
        for (std::size_t i = 0; i < blocksOfChunk; i += hn::Lanes(intTag)) {
            const Floats ratio =
                hn::Div(floats(sumOfBlocks(sums.values + i * size, blocks.size)),
                        floats(sumOfBlocks(sums.strongest + i * size, blocks.size)));
            const auto isKnown = hn::Eq(sumOfBlocks(sums.fit + i * size, blocks.size), allFit);
            hn::Store(hn::IfThenElseZero(hn::RebindMask(floatTag, isKnown), ratio), floatTag,
                      ratiosOfChunk + i);
        }
        std::copy_n(ratiosOfChunk, std::min(blocksOfChunk, blocks.count - block), ratios + block);
    }
}

void raiseRow(const RaisedRow &row, int clipped, std::size_t columns)
{
    const Ints lowest = hn::Set(intTag, clipped);
    for (std::size_t x = 0; x < columns; x += hn::Lanes(intTag)) {
        const Ints value = ints(row.values + x);
        const Floats raised =
            hn::Mul(floats(ints(row.strongest + x)), hn::LoadU(floatTag, row.ratios + x));
        const Ints result =
            hn::IfThenElse(hn::Lt(value, lowest), value, hn::Max(value, truncated(raised)));
        storeClipped(result, row.values + x);
    }
}

} // namespace
} // namespace dcraw::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace dcraw {

std::uint16_t largestValue(const std::uint16_t *values, std::size_t columns)
{
    return DCRAW_VARIANT(largest)(values, columns);
}

void findRatios(const BlockRow &blocks, int saturation, float *ratios)
{
    DCRAW_VARIANT(ratioRow)(blocks, saturation, ratios);
}

void raise(const RaisedRow &row, int clipped, std::size_t columns)
{
    DCRAW_VARIANT(raiseRow)(row, clipped, columns);
}

} // namespace dcraw
#endif
