// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>

namespace surveyfile {

/// A survey can't be used. The text says why and names no path.
class SurveyError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

} // namespace surveyfile
