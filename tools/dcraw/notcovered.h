// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>

namespace dcraw {

/// What this program leaves to the real dcraw: why, in words for a person that follow the
/// name of the file or "the command line" ("names no camera"). Nothing has been written yet.
class NotCovered : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Throws NotCovered with the error unless the condition holds.
inline void require(bool condition, const char *error)
{
    if (!condition) [[unlikely]]
        throw NotCovered(error);
}

} // namespace dcraw
