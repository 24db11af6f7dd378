// SPDX-License-Identifier: MIT
// Compiled once for each instruction set.
#include "dcraw/homogeneity.h"

#include "dcraw/instructionset.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dcraw/homogeneity.cpp"
#include <hwy/foreach_target.h> // before highway.h

#include "dcraw/vectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace dcraw::HWY_NAMESPACE {
namespace {

using ValueTag = hn::ScalableTag<std::uint16_t>;
using Values = hn::Vec<ValueTag>;
using ShortTag = hn::RebindToSigned<ValueTag>;
using Shorts = hn::Vec<ShortTag>;
using NarrowShortTag = hn::Rebind<std::int16_t, IntTag>;

constexpr ValueTag valueTag;
constexpr ShortTag shortTag;

/// The squared distance for any a and b: 32 bits without sign, moved so that comparisons with sign
/// put them in order.
HWY_INLINE Ints wideDistance(Ints chroma1, Ints chroma2)
{
    const auto a = [](Ints chroma)
                       HWY_ATTR { return hn::ShiftRight<16>(hn::ShiftLeft<16>(chroma)); };
    const auto b = [](Ints chroma) HWY_ATTR { return hn::ShiftRight<16>(chroma); };
    const Ints da = hn::Sub(a(chroma1), a(chroma2));
    const Ints db = hn::Sub(b(chroma1), b(chroma2));
    return hn::Xor(hn::Add(hn::Mul(da, da), hn::Mul(db, db)), hn::Set(intTag, INT32_MIN));
}

/// The same if the differences fit into 16 bits.
HWY_INLINE Ints narrowDistance(Ints chroma1, Ints chroma2)
{
#if HWY_ARCH_X86 && HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128
    const hn::Repartition<std::int16_t, IntTag> halfTag;
    const auto difference = hn::Sub(hn::BitCast(halfTag, chroma1), hn::BitCast(halfTag, chroma2));
    Ints unused = hn::Zero(intTag); // neighbours are added up, everything is in the first sum
    return hn::ReorderWidenMulAccumulate(intTag, difference, difference, hn::Zero(intTag), unused);
#else
    return wideDistance(chroma1, chroma2);
#endif
}

template <bool wide>
HWY_NOINLINE void preferenceRow(const PreferenceRow &row, std::size_t columns)
{
    for (std::size_t i = 0; i < columns; i += hn::Lanes(intTag)) {
        const auto lightness = [&](std::size_t d, std::size_t n) HWY_ATTR {
            return hn::Abs(
                hn::Sub(ints(row.lightness[d].here + i), ints(row.lightness[d].around[n] + i)));
        };
        const auto chroma = [&](std::size_t d, std::size_t n) HWY_ATTR {
            const Ints here = ints(row.chroma[d].here + i);
            const Ints there = ints(row.chroma[d].around[n] + i);
            return wide ? wideDistance(here, there) : narrowDistance(here, there);
        };
        const Ints l[2][4] = {{lightness(0, 0), lightness(0, 1), lightness(0, 2), lightness(0, 3)},
                              {lightness(1, 0), lightness(1, 1), lightness(1, 2), lightness(1, 3)}};
        const Ints c[2][4] = {{chroma(0, 0), chroma(0, 1), chroma(0, 2), chroma(0, 3)},
                              {chroma(1, 0), chroma(1, 1), chroma(1, 2), chroma(1, 3)}};
        // Each candidate sets the limit along its own direction; the stricter one holds.
        const Ints limitL = hn::Min(hn::Max(l[0][0], l[0][1]), hn::Max(l[1][2], l[1][3]));
        const Ints limitC = hn::Min(hn::Max(c[0][0], c[0][1]), hn::Max(c[1][2], c[1][3]));
        const auto differs = [&](std::size_t d, std::size_t n) HWY_ATTR {
            return hn::VecFromMask(intTag,
                                   hn::Or(hn::Gt(l[d][n], limitL), hn::Gt(c[d][n], limitC)));
        };
        const auto differing = [&](std::size_t d) HWY_ATTR { // as a negative number
            return hn::Add(hn::Add(differs(d, 0), differs(d, 1)),
                           hn::Add(differs(d, 2), differs(d, 3)));
        };
        hn::StoreU(hn::DemoteTo(NarrowShortTag(), hn::Sub(differing(0), differing(1))),
                   NarrowShortTag(), row.preference + i);
    }
}

void anyPreferenceRow(const PreferenceRow &row, bool wide, std::size_t columns)
{
    if (wide)
        preferenceRow<true>(row, columns);
    else
        preferenceRow<false>(row, columns);
}

/// The mean, rounded down.
HWY_INLINE Values mean(Values value1, Values value2)
{
    return hn::Add(hn::And(value1, value2), hn::ShiftRight<1>(hn::Xor(value1, value2)));
}

/// The preference of the neighbourhood: of three by three samples.
template <std::size_t half>
HWY_INLINE Shorts preference(const ChosenRow &row, std::size_t i)
{
    Shorts sum = hn::Zero(shortTag);
    for (const auto &halves : row.preferences) {
        const std::int16_t *here = halves[half] + i;
        const std::int16_t *beside = halves[1 - half] + i + half;
        sum =
            hn::Add(sum, hn::Add(hn::LoadU(shortTag, here), hn::Add(hn::LoadU(shortTag, beside - 1),
                                                                    hn::LoadU(shortTag, beside))));
    }
    return sum;
}

HWY_INLINE Values chosen(const Both<const std::uint16_t *> &candidates, std::size_t i,
                         Shorts preference)
{
    const Values first = hn::LoadU(valueTag, candidates[0] + i);
    if (candidates[0] == candidates[1])
        return first;
    const Values second = hn::LoadU(valueTag, candidates[1] + i);
    const Shorts zero = hn::Zero(shortTag);
    const auto takesFirst = hn::RebindMask(valueTag, hn::Gt(preference, zero));
    const auto takesSecond = hn::RebindMask(valueTag, hn::Lt(preference, zero));
    return hn::IfThenElse(takesFirst, first,
                          hn::IfThenElse(takesSecond, second, mean(first, second)));
}

void chosenRow(const ChosenRow &row, std::size_t columns)
{
    for (std::size_t i = 0; i < columns; i += hn::Lanes(valueTag)) {
        const Shorts even = preference<0>(row, i);
        const Shorts odd = preference<1>(row, i);
        for (const ChosenPlane &plane : row.planes) {
            hn::StoreInterleaved2(chosen(plane.candidates[0], i, even),
                                  chosen(plane.candidates[1], i, odd), valueTag,
                                  plane.result + 2 * i);
        }
    }
}

} // namespace
} // namespace dcraw::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace dcraw {

void judge(const PreferenceRow &row, bool wide, std::size_t columns)
{
    DCRAW_VARIANT(anyPreferenceRow)(row, wide, columns);
}

void choose(const ChosenRow &row, std::size_t columns)
{
    DCRAW_VARIANT(chosenRow)(row, columns);
}

} // namespace dcraw
#endif
