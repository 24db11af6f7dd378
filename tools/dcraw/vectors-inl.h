// SPDX-License-Identifier: MIT
// What the loops in vectors share. Included once for each instruction set.
#if defined(DCRAW_VECTORS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef DCRAW_VECTORS_INL_H
#undef DCRAW_VECTORS_INL_H
#else
#define DCRAW_VECTORS_INL_H
#endif

#include <hwy/highway.h>

#include <cstdint>

HWY_BEFORE_NAMESPACE();
namespace dcraw::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using IntTag = hn::ScalableTag<std::int32_t>;
using FloatTag = hn::RebindToFloat<IntTag>;
using NarrowTag = hn::Rebind<std::uint16_t, IntTag>;
using Ints = hn::Vec<IntTag>;
using Floats = hn::Vec<FloatTag>;

constexpr IntTag intTag;
constexpr FloatTag floatTag;
constexpr NarrowTag narrowTag;

HWY_INLINE Ints ints(const std::int32_t *values)
{
    return hn::LoadU(intTag, values);
}

HWY_INLINE Ints ints(const std::uint16_t *values)
{
    return hn::PromoteTo(intTag, hn::LoadU(narrowTag, values));
}

/// Limits to 0 to 65535.
HWY_INLINE void storeClipped(Ints values, std::uint16_t *result)
{
    hn::StoreU(hn::DemoteTo(narrowTag, values), narrowTag, result);
}

HWY_INLINE Floats floats(Ints values)
{
    return hn::ConvertTo(floatTag, values);
}

/// Limits to 0 to 65535.
HWY_INLINE Ints clip(Ints values)
{
    return hn::Min(hn::Max(values, hn::Zero(intTag)), hn::Set(intTag, 65535));
}

/// Towards zero; what doesn't fit into 32 bits becomes the lowest number, as x86 does it.
#if HWY_TARGET == HWY_SSSE3 || HWY_TARGET == HWY_SSE4
HWY_INLINE Ints truncated(Floats values)
{
    return Ints{_mm_cvttps_epi32(values.raw)};
}
#elif HWY_TARGET == HWY_AVX2
HWY_INLINE Ints truncated(Floats values)
{
    return Ints{_mm256_cvttps_epi32(values.raw)};
}
#elif HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
HWY_INLINE Ints truncated(Floats values)
{
    return Ints{_mm512_cvttps_epi32(values.raw)};
}
#else
HWY_INLINE Ints truncated(Floats values)
{
    const auto fits =
        hn::RebindMask(intTag, hn::And(hn::Ge(values, hn::Set(floatTag, -2147483648.0F)),
                                       hn::Lt(values, hn::Set(floatTag, 2147483648.0F))));
    return hn::IfThenElse(fits, hn::ConvertTo(intTag, values), hn::Set(intTag, INT32_MIN));
}
#endif

} // namespace dcraw::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
