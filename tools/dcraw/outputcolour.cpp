// SPDX-License-Identifier: MIT
// Compiled once for each instruction set.
#include "dcraw/outputcolour.h"

#include "dcraw/instructionset.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dcraw/outputcolour.cpp"
#include <hwy/foreach_target.h> // before highway.h

#include "dcraw/vectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace dcraw::HWY_NAMESPACE {
namespace {

void convertRow(const PixelRow &row, const Matrix &matrix, std::uint16_t limit, std::size_t columns)
{
    const Ints largest = hn::Set(intTag, limit);
    for (std::size_t x = 0; x < columns; x += hn::Lanes(intTag)) {
        const Floats red = floats(ints(row[0] + x));
        const Floats green = floats(ints(row[1] + x));
        const Floats blue = floats(ints(row[2] + x));
        for (std::size_t i = 0; i < 3; ++i) {
            const auto part = [&](std::size_t colour, Floats value) HWY_ATTR {
                return hn::Mul(hn::Set(floatTag, matrix[i][colour]), value);
            };
            const Floats sum = hn::Add(hn::Add(part(0, red), part(1, green)), part(2, blue));
            storeClipped(hn::Min(truncated(sum), largest), row[i] + x);
        }
    }
}

} // namespace
} // namespace dcraw::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace dcraw {

void convertColour(const PixelRow &row, const Matrix &matrix, std::uint16_t limit,
                   std::size_t columns)
{
    DCRAW_VARIANT(convertRow)(row, matrix, limit, columns);
}

} // namespace dcraw
#endif
