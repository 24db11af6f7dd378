// SPDX-License-Identifier: MIT
// Compiled once for each instruction set.
#include "dcraw/scaling.h"

#include "dcraw/instructionset.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dcraw/scaling.cpp"
#include <hwy/foreach_target.h> // before highway.h

#include "dcraw/vectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace dcraw::HWY_NAMESPACE {
namespace {

HWY_INLINE void scaleVector(Ints samples, Ints black, Floats factor, std::uint16_t *light)
{
    storeClipped(truncated(hn::Mul(floats(hn::Sub(samples, black)), factor)), light);
}

void scaleRow(const ScaledRow &row, std::size_t columns)
{
    const Ints black = hn::Set(intTag, row.black);
    const Floats even = hn::Set(floatTag, row.scale[0]);
    const Floats odd = hn::Set(floatTag, row.scale[1]);
    for (std::size_t i = 0; i < columns; i += hn::Lanes(intTag)) {
        hn::Vec<NarrowTag> evenSamples;
        hn::Vec<NarrowTag> oddSamples;
        hn::LoadInterleaved2(narrowTag, row.samples + 2 * i, evenSamples, oddSamples);
        scaleVector(hn::PromoteTo(intTag, evenSamples), black, even, row.light[0] + i);
        scaleVector(hn::PromoteTo(intTag, oddSamples), black, odd, row.light[1] + i);
    }
}

} // namespace
} // namespace dcraw::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace dcraw {

void scale(const ScaledRow &row, std::size_t columns)
{
    DCRAW_VARIANT(scaleRow)(row, columns);
}

} // namespace dcraw
#endif
