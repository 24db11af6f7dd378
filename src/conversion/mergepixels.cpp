// SPDX-License-Identifier: MIT
// Compiled once for each instruction set, and the best that the processor has is taken at run time.
// Must be compiled with -ffp-contract=off: a fused multiplication and addition rounds once instead
// of twice.
#include "conversion/mergepixels.h"

#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "conversion/mergepixels.cpp"
#include <hwy/foreach_target.h> // before highway.h

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace filmwright::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

// The choice of colours and the order of their components are computed on whole vectors of bytes;
// what needs fractions follows in several vectors of floats.
using ByteTag = hn::ScalableTag<std::uint8_t>;
using FloatTag = hn::ScalableTag<float>;
using IntTag = hn::RebindToSigned<FloatTag>;
using FewBytesTag = hn::Rebind<std::uint8_t, FloatTag>;
#if HWY_TARGET == HWY_SCALAR // one lane, which can't be halved
using HalfTag = FloatTag;
#else
using HalfTag = hn::Half<FloatTag>;
#endif
using DoubleTag = hn::Rebind<double, HalfTag>;
using Bytes = hn::Vec<ByteTag>;
using Ints = hn::Vec<IntTag>;
using Floats = hn::Vec<FloatTag>;

constexpr ByteTag byteTag;
constexpr FloatTag floatTag;

/// One component of a vector of pixels, in memory.
class ByteBlock
{
public:
    ByteBlock() = default;
    HWY_INLINE explicit ByteBlock(Bytes values) { hn::Store(values, byteTag, m_bytes); }

    HWY_INLINE Bytes all() const { return hn::Load(byteTag, m_bytes); }
    HWY_INLINE Ints intsFrom(std::size_t lane) const
    {
        return hn::PromoteTo(IntTag(), hn::LoadU(FewBytesTag(), m_bytes + lane));
    }
    HWY_INLINE Floats floatsFrom(std::size_t lane) const
    {
        return hn::ConvertTo(floatTag, intsFrom(lane));
    }
    /// Stores 0 to 1 as 0 to 255, truncated.
    HWY_INLINE void storeFrom(std::size_t lane, Floats values)
    {
        const Ints scaled = hn::ConvertTo(IntTag(), hn::Mul(values, hn::Set(floatTag, 255)));
        hn::StoreU(hn::DemoteTo(FewBytesTag(), scaled), FewBytesTag(), m_bytes + lane);
    }

private:
    HWY_ALIGN std::uint8_t m_bytes[hn::MaxLanes(ByteTag())];
};

struct Pixels
{
    Bytes red;
    Bytes green;
    Bytes blue;
    Bytes top;
    Bytes low;
};

HWY_INLINE Pixels load(const std::uint8_t *bytes)
{
    Pixels pixels;
    hn::LoadInterleaved3(byteTag, bytes, pixels.red, pixels.green, pixels.blue);
    pixels.top = hn::Max(hn::Max(pixels.red, pixels.green), pixels.blue);
    pixels.low = hn::Min(hn::Min(pixels.red, pixels.green), pixels.blue);
    return pixels;
}

HWY_INLINE hn::Mask<ByteTag> atLeast(Bytes value, Bytes bound)
{
    return hn::Eq(hn::Max(value, bound), value);
}

/// a × b > c × d
HWY_INLINE hn::Mask<ByteTag> productIsGreater(Bytes a, Bytes b, Bytes c, Bytes d)
{
#if HWY_TARGET == HWY_SCALAR
    const bool greater = hn::GetLane(a) * hn::GetLane(b) > hn::GetLane(c) * hn::GetLane(d);
    return hn::MaskFromVec(hn::Set(byteTag, greater ? 0xff : 0));
#else
    const hn::Repartition<std::uint16_t, ByteTag> wideTag;
    const auto lowHalf = hn::Set(wideTag, 0x00ff);
    const auto even = [&](Bytes bytes)
                          HWY_ATTR { return hn::And(hn::BitCast(wideTag, bytes), lowHalf); };
    const auto odd = [&](Bytes bytes)
                         HWY_ATTR { return hn::ShiftRight<8>(hn::BitCast(wideTag, bytes)); };
    const auto evenGreater =
        hn::VecFromMask(wideTag, hn::Gt(hn::Mul(even(a), even(b)), hn::Mul(even(c), even(d))));
    const auto oddGreater =
        hn::VecFromMask(wideTag, hn::Gt(hn::Mul(odd(a), odd(b)), hn::Mul(odd(c), odd(d))));
    return hn::MaskFromVec(hn::BitCast(
        byteTag, hn::Or(hn::And(evenGreater, lowHalf), hn::AndNot(lowHalf, oddGreater))));
#endif
}

/// The pixels whose colour is taken.
HWY_INLINE Pixels chooseColour(const Pixels &first, const Pixels &second)
{
    // Saturations are compared as cross products of whole numbers instead of as quotients, which
    // is the same: different quotients of numbers up to 255 differ by far more than their rounding.
    // A maximum of 0, which has no quotient, is never above 63.
    const Bytes range1 = hn::Sub(first.top, first.low);
    const Bytes range2 = hn::Sub(second.top, second.low);
    const Bytes dark = hn::Set(byteTag, 63);
    const auto firstAfterAll =
        hn::And(productIsGreater(range1, second.top, range2, first.top),
                hn::And(atLeast(second.top, first.top), hn::Gt(first.top, dark)));
    const auto secondAfterAll =
        hn::And(productIsGreater(range2, first.top, range1, second.top),
                hn::And(atLeast(first.top, second.top), hn::Gt(second.top, dark)));
    const auto firstByGreen = atLeast(first.green, second.green);
    const auto takeFirst =
        hn::Or(hn::AndNot(secondAfterAll, firstByGreen), hn::AndNot(firstByGreen, firstAfterAll));
    const auto choose = [&](Bytes ofFirst, Bytes ofSecond)
                            HWY_ATTR { return hn::IfThenElse(takeFirst, ofFirst, ofSecond); };
    return {choose(first.red, second.red), choose(first.green, second.green),
            choose(first.blue, second.blue), choose(first.top, second.top),
            choose(first.low, second.low)};
}

