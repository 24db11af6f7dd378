// SPDX-License-Identifier: MIT
// Dual-ISO frames of the sample scene and what is known of them.
#pragma once

#include "cr2hdr/frame.h"
#include "mlv_sample/scene.h"
#include "mlv_sample/settings.h"

namespace dualscene {

/// A frame of the recording that mlv_sample would write with these settings.
dualiso::Frame frame(const sample::Settings &settings, int number);

/// 640 × 400, with rows of ISO 100 and `highIso`.
sample::Settings dualSettings(int highIso);

/// The same scene at the low sensitivity without noise.
dualiso::Frame truth(sample::Settings settings, int number);

/// The root mean square of the differences between two frames within an area, less a margin,
/// because edges are another matter. Only rows whose number modulo 4 is marked count.
double deviation(const dualiso::Frame &one, const dualiso::Frame &other, const sample::Area &area,
                 std::array<bool, 4> rows = {true, true, true, true});

/// How much of `frame` less `truth` repeats every four rows: the squares of the amplitudes at that
/// period, added up over the columns.
double patternEnergy(const dualiso::Frame &frame, const dualiso::Frame &truth);

} // namespace dualscene
