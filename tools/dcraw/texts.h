// SPDX-License-Identifier: MIT
#pragma once

#include <ctime>
#include <string>

namespace dcraw {

/// The names of a camera and the words of a picture.
struct Texts
{
    std::string description; ///< at most 511 bytes
    std::string make;        ///< at most 63 bytes, as is the model
    std::string model;
};

/// The texts as the TIFF gets them: the make in its short, known form and not repeated in the
/// model. Throws NotCovered for cameras that have rules of their own, and for missing names.
Texts normalised(Texts texts);

/// The seconds since 1970 of a time that stands in the first 19 bytes as "YYYY:MM:DD hh:mm:ss", in
/// UTC; what is out of range runs over into the next larger unit. 0 when there is no such time or
/// it isn't after 1970 began. Throws NotCovered for times that don't fit into the form again.
std::time_t parseTime(const std::string &text);

/// The same form, 19 bytes.
std::string timeText(std::time_t time);

} // namespace dcraw