/// The mean of two samples, as 0 to 1. Rounding it to double precision first, as the plain
/// computation does, would change nothing: that has more than twice the digits.
HWY_INLINE Floats mean(Ints sample1, Ints sample2)
{
    return hn::Div(hn::ConvertTo(floatTag, hn::Add(sample1, sample2)), hn::Set(floatTag, 2 * 255));
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

HWY_INLINE Floats lumaOfWholeVector(Floats red, Floats green, Floats blue)
{
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

/// How far the middle component stands above the lowest, as a part of the range of components:
/// the distance of the hue from that of its largest component, in sixths of the colour circle.
/// It takes the way by degrees, because the roundings on that way are part of the result.
HWY_INLINE Floats hueRamp(Floats difference, Floats range, Floats centre)
{
    const auto one = hn::Set(floatTag, 1);
    const auto sixth = hn::Set(floatTag, 60);
    const auto circle = hn::Set(floatTag, 360);
    const Floats quotient = hn::Div(difference, hn::Max(range, one)); // grey: 0
    const Floats degrees = hn::Mul(sixth, hn::Add(quotient, centre));
    // Only a red that tends to blue is negative; the circle ends with red again.
    const auto negative = hn::Lt(degrees, hn::Zero(floatTag));
    const Floats positive = hn::IfThenElse(negative, hn::Add(degrees, circle), degrees);
    const Floats nearest = hn::IfThenElse(negative, hn::Set(floatTag, 6), centre);
    return hn::Abs(hn::Sub(hn::Div(positive, sixth), nearest));
}

HWY_INLINE void mergeVector(const std::uint8_t *firstBytes, const std::uint8_t *secondBytes,
                            std::uint8_t *result)
{
    const Pixels first = load(firstBytes);
    const Pixels second = load(secondBytes);
    const Pixels colour = chooseColour(first, second);
    const auto redIsTop = hn::Eq(colour.red, colour.top);
    const auto greenIsTop = hn::Eq(colour.green, colour.top);
    const auto byTop = [&](Bytes red, Bytes green, Bytes blue) HWY_ATTR {
        return hn::IfThenElse(redIsTop, red, hn::IfThenElse(greenIsTop, green, blue));
    };

    const ByteBlock red1(first.red);
    const ByteBlock green1(first.green);
    const ByteBlock blue1(first.blue);
    const ByteBlock red2(second.red);
    const ByteBlock green2(second.green);
    const ByteBlock blue2(second.blue);
    const ByteBlock minuend(byTop(colour.green, colour.blue, colour.red));
    const ByteBlock subtrahend(byTop(colour.blue, colour.red, colour.green));
    const ByteBlock centre(byTop(hn::Zero(byteTag), hn::Set(byteTag, 2), hn::Set(byteTag, 4)));
    const ByteBlock top(colour.top);
    const ByteBlock range(hn::Sub(colour.top, colour.low));

    ByteBlock high;
    ByteBlock middle;
    ByteBlock low;
    const std::size_t bytes = hn::Lanes(byteTag);
    const std::size_t step = hn::Lanes(floatTag);
    for (std::size_t i = 0; i < bytes; i += step) {
        const Floats value = lumaOfWholeVector(mean(red1.intsFrom(i), red2.intsFrom(i)),
                                               mean(green1.intsFrom(i), green2.intsFrom(i)),
                                               mean(blue1.intsFrom(i), blue2.intsFrom(i)));
        const Floats rangeHere = range.floatsFrom(i);
        const Floats saturation =
            hn::Div(rangeHere, hn::Max(top.floatsFrom(i), hn::Set(floatTag, 1)));
        const Floats difference =
            hn::ConvertTo(floatTag, hn::Sub(minuend.intsFrom(i), subtrahend.intsFrom(i)));
        const Floats ramp = hueRamp(difference, rangeHere, centre.floatsFrom(i));
        const Floats chroma = hn::Mul(saturation, value);
        const Floats base = hn::Sub(value, chroma);
        high.storeFrom(i, hn::Add(chroma, base));
        middle.storeFrom(i, hn::Add(hn::Mul(ramp, chroma), base));
        low.storeFrom(i, base);
    }

    // Where two components are equal, so are the two results they may get.
    const auto byOrder = [&](Bytes component) HWY_ATTR {
        return hn::IfThenElse(
            hn::Eq(component, colour.top), high.all(),
            hn::IfThenElse(hn::Eq(component, colour.low), low.all(), middle.all()));
    };
    hn::StoreInterleaved3(byOrder(colour.red), byOrder(colour.green), byOrder(colour.blue), byteTag,
                          result);
}

void merge(const std::uint8_t *first, const std::uint8_t *second, std::uint8_t *result,
           std::size_t count)
{
    const std::size_t lanes = hn::Lanes(byteTag);
    std::size_t done = 0;
    for (; count - done >= lanes; done += lanes)
        mergeVector(first + 3 * done, second + 3 * done, result + 3 * done);
    if (done == count)
        return;
    constexpr std::size_t maxBytes = 3 * hn::MaxLanes(ByteTag());
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
