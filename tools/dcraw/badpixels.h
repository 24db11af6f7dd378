// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/development.h"

#include <ctime>
#include <memory>
#include <string>
#include <vector>

namespace dcraw {

struct BadPixel
{
    int column; ///< of the active area, as is the row; may lie outside
    int row;
    std::time_t since; ///< seconds since 1970

    bool operator==(const BadPixel &) const = default;
};

/// The pixels of a list: lines of column, row and time; anything may follow these, and nothing
/// behind a "#" counts. Throws NotCovered for lists that can't be read here or whose numbers are
/// too large.
std::vector<BadPixel> readBadPixels(const std::string &path);

/// Throws NotCovered when the working folder or one above it holds a list that the real dcraw takes
/// without being told.
void requireNoDefaultList();

/// The same samples with the bad ones replaced by the mean of their neighbours of the same colour,
/// one after the other: a later one sees what an earlier one has become. Pixels that were good when
/// the picture was taken stay.
std::unique_ptr<SampleRows> withoutBadPixels(const SampleRows &samples,
                                             const Development &development,
                                             const std::vector<BadPixel> &pixels,
                                             std::time_t pictureTime);

} // namespace dcraw
