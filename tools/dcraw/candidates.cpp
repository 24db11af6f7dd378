// SPDX-License-Identifier: MIT
// Compiled once for each instruction set.
#include "dcraw/candidates.h"

#include "dcraw/cuberoots.h"

#include <algorithm>

#include "dcraw/instructionset.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dcraw/candidates.cpp"
#include <hwy/foreach_target.h> // before highway.h

#include "dcraw/vectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace dcraw::HWY_NAMESPACE {
namespace {

HWY_INLINE void storeGreen(Ints own, Ints before, Ints after, Ints twoBefore, Ints twoAfter,
                           std::uint16_t *green, std::int32_t *difference)
{
    const Ints sum = hn::Add(hn::Add(before, own), after);
    const Ints guess = hn::ShiftRight<2>(hn::Sub(hn::Sub(hn::Add(sum, sum), twoBefore), twoAfter));
    const Ints limited = hn::Min(hn::Max(guess, hn::Min(before, after)), hn::Max(before, after));
    storeClipped(limited, green);
    hn::StoreU(hn::Sub(own, limited), intTag, difference);
}

void greenRow(const GreenRow &row, std::size_t columns)
{
    for (std::size_t i = 0; i < columns; i += hn::Lanes(intTag)) {
        const Ints own = ints(row.own + i);
        storeGreen(own, ints(row.left + i), ints(row.right + i), ints(row.own + i - 1),
                   ints(row.own + i + 1), row.green[0] + i, row.difference[0] + i);
        storeGreen(own, ints(row.above + i), ints(row.below + i), ints(row.twoAbove + i),
                   ints(row.twoBelow + i), row.green[1] + i, row.difference[1] + i);
    }
}

/// From colours to Lab, with the range of a.
class LabConverter
{
public:
    HWY_INLINE explicit LabConverter(const Matrix &toXyz)
        : m_toXyz(toXyz)
    {
    }

    HWY_INLINE void store(Floats red, Floats green, Floats blue, const LabRow &row, std::size_t i,
                          Ints &low, Ints &high) const
    {
        const Floats x = cubeRoot(0, red, green, blue);
        const Floats y = cubeRoot(1, red, green, blue);
        const Floats z = cubeRoot(2, red, green, blue);
        const Floats lightness =
            hn::Mul(hn::Set(floatTag, 64),
                    hn::Sub(hn::Mul(hn::Set(floatTag, 116), y), hn::Set(floatTag, 16)));
        hn::StoreU(truncated(lightness), intTag, row.lightness + i);
        const Ints a = truncated(hn::Mul(hn::Set(floatTag, 32000), hn::Sub(x, y)));
        const Ints b = truncated(hn::Mul(hn::Set(floatTag, 12800), hn::Sub(y, z)));
        const Ints chroma = hn::Or(hn::And(a, hn::Set(intTag, 0xffff)), hn::ShiftLeft<16>(b));
        hn::StoreU(chroma, intTag, row.chroma + i);
        low = hn::Min(low, a);
        high = hn::Max(high, a);
    }

private:
    HWY_INLINE Floats cubeRoot(std::size_t i, Floats red, Floats green, Floats blue) const
    {
        const auto part = [&](std::size_t colour, Floats value) HWY_ATTR {
            return hn::Mul(hn::Set(floatTag, m_toXyz[i][colour]), value);
        };
        const Floats light = hn::Add(
            hn::Add(hn::Add(hn::Set(floatTag, 0.5F), part(0, red)), part(1, green)), part(2, blue));
        return hn::GatherIndex(floatTag, cubeRoots.data(), clip(truncated(light)));
    }

