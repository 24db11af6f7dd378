// SPDX-License-Identifier: MIT
// Compiled once for each instruction set.
#include "dcraw/highlightspread.h"

#include <algorithm>
#include <bit>

#include "dcraw/instructionset.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dcraw/highlightspread.cpp"
#include <hwy/foreach_target.h> // before highway.h

#include "dcraw/vectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace dcraw::HWY_NAMESPACE {
namespace {

/// What a block can learn from its neighbours.
HWY_INLINE void addNeighbours(const float *above, const float *here, const float *below,
                              Floats &sum, Floats &weights)
{
    const Floats zero = hn::Zero(floatTag);
    const Floats one = hn::Set(floatTag, 1);
    const Floats two = hn::Set(floatTag, 2);
    const auto add = [&](const float *from, Floats weight) HWY_ATTR {
        const Floats ratio = hn::LoadU(floatTag, from);
        sum = hn::Add(sum, hn::Mul(weight, ratio));
        weights = hn::Add(weights, hn::IfThenElseZero(hn::Gt(ratio, zero), weight));
    };
    // The order counts: sums are rounded.
    add(above - 1, one);
    add(above, two);
    add(above + 1, one);
    add(here + 1, two);
    add(below + 1, one);
    add(below, two);
    add(below - 1, one);
    add(here - 1, two);
}

/// Fills the zeros of the blocks from `first` on that have enough known neighbours, in `result`,
/// which is equal to `here` before. Answers whether there are any.
HWY_INLINE bool spreadVector(const float *above, const float *here, const float *below,
                             float *result, std::size_t first, std::size_t width)
{
    const Floats zero = hn::Zero(floatTag);
    const Floats two = hn::Set(floatTag, 2);
    const Floats before = hn::LoadU(floatTag, here + first);
    const auto isInside = hn::FirstN(floatTag, width - first);
    const auto isUnknown = hn::And(isInside, hn::Eq(before, zero));
    if (hn::AllFalse(floatTag, isUnknown))
        return false;
    Floats sum = zero;
    Floats weights = zero;
    addNeighbours(above + first, here + first, below + first, sum, weights);
    const auto isFilled = hn::And(isUnknown, hn::Gt(weights, hn::Set(floatTag, 3)));
    const Floats mean = hn::Div(hn::Add(sum, two), hn::Add(weights, two));
    hn::StoreU(hn::IfThenElse(isFilled, mean, before), floatTag, result + first);
    return !hn::AllFalse(floatTag, isFilled);
}

/// Works on the chunks whose bits are set, and answers those that have changed.
std::uint64_t spreadRow(const float *above, const float *here, const float *below, float *result,
                        std::size_t width, std::size_t chunk, std::uint64_t wanted)
{
    std::uint64_t changed = 0;
    for (; wanted != 0; wanted &= wanted - 1) {
        const auto bit = static_cast<std::size_t>(std::countr_zero(wanted));
        const std::size_t end = std::min((bit + 1) * chunk, width);
        bool hasChanged = false;
        for (std::size_t first = bit * chunk; first < end; first += hn::Lanes(floatTag))
            hasChanged = spreadVector(above, here, below, result, first, width) || hasChanged;
        changed |= std::uint64_t{hasChanged} << bit;
    }
    return changed;
}

} // namespace
} // namespace dcraw::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace dcraw {

RatioGrid::RatioGrid(int width, int mostRows)
    : m_width(static_cast<std::size_t>(width))
    , m_stride(roundedUp(m_width, 16) + lead)
    , m_values(static_cast<std::size_t>(mostRows + 2) * m_stride + lead)
    , m_chunk(roundedUp((m_width + 63) / 64, 16))
{
    m_kept.fill(std::vector<float>(m_stride));
}

void RatioGrid::clear(int rows)
{
    m_rows = rows;
    std::fill_n(m_values.get(), (static_cast<std::size_t>(rows) + 2) * m_stride + lead, 0.0F);
}

void RatioGrid::spread(int passes)
{
    m_changed.assign(static_cast<std::size_t>(m_rows) + 2, ~std::uint64_t{0});
    m_changing.assign(m_changed.size(), 0);
    while (passes > 0 && spreadOnce())
        --passes;
}

bool RatioGrid::spreadOnce()
{
    const std::size_t chunks = (m_width + m_chunk - 1) / m_chunk;
    const std::uint64_t all = ~std::uint64_t{0} >> (64 - chunks);
    const float *above = row(-1); // as it was before the pass
    std::uint64_t changedAnywhere = 0;
    for (int y = 0; y < m_rows; ++y) {
        // Only beside a change of the pass before can there be another one.
        const auto i = static_cast<std::size_t>(y) + 1;
        const std::uint64_t changed = m_changed[i - 1] | m_changed[i] | m_changed[i + 1];
        const std::uint64_t wanted = (changed | changed << 1 | changed >> 1) & all;
        m_changing[i] = 0;
        if (wanted == 0) {
            above = row(y);
            continue;
        }
        std::vector<float> &kept = m_kept[i % 2];
        std::copy_n(row(y) - 1, m_stride, kept.data());
        const float *here = kept.data() + 1;
        m_changing[i] =
            DCRAW_VARIANT(spreadRow)(above, here, row(y + 1), row(y), m_width, m_chunk, wanted);
        changedAnywhere |= m_changing[i];
        above = here;
    }
    m_changed.swap(m_changing);
    return changedAnywhere != 0;
}

} // namespace dcraw
#endif
