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

/// Some columns of both candidates on their way to Lab. The cube roots are looked up one by one,
/// for all of them at once: processors' own gathering of vectors is slower.
class LabChunk
{
public:
    // What put() hasn't filled isn't read.
    // cppcheck-suppress uninitMemberVar
    HWY_INLINE explicit LabChunk(const Matrix &toXyz)
        : m_toXyz(toXyz)
    {
    }

    HWY_INLINE void put(std::size_t d, std::size_t i, Floats red, Floats green, Floats blue)
    {
        for (std::size_t xyz = 0; xyz < 3; ++xyz) {
            const auto part = [&](std::size_t colour, Floats value) HWY_ATTR {
                return hn::Mul(hn::Set(floatTag, m_toXyz[xyz][colour]), value);
            };
            const Floats light =
                hn::Add(hn::Add(hn::Add(hn::Set(floatTag, 0.5F), part(0, red)), part(1, green)),
                        part(2, blue));
            storeClipped(truncated(light), m_values.light[d][xyz] + i);
        }
    }

    HWY_INLINE void takeRoots() { m_values.takeRoots(); }

    /// Lab, with the range of a.
    HWY_INLINE void store(std::size_t d, std::size_t i, std::int32_t *lightness,
                          std::int32_t *chroma, Ints &low, Ints &high) const
    {
        const Floats x = hn::Load(floatTag, m_values.root[d][0] + i);
        const Floats y = hn::Load(floatTag, m_values.root[d][1] + i);
        const Floats z = hn::Load(floatTag, m_values.root[d][2] + i);
        const Floats light =
            hn::Mul(hn::Set(floatTag, 64),
                    hn::Sub(hn::Mul(hn::Set(floatTag, 116), y), hn::Set(floatTag, 16)));
        hn::StoreU(truncated(light), intTag, lightness);
        const Ints a = truncated(hn::Mul(hn::Set(floatTag, 32000), hn::Sub(x, y)));
        const Ints b = truncated(hn::Mul(hn::Set(floatTag, 12800), hn::Sub(y, z)));
        hn::StoreU(hn::Or(hn::And(a, hn::Set(intTag, 0xffff)), hn::ShiftLeft<16>(b)), intTag,
                   chroma);
        low = hn::Min(low, a);
        high = hn::Max(high, a);
    }

private:
    const Matrix m_toXyz;
    CubeRootChunk m_values;
};

HWY_INLINE Range range(Ints low, Ints high)
{
    return {hn::GetLane(hn::MinOfLanes(intTag, low)), hn::GetLane(hn::MaxOfLanes(intTag, high))};
}

/// Makes a row chunk by chunk. `put(chunk, column, place)` finds the colours of a vector.
template <typename Put>
HWY_INLINE Both<Range> labRows(const Both<LabRow> &rows, const Matrix &toXyz, std::size_t columns,
                               const Put &put)
{
    LabChunk chunk(toXyz);
    const Ints highest = hn::Set(intTag, INT32_MAX);
    const Ints lowest = hn::Set(intTag, INT32_MIN);
    Ints low0 = highest;
    Ints low1 = highest;
    Ints high0 = lowest;
    Ints high1 = lowest;
    for (std::size_t first = 0; first < columns; first += CubeRootChunk::columns) {
        const std::size_t count = std::min(CubeRootChunk::columns, columns - first);
        for (std::size_t i = 0; i < count; i += hn::Lanes(intTag))
            put(chunk, first + i, i);
        chunk.takeRoots();
        for (std::size_t i = 0; i < count; i += hn::Lanes(intTag)) {
            chunk.store(0, i, rows[0].lightness + first + i, rows[0].chroma + first + i, low0,
                        high0);
            chunk.store(1, i, rows[1].lightness + first + i, rows[1].chroma + first + i, low1,
                        high1);
        }
    }
    return {range(low0, high0), range(low1, high1)};
}

template <bool ownIsRed>
HWY_NOINLINE Both<Range> oppositeRow(const OppositeRow &row, const Matrix &toXyz,
                                     std::size_t columns)
{
    const auto put = [&row](LabChunk &chunk, std::size_t x, std::size_t i) HWY_ATTR {
        const Floats own = floats(ints(row.own + x));
        for (std::size_t d = 0; d < 2; ++d) {
            const auto &differences = row.differences[d];
            const Ints greenInts = ints(row.green[d] + x);
            const Ints sum = hn::Add(hn::Add(ints(differences[0] + x), ints(differences[1] + x)),
                                     hn::Add(ints(differences[2] + x), ints(differences[3] + x)));
            const Ints oppositeInts =
                clip(hn::Add(greenInts, hn::ShiftRight<2>(hn::Add(sum, hn::Set(intTag, 1)))));
            storeClipped(oppositeInts, row.opposite[d] + x);
            const Floats green = floats(greenInts);
            const Floats opposite = floats(oppositeInts);
            chunk.put(d, i, ownIsRed ? own : opposite, green, ownIsRed ? opposite : own);
        }
    };
    return labRows(row.lab, toXyz, columns, put);
}

template <bool redIsBeside>
HWY_NOINLINE Both<Range> redBlueRow(const RedBlueRow &row, const Matrix &toXyz, std::size_t columns)
{
    const auto put = [&row](LabChunk &chunk, std::size_t x, std::size_t i) HWY_ATTR {
        const Ints greenInts = ints(row.green + x);
        const Floats green = floats(greenInts);
        const auto find = [&](const std::array<const std::int32_t *, 2> &differences) HWY_ATTR {
            const Ints sum = hn::Add(ints(differences[0] + x), ints(differences[1] + x));
            return clip(hn::Add(greenInts, hn::ShiftRight<1>(sum)));
        };
        for (std::size_t d = 0; d < 2; ++d) {
            const Ints besideInts = find(row.besideDifferences[d]);
            const Ints verticalInts = find(row.verticalDifferences[d]);
            storeClipped(besideInts, row.beside[d] + x);
            storeClipped(verticalInts, row.vertical[d] + x);
            const Floats beside = floats(besideInts);
            const Floats vertical = floats(verticalInts);
            chunk.put(d, i, redIsBeside ? beside : vertical, green,
                      redIsBeside ? vertical : beside);
        }
    };
    return labRows(row.lab, toXyz, columns, put);
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
