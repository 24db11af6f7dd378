// SPDX-License-Identifier: MIT
// Compiled once for each instruction set, and the best that the processor has is taken at run time.
// Must be compiled with -ffp-contract=off: a fused multiplication and addition rounds once instead
// of twice.
#include "conversion/mergepixels.h"

#include <cstring>
#include <limits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "conversion/mergepixels.cpp"
#include <hwy/foreach_target.h> // before highway.h

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace filmwright::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

// The choice of colours and the order of their components are computed on whole vectors of samples,
// of 8 or 16 bits; what needs fractions follows in several vectors of floats.
using FloatTag = hn::ScalableTag<float>;
using IntTag = hn::RebindToSigned<FloatTag>;
#if HWY_TARGET == HWY_SCALAR // one lane, which can't be halved
using HalfTag = FloatTag;
#else
using HalfTag = hn::Half<FloatTag>;
#endif
using DoubleTag = hn::Rebind<double, HalfTag>;
using Ints = hn::Vec<IntTag>;
using Floats = hn::Vec<FloatTag>;
template <typename Sample>
using SampleTag = hn::ScalableTag<Sample>;
template <typename Sample>
using Samples = hn::Vec<SampleTag<Sample>>;

constexpr FloatTag floatTag;

template <typename Sample>
constexpr float highest = std::numeric_limits<Sample>::max();

/// One component of a vector of pixels, in memory.
template <typename Sample>
class Component
{
public:
    Component() = default;
    HWY_INLINE explicit Component(Samples<Sample> values) { hn::Store(values, tag, m_samples); }

    HWY_INLINE Samples<Sample> all() const { return hn::Load(tag, m_samples); }
    HWY_INLINE Ints intsFrom(std::size_t lane) const
    {
        return hn::PromoteTo(IntTag(), hn::LoadU(FewTag(), m_samples + lane));
    }
    HWY_INLINE Floats floatsFrom(std::size_t lane) const
    {
        return hn::ConvertTo(floatTag, intsFrom(lane));
    }
    /// Stores 0 to 1 as 0 to the highest sample, truncated.
    HWY_INLINE void storeFrom(std::size_t lane, Floats values)
    {
        const Floats scaled = hn::Mul(values, hn::Set(floatTag, highest<Sample>));
        hn::StoreU(hn::DemoteTo(FewTag(), hn::ConvertTo(IntTag(), scaled)), FewTag(),
                   m_samples + lane);
    }

private:
    using FewTag = hn::Rebind<Sample, FloatTag>;
    static constexpr SampleTag<Sample> tag{};

    HWY_ALIGN Sample m_samples[hn::MaxLanes(SampleTag<Sample>())];
};

template <typename Sample>
struct Pixels
{
    Samples<Sample> red;
    Samples<Sample> green;
    Samples<Sample> blue;
    Samples<Sample> top;
    Samples<Sample> low;
};

template <typename Sample>
HWY_INLINE Pixels<Sample> load(const Sample *samples)
{
    Pixels<Sample> pixels;
    hn::LoadInterleaved3(SampleTag<Sample>(), samples, pixels.red, pixels.green, pixels.blue);
    pixels.top = hn::Max(hn::Max(pixels.red, pixels.green), pixels.blue);
    pixels.low = hn::Min(hn::Min(pixels.red, pixels.green), pixels.blue);
    return pixels;
}

template <class V>
HWY_INLINE auto atLeast(V value, V bound)
{
    return hn::Eq(hn::Max(value, bound), value);
}

/// a × b > c × d
template <typename Sample>
HWY_INLINE hn::Mask<SampleTag<Sample>> productIsGreater(Samples<Sample> a, Samples<Sample> b,
                                                        Samples<Sample> c, Samples<Sample> d)
{
    constexpr SampleTag<Sample> tag{};
#if HWY_TARGET == HWY_SCALAR
    const auto lane = [](Samples<Sample> value) { return std::uint32_t{hn::GetLane(value)}; };
    return hn::Gt(hn::Set(tag, lane(a) * lane(b) > lane(c) * lane(d) ? 1 : 0), hn::Zero(tag));
#else
    const hn::Repartition<hwy::MakeWide<Sample>, SampleTag<Sample>> wideTag;
    constexpr int bits = 8 * sizeof(Sample);
    const auto lowHalf = hn::Set(wideTag, std::numeric_limits<Sample>::max());
    const auto even = [&](Samples<Sample> samples)
                          HWY_ATTR { return hn::And(hn::BitCast(wideTag, samples), lowHalf); };
    const auto odd = [&](Samples<Sample> samples)
                         HWY_ATTR { return hn::ShiftRight<bits>(hn::BitCast(wideTag, samples)); };
    const auto evenGreater =
        hn::VecFromMask(wideTag, hn::Gt(hn::Mul(even(a), even(b)), hn::Mul(even(c), even(d))));
    const auto oddGreater =
        hn::VecFromMask(wideTag, hn::Gt(hn::Mul(odd(a), odd(b)), hn::Mul(odd(c), odd(d))));
    return hn::MaskFromVec(
        hn::BitCast(tag, hn::Or(hn::And(evenGreater, lowHalf), hn::AndNot(lowHalf, oddGreater))));
#endif
}