    const Matrix m_toXyz;
};

HWY_INLINE Range range(Ints low, Ints high)
{
    return {hn::GetLane(hn::MinOfLanes(intTag, low)), hn::GetLane(hn::MaxOfLanes(intTag, high))};
}

template <bool ownIsRed>
HWY_NOINLINE Both<Range> oppositeRow(const OppositeRow &row, const Matrix &toXyz,
                                     std::size_t columns)
{
    const LabConverter lab(toXyz);
    Ints low0 = hn::Set(intTag, INT32_MAX);
    Ints high0 = hn::Set(intTag, INT32_MIN);
    Ints low1 = low0;
    Ints high1 = high0;
    for (std::size_t i = 0; i < columns; i += hn::Lanes(intTag)) {
        const Ints ownInts = ints(row.own + i);
        const Floats own = floats(ownInts);
        const auto findFor = [&](std::size_t d, Ints &low, Ints &high) HWY_ATTR {
            const Ints greenInts = ints(row.green[d] + i);
            const Ints sum =
                hn::Add(hn::Add(ints(row.differences[d][0] + i), ints(row.differences[d][1] + i)),
                        hn::Add(ints(row.differences[d][2] + i), ints(row.differences[d][3] + i)));
            const Ints oppositeInts =
                clip(hn::Add(greenInts, hn::ShiftRight<2>(hn::Add(sum, hn::Set(intTag, 1)))));
            storeClipped(oppositeInts, row.opposite[d] + i);
            const Floats green = floats(greenInts);
            const Floats opposite = floats(oppositeInts);
            lab.store(ownIsRed ? own : opposite, green, ownIsRed ? opposite : own, row.lab[d], i,
                      low, high);
        };
        findFor(0, low0, high0);
        findFor(1, low1, high1);
    }
    return {range(low0, high0), range(low1, high1)};
}

template <bool redIsBeside>
HWY_NOINLINE Both<Range> redBlueRow(const RedBlueRow &row, const Matrix &toXyz, std::size_t columns)
{
    const LabConverter lab(toXyz);
    Ints low0 = hn::Set(intTag, INT32_MAX);
    Ints high0 = hn::Set(intTag, INT32_MIN);
    Ints low1 = low0;
    Ints high1 = high0;
    for (std::size_t i = 0; i < columns; i += hn::Lanes(intTag)) {
        const Ints greenInts = ints(row.green + i);
        const Floats green = floats(greenInts);
        const auto findColour =
            [&](const std::array<const std::int32_t *, 2> &differences) HWY_ATTR {
                const Ints sum = hn::Add(ints(differences[0] + i), ints(differences[1] + i));
                return clip(hn::Add(greenInts, hn::ShiftRight<1>(sum)));
            };
        const auto findFor = [&](std::size_t d, Ints &low, Ints &high) HWY_ATTR {
            const Ints besideInts = findColour(row.besideDifferences[d]);
            const Ints verticalInts = findColour(row.verticalDifferences[d]);
            storeClipped(besideInts, row.beside[d] + i);
            storeClipped(verticalInts, row.vertical[d] + i);
            const Floats beside = floats(besideInts);
            const Floats vertical = floats(verticalInts);
            lab.store(redIsBeside ? beside : vertical, green, redIsBeside ? vertical : beside,
                      row.lab[d], i, low, high);
        };
        findFor(0, low0, high0);
        findFor(1, low1, high1);
    }
    return {range(low0, high0), range(low1, high1)};
}

Both<Range> anyOppositeRow(const OppositeRow &row, const Matrix &toXyz, std::size_t columns)
{
    return row.ownIsRed ? oppositeRow<true>(row, toXyz, columns)
                        : oppositeRow<false>(row, toXyz, columns);
}

Both<Range> anyRedBlueRow(const RedBlueRow &row, const Matrix &toXyz, std::size_t columns)
{
    return row.redIsBeside ? redBlueRow<true>(row, toXyz, columns)
                           : redBlueRow<false>(row, toXyz, columns);
}

} // namespace
} // namespace dcraw::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace dcraw {

void Range::include(Range other)
{
    low = std::min(low, other.low);
    high = std::max(high, other.high);
}

void findGreen(const GreenRow &row, std::size_t columns)
{
    DCRAW_VARIANT(greenRow)(row, columns);
}

Both<Range> findOpposite(const OppositeRow &row, const Matrix &toXyz, std::size_t columns)
{
    return DCRAW_VARIANT(anyOppositeRow)(row, toXyz, columns);
}

Both<Range> findRedAndBlue(const RedBlueRow &row, const Matrix &toXyz, std::size_t columns)
{
    return DCRAW_VARIANT(anyRedBlueRow)(row, toXyz, columns);
}

} // namespace dcraw
#endif
