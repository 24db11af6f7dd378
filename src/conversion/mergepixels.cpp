// SPDX-License-Identifier: MIT
// Compiled once for each instruction set, and the best that the processor has is taken at run time.
// Must be compiled with -ffp-contract=off: a fused multiplication and addition rounds once instead
// of twice.
#include "conversion/mergepixels.h"

#include <algorithm>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "conversion/mergepixels.cpp"
#include <hwy/foreach_target.h> // before highway.h

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace filmwright::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using FloatTag = hn::ScalableTag<float>;
#if HWY_TARGET == HWY_SCALAR // one lane, which can't be halved
using HalfTag = FloatTag;
#else
using HalfTag = hn::Half<FloatTag>;
#endif
using IntTag = hn::RebindToSigned<FloatTag>;
using ByteTag = hn::Rebind<std::uint8_t, FloatTag>;
using DoubleTag = hn::Rebind<double, HalfTag>;
using Floats = hn::Vec<FloatTag>;

constexpr FloatTag floatTag;
constexpr ByteTag byteTag;

struct Pixels
{
    Floats red;
    Floats green;
    Floats blue;
};

HWY_INLINE Floats constant(float value)
{
    return hn::Set(floatTag, value);
}

HWY_INLINE Floats toFloats(hn::Vec<ByteTag> bytes)
{
    return hn::ConvertTo(floatTag, hn::PromoteTo(IntTag(), bytes));
}

HWY_INLINE Pixels load(const std::uint8_t *bytes)
{
    hn::Vec<ByteTag> red;
    hn::Vec<ByteTag> green;
    hn::Vec<ByteTag> blue;
    hn::LoadInterleaved3(byteTag, bytes, red, green, blue);
    return {toFloats(red), toFloats(green), toFloats(blue)};
}

/// 0 to 1, truncated to 0 to 255.
HWY_INLINE hn::Vec<ByteTag> toBytes(Floats values)
{
    return hn::DemoteTo(byteTag, hn::ConvertTo(IntTag(), hn::Mul(values, constant(255))));
}

HWY_INLINE Floats largest(const Pixels &pixels)
{
    return hn::Max(hn::Max(pixels.red, pixels.green), pixels.blue);
}

HWY_INLINE Floats smallest(const Pixels &pixels)
{
    return hn::Min(hn::Min(pixels.red, pixels.green), pixels.blue);
}

/// The pixels whose colour is taken.
HWY_INLINE Pixels chooseColour(const Pixels &first, const Pixels &second)
{
    const Floats top1 = largest(first);
    const Floats top2 = largest(second);
    // Saturations are compared as cross products of whole numbers, which are exact, instead of as
    // quotients: different quotients of numbers up to 255 differ by far more than their rounding.
    // A maximum of 0, which has no quotient, is never above 63.
    const Floats saturation1 = hn::Mul(hn::Sub(top1, smallest(first)), top2);
    const Floats saturation2 = hn::Mul(hn::Sub(top2, smallest(second)), top1);
    const Floats dark = constant(63);
    const auto firstAfterAll =
        hn::And(hn::And(hn::Gt(saturation1, saturation2), hn::Ge(top2, top1)), hn::Gt(top1, dark));
    const auto secondAfterAll =
        hn::And(hn::And(hn::Gt(saturation2, saturation1), hn::Ge(top1, top2)), hn::Gt(top2, dark));
    const auto firstByGreen = hn::Ge(first.green, second.green);
    const auto takeFirst =
        hn::Or(hn::AndNot(secondAfterAll, firstByGreen), hn::AndNot(firstByGreen, firstAfterAll));
    return {hn::IfThenElse(takeFirst, first.red, second.red),
            hn::IfThenElse(takeFirst, first.green, second.green),
            hn::IfThenElse(takeFirst, first.blue, second.blue)};
}

/// The mean of two samples of 0 to 255, as 0 to 1. Rounding it to double precision first, as the
/// plain computation does, would change nothing: that has more than twice the digits.
HWY_INLINE Floats mean(Floats sample1, Floats sample2)
{
    return hn::Div(hn::Add(sample1, sample2), constant(2 * 255));
}

HWY_INLINE hn::Vec<HalfTag> luma(hn::Vec<HalfTag> red, hn::Vec<HalfTag> green,
                                 hn::Vec<HalfTag> blue)
{
    const DoubleTag tag;
    const auto redPart = hn::Mul(hn::Set(tag, 0.299), hn::PromoteTo(tag, red));
    const auto greenPart = hn::Mul(hn::Set(tag, 0.587), hn::PromoteTo(tag, green));
    const auto bluePart = hn::Mul(hn::Set(tag, 0.114), hn::PromoteTo(tag, blue));
    return hn::DemoteTo(HalfTag(), hn::Add(hn::Add(redPart, greenPart), bluePart));
}

HWY_INLINE Floats meanLuma(const Pixels &first, const Pixels &second)
{
    const Floats red = mean(first.red, second.red);
    const Floats green = mean(first.green, second.green);
    const Floats blue = mean(first.blue, second.blue);
#if HWY_TARGET == HWY_SCALAR
    return luma(red, green, blue);
#else
    const HalfTag half;
    return hn::Combine(
        floatTag,
        luma(hn::UpperHalf(half, red), hn::UpperHalf(half, green), hn::UpperHalf(half, blue)),
        luma(hn::LowerHalf(half, red), hn::LowerHalf(half, green), hn::LowerHalf(half, blue)));
#endif
}