/// The pixels whose colour is taken.
template <typename Sample>
HWY_INLINE Pixels<Sample> chooseColour(const Pixels<Sample> &first, const Pixels<Sample> &second)
{
    // Saturations are compared as cross products of whole numbers instead of as quotients, which
    // is the same for 8 bits: different quotients of numbers up to 255 differ by far more than
    // their rounding. A maximum of 0, which has no quotient, is never above 63.
    const auto range1 = hn::Sub(first.top, first.low);
    const auto range2 = hn::Sub(second.top, second.low);
    constexpr Sample darkest = 63 * (std::numeric_limits<Sample>::max() / 255);
    const auto dark = hn::Set(SampleTag<Sample>(), darkest);
    const auto firstAfterAll =
        hn::And(productIsGreater<Sample>(range1, second.top, range2, first.top),
                hn::And(atLeast(second.top, first.top), hn::Gt(first.top, dark)));
    const auto secondAfterAll =
        hn::And(productIsGreater<Sample>(range2, first.top, range1, second.top),
                hn::And(atLeast(first.top, second.top), hn::Gt(second.top, dark)));
    const auto firstByGreen = atLeast(first.green, second.green);
    const auto takeFirst =
        hn::Or(hn::AndNot(secondAfterAll, firstByGreen), hn::AndNot(firstByGreen, firstAfterAll));
    const auto choose = [&](Samples<Sample> ofFirst, Samples<Sample> ofSecond)
                            HWY_ATTR { return hn::IfThenElse(takeFirst, ofFirst, ofSecond); };
    return {choose(first.red, second.red), choose(first.green, second.green),
            choose(first.blue, second.blue), choose(first.top, second.top),
            choose(first.low, second.low)};
}

/// The mean of two samples, as 0 to 1. Rounding it to double precision first, as the plain
/// computation does, would change nothing: that has more than twice the digits.
template <typename Sample>
HWY_INLINE Floats mean(Ints sample1, Ints sample2)
{
    return hn::Div(hn::ConvertTo(floatTag, hn::Add(sample1, sample2)),
                   hn::Set(floatTag, 2 * highest<Sample>));
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

template <typename Sample>
HWY_INLINE void mergeVector(const Sample *firstSamples, const Sample *secondSamples, Sample *result)
{
    constexpr SampleTag<Sample> tag{};
    using Block = Component<Sample>;
    const Pixels<Sample> first = load(firstSamples);
    const Pixels<Sample> second = load(secondSamples);
    const Pixels<Sample> colour = chooseColour(first, second);
    const auto redIsTop = hn::Eq(colour.red, colour.top);
    const auto greenIsTop = hn::Eq(colour.green, colour.top);
    const auto byTop = [&](Samples<Sample> red, Samples<Sample> green,
                           Samples<Sample> blue) HWY_ATTR {
        return hn::IfThenElse(redIsTop, red, hn::IfThenElse(greenIsTop, green, blue));
    };

    const Block red1(first.red);
    const Block green1(first.green);
    const Block blue1(first.blue);
    const Block red2(second.red);
    const Block green2(second.green);
    const Block blue2(second.blue);
    const Block minuend(byTop(colour.green, colour.blue, colour.red));
    const Block subtrahend(byTop(colour.blue, colour.red, colour.green));
    const Block centre(byTop(hn::Zero(tag), hn::Set(tag, 2), hn::Set(tag, 4)));
    const Block top(colour.top);
    const Block range(hn::Sub(colour.top, colour.low));

    Block high;
    Block middle;
    Block low;
    const std::size_t samples = hn::Lanes(tag);
    const std::size_t step = hn::Lanes(floatTag);
    for (std::size_t i = 0; i < samples; i += step) {
        const Floats value = lumaOfWholeVector(mean<Sample>(red1.intsFrom(i), red2.intsFrom(i)),
                                               mean<Sample>(green1.intsFrom(i), green2.intsFrom(i)),
                                               mean<Sample>(blue1.intsFrom(i), blue2.intsFrom(i)));
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
    const auto byOrder = [&](Samples<Sample> component) HWY_ATTR {
        return hn::IfThenElse(
            hn::Eq(component, colour.top), high.all(),
            hn::IfThenElse(hn::Eq(component, colour.low), low.all(), middle.all()));
    };
    hn::StoreInterleaved3(byOrder(colour.red), byOrder(colour.green), byOrder(colour.blue), tag,
                          result);
}

template <typename Sample>
HWY_INLINE void mergeAll(const Sample *first, const Sample *second, Sample *result,
                         std::size_t count)
{
    const std::size_t lanes = hn::Lanes(SampleTag<Sample>());
    std::size_t done = 0;
    for (; count - done >= lanes; done += lanes)
        mergeVector(first + 3 * done, second + 3 * done, result + 3 * done);
    if (done == count)
        return;
    constexpr std::size_t most = 3 * hn::MaxLanes(SampleTag<Sample>());
    Sample lastFirst[most] = {};
    Sample lastSecond[most] = {};
    const std::size_t bytes = 3 * (count - done) * sizeof(Sample);
    std::memcpy(lastFirst, first + 3 * done, bytes);
    std::memcpy(lastSecond, second + 3 * done, bytes);
    mergeVector(lastFirst, lastSecond, lastFirst);
    std::memcpy(result + 3 * done, lastFirst, bytes);
}

void merge(const std::uint8_t *first, const std::uint8_t *second, std::uint8_t *result,
           std::size_t count)
{
    mergeAll(first, second, result, count);
}

void mergeDeep(const std::uint16_t *first, const std::uint16_t *second, std::uint16_t *result,
               std::size_t count)
{
    mergeAll(first, second, result, count);
}

} // namespace
} // namespace filmwright::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace filmwright {

HWY_EXPORT(merge);
HWY_EXPORT(mergeDeep);

void mergePixels(const std::uint8_t *first, const std::uint8_t *second, std::uint8_t *result,
                 std::size_t count)
{
    HWY_DYNAMIC_DISPATCH(merge)(first, second, result, count);
}

void mergePixels(const std::uint16_t *first, const std::uint16_t *second, std::uint16_t *result,
                 std::size_t count)
{
    HWY_DYNAMIC_DISPATCH(mergeDeep)(first, second, result, count);
}

} // namespace filmwright
#endif
