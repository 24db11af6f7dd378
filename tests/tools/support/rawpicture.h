// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <cstdint>
#include <vector>

/// The raw samples of a frame, row by row.
struct RawPicture
{
    int width = 0;
    int height = 0;
    std::vector<std::uint16_t> samples;

    /// The largest difference of two samples, or -1 when the sizes differ or there are none.
    int largestDifference(const RawPicture &other) const;
    /// The level of all samples; -1 when they differ.
    int level() const;
};

/// The samples of a DNG file as dcraw reads them, without any processing.
RawPicture readDng(const QString &path);

/// The samples of a 16-bit PGM file that gzip has packed.
RawPicture readPackedPgm(const QString &path);
