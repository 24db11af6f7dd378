// SPDX-License-Identifier: MIT
// Compiled once for each instruction set.
#include "dcraw/highlightspread.h"

#include "dcraw/instructionset.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dcraw/highlightspread.cpp"
#include <hwy/foreach_target.h> // before highway.h

#include "dcraw/vectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace dcraw::HWY_NAMESPACE {
namespace {

/// Fills the zeros of `here` that have enough known neighbours, in `result`, which is equal to
/// `here` before. Answers whether there are any.
bool spreadRow(const float *above, const float *here, const float *below, float *result,
               std::size_t columns)
{
    const Floats zero = hn::Zero(floatTag);
    const Floats two = hn::Set(floatTag, 2);
    bool hasChanged = false;
    for (std::size_t i = 0; i < columns; i += hn::Lanes(floatTag)) {
        const Floats before = hn::LoadU(floatTag, here + i);
        const auto isUnknown = hn::Eq(before, zero);
        if (hn::AllFalse(floatTag, isUnknown))
            continue;
        Floats sum = zero;
        Floats weights = zero;
        const auto addCorner = [&](const float *from) HWY_ATTR {
            const Floats ratio = hn::LoadU(floatTag, from + i);
            sum = hn::Add(sum, ratio);
            weights =
                hn::Add(weights, hn::IfThenElseZero(hn::Gt(ratio, zero), hn::Set(floatTag, 1)));
        };
        const auto addSide = [&](const float *from) HWY_ATTR {
            const Floats ratio = hn::LoadU(floatTag, from + i);
            sum = hn::Add(sum, hn::Mul(two, ratio));
            weights = hn::Add(weights, hn::IfThenElseZero(hn::Gt(ratio, zero), two));
        };
        // The order counts: sums are rounded.
        addCorner(above - 1);
        addSide(above);
        addCorner(above + 1);
        addSide(here + 1);
        addCorner(below + 1);
        addSide(below);
        addCorner(below - 1);
        addSide(here - 1);
        const auto isFilled = hn::And(isUnknown, hn::Gt(weights, hn::Set(floatTag, 3)));
        const Floats mean = hn::Div(hn::Add(sum, two), hn::Add(weights, two));
        hn::StoreU(hn::IfThenElse(isFilled, mean, before), floatTag, result + i);
        hasChanged = hasChanged || !hn::AllFalse(floatTag, isFilled);
    }
    // What lies beyond the last column stays unknown.
    const std::size_t end = roundedUp(columns, hn::Lanes(floatTag));
    std::fill(result + columns, result + end, 0.0F);
    return hasChanged;
}

} // namespace
} // namespace dcraw::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace dcraw {

RatioGrid::RatioGrid(int width, int height)
    : m_width(width)
    , m_height(height)
    , m_stride(roundedUp(static_cast<std::size_t>(width), 16) + lead)
    , m_values(static_cast<std::size_t>(height + 2) * m_stride + lead)
    , m_changed(static_cast<std::size_t>(height + 2), 1)
{
}

void RatioGrid::spread(int passes)
{
    while (passes > 0 && spreadOnce()) {
        --passes;
    }
}

bool RatioGrid::spreadOnce()
{
    // Only beside a change of the pass before there can be another one. Rows are replaced in place:
    // the one above and this one are kept as they were.
    std::vector<float> kept[2] = {std::vector<float>(m_stride + lead),
                                  std::vector<float>(m_stride + lead)};
    std::vector<char> changed(m_changed.size(), 0);
    bool hasChanged = false;
    for (int y = 0; y < m_height; ++y) {
        std::vector<float> &before = kept[y % 2];
        std::copy_n(row(y) - 1, m_stride, before.data());
        const auto i = static_cast<std::size_t>(y + 1);
        if (!m_changed[i - 1] && !m_changed[i] && !m_changed[i + 1])
            continue;
        const float *above = y == 0 ? row(-1) : kept[(y + 1) % 2].data() + 1;
        changed[i] = DCRAW_VARIANT(spreadRow)(above, before.data() + 1, row(y + 1), row(y),
                                              static_cast<std::size_t>(m_width));
        hasChanged = hasChanged || changed[i];
    }
    m_changed = std::move(changed);
    return hasChanged;
}

} // namespace dcraw
#endif
