// SPDX-License-Identifier: MIT
// The command line.
#pragma once

#include "mlv_sample/settings.h"

#include <span>
#include <stdexcept>
#include <string_view>

namespace sample {

/// A command line that can't be followed; what() is the line for the person.
class UsageError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

struct Options
{
    Settings settings;
    bool help = false;
    bool version = false;
};

/// `arguments` does not hold the program's name. Throws UsageError.
Options parseOptions(std::span<const char *const> arguments);

extern const std::string_view helpText;

} // namespace sample