/// The hue in sixths of the colour circle, 0 to 6; 0 for grey. By way of degrees, because the
/// detour's roundings are part of the result.
HWY_INLINE Floats hueSector(const Pixels &pixels, Floats top, Floats range)
{
    const auto redIsTop = hn::Eq(top, pixels.red);
    const auto greenIsTop = hn::Eq(top, pixels.green);
    const Floats difference =
        hn::IfThenElse(redIsTop, hn::Sub(pixels.green, pixels.blue),
                       hn::IfThenElse(greenIsTop, hn::Sub(pixels.blue, pixels.red),
                                      hn::Sub(pixels.red, pixels.green)));
    const Floats offset = hn::IfThenElse(redIsTop, hn::Zero(floatTag),
                                         hn::IfThenElse(greenIsTop, constant(2), constant(4)));
    const Floats quotient = hn::Div(difference, hn::Max(range, constant(1)));
    const Floats degrees = hn::Mul(constant(60), hn::Add(quotient, offset));
    const Floats positive = hn::IfThenElse(hn::Lt(degrees, hn::Zero(floatTag)),
                                           hn::Add(degrees, constant(360)), degrees);
    return hn::Div(positive, constant(60));
}

/// The pixels of that hue sector, saturation and value, all but the first 0 to 1.
HWY_INLINE Pixels fromHue(Floats sector, Floats saturation, Floats value)
{
    const Floats zero = hn::Zero(floatTag);
    const Floats chroma = hn::Mul(saturation, value);
    const Floats base = hn::Sub(value, chroma);
    const auto from1 = hn::Ge(sector, constant(1));
    const auto from2 = hn::Ge(sector, constant(2));
    const auto from3 = hn::Ge(sector, constant(3));
    const auto from4 = hn::Ge(sector, constant(4));
    const auto from5 = hn::Ge(sector, constant(5));
    // Up and down again between two even sectors; exact, like the remainder of the division by 2.
    const Floats even =
        hn::IfThenElse(from4, constant(4), hn::IfThenElse(from2, constant(2), zero));
    const Floats remainder = hn::Sub(sector, even);
    const Floats ramp = hn::Min(remainder, hn::Sub(constant(2), remainder));
    const Floats high = hn::Add(chroma, base);
    const Floats middle = hn::Add(hn::Mul(ramp, chroma), base);
    const Floats low = hn::Add(zero, base);

    const auto pick = [](auto isHigh, auto isMiddle, Floats h, Floats m, Floats l) HWY_ATTR {
        return hn::IfThenElse(isHigh, h, hn::IfThenElse(isMiddle, m, l));
    };
    const Floats red =
        pick(hn::Or(hn::Not(from1), from5), hn::Or(hn::Not(from2), from4), high, middle, low);
    const Floats green = pick(hn::AndNot(from3, from1), hn::Not(from4), high, middle, low);
    const Floats blue = pick(hn::AndNot(from5, from3), from2, high, middle, low);
    return {red, green, blue};
}

HWY_INLINE void mergeVector(const std::uint8_t *firstBytes, const std::uint8_t *secondBytes,
                            std::uint8_t *result)
{
    const Pixels first = load(firstBytes);
    const Pixels second = load(secondBytes);
    const Pixels colour = chooseColour(first, second);
    const Floats top = largest(colour);
    const Floats range = hn::Sub(top, smallest(colour));
    const Floats saturation = hn::Div(range, hn::Max(top, constant(1)));
    const Pixels merged =
        fromHue(hueSector(colour, top, range), saturation, meanLuma(first, second));
    hn::StoreInterleaved3(toBytes(merged.red), toBytes(merged.green), toBytes(merged.blue), byteTag,
                          result);
}

void merge(const std::uint8_t *first, const std::uint8_t *second, std::uint8_t *result,
           std::size_t count)
{
    const std::size_t lanes = hn::Lanes(floatTag);
    std::size_t done = 0;
    for (; count - done >= lanes; done += lanes)
        mergeVector(first + 3 * done, second + 3 * done, result + 3 * done);
    if (done == count)
        return;
    constexpr std::size_t maxBytes = 3 * hn::MaxLanes(FloatTag());
    std::uint8_t lastFirst[maxBytes] = {};
    std::uint8_t lastSecond[maxBytes] = {};
    const std::size_t bytes = 3 * (count - done);
    std::memcpy(lastFirst, first + 3 * done, bytes);
    std::memcpy(lastSecond, second + 3 * done, bytes);
    mergeVector(lastFirst, lastSecond, lastFirst);
    std::memcpy(result + 3 * done, lastFirst, bytes);
}

} // namespace
} // namespace filmwright::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace filmwright {

HWY_EXPORT(merge);

void mergePixels(const std::uint8_t *first, const std::uint8_t *second, std::uint8_t *result,
                 std::size_t count)
{
    HWY_DYNAMIC_DISPATCH(merge)(first, second, result, count);
}

} // namespace filmwright
#endif
