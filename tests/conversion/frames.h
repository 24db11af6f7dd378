// SPDX-License-Identifier: MIT
#pragma once

#include "conversion/tiffbitmap.h"

#include <QString>

/// A packed bitmap of 8-bit RGB whose bytes count up from `start`.
filmwright::TiffBitmap countingBitmap(int width, int height, int start = 0);

/// Writes a DNG of 16-bit samples with a plain colour matrix: a horizontal ramp, the same in all
/// colours. False when that failed.
bool writeRampDng(const QString &path, int width, int height);
