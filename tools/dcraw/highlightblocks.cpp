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
    for (; x + hn::Lanes(tag) <= columns; x += hn::Lanes(tag))
        result = hn::Max(result, hn::LoadU(tag, values + x));
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

/// The ratio of each column from those of the blocks.
HWY_INLINE void spreadRatios(const float *ratios, int size, float *columns)
{
    const Floats known = hn::LoadU(floatTag, ratios);
    const Floats ratio =
        hn::IfThenElse(hn::Gt(known, hn::Zero(floatTag)), known, hn::Set(floatTag, 1));
    if (size == 2)
        hn::StoreInterleaved2(ratio, ratio, floatTag, columns);
    else
        hn::StoreInterleaved4(ratio, ratio, ratio, ratio, floatTag, columns);
}

void raiseBlocks(const RaisedBlocks &blocks, const float *ratios, int clipped)
{
    const auto size = static_cast<std::size_t>(blocks.size);
    const Ints highest = hn::Set(intTag, clipped - 1);
    HWY_ALIGN float ratioOfColumn[4 * hn::MaxLanes(floatTag)];
    for (std::size_t block = 0; block < blocks.count; block += hn::Lanes(floatTag)) {
        spreadRatios(ratios + block, blocks.size, ratioOfColumn);
        // In columns behind the last whole block nothing is raised.
        const std::size_t columns =
            size * std::min<std::size_t>(hn::Lanes(floatTag), blocks.count - block);
        for (std::size_t row = 0; row < size; ++row) {
            const std::size_t start = row * blocks.stride + block * size;
            for (std::size_t x = 0; x < columns; x += hn::Lanes(floatTag)) {
                const Ints value = ints(blocks.values + start + x);
                const auto isClipped =
                    hn::And(hn::Gt(value, highest), hn::FirstN(intTag, columns - x));
                if (hn::AllFalse(intTag, isClipped))
                    continue;
                const Floats raised = hn::Mul(floats(ints(blocks.strongest + start + x)),
                                              hn::Load(floatTag, ratioOfColumn + x));
                storeClipped(hn::IfThenElse(isClipped, hn::Max(value, truncated(raised)), value),
                             blocks.values + start + x);
            }
        }
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

void raise(const RaisedBlocks &blocks, const float *ratios, int clipped)
{
    DCRAW_VARIANT(raiseBlocks)(blocks, ratios, clipped);
}

} // namespace dcraw
#endif
