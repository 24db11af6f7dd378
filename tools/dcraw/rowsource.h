// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/picture.h"

namespace dcraw {

/// Where the rows of a picture come from. Used by one thread.
class RowSource
{
public:
    RowSource() = default;
    RowSource(const RowSource &) = delete;
    RowSource &operator=(const RowSource &) = delete;
    virtual ~RowSource() = default;

    /// Fills `rows` with the rows of the picture from `first` on. Rows that follow those of the
    /// call before come with the least work.
    virtual void read(int first, Picture &rows) = 0;
};

} // namespace dcraw
