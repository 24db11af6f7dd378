// SPDX-License-Identifier: MIT
#pragma once

#include "conversion/tiffbitmap.h"

namespace filmwright {

/// Merges `second` into `first` (see mergePixels()); what the merge doesn't write, alpha and
/// padding, stays. Copies nothing unless another bitmap shares the bytes of `first`.
///
/// Every sample counts as one byte, whatever its bits, and the layout of `first` is taken for both,
/// with rows as far apart as their whole samples go. So rows of a bitmap with padding, or with more
/// than 8 bits a sample, are read with a drift.
///
/// False, with `first` as it was, when `first` has no three whole samples a pixel or `second` is
/// too short to be read at the same places.
[[nodiscard]] bool mergeBitmaps(TiffBitmap *first, const TiffBitmap &second);

/// The same for bitmaps that are meant to have 16 bits a sample: false, with `first` as it was,
/// unless both have three such samples a pixel, the same size and no padding.
[[nodiscard]] bool mergeDeepBitmaps(TiffBitmap *first, const TiffBitmap &second);

} // namespace filmwright
