// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>

namespace raw {

/// What is wrong with a recording or with one of its frames, in words for a person. The text names
/// no path and repeats no text of the recording.
class Error : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// The file can't be read, whatever it holds.
class ReadError : public Error
{
public:
    using Error::Error;
};

} // namespace raw
