// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/recording.h"
#include "mlv_dump/colour.h"

#include <optional>
#include <string>

namespace mlvdump {

/// The colour matrix of a camera whose recorder writes a wrong one.
struct KnownMatrix
{
    std::string camera; ///< for a person
    ColourMatrix matrix;

    /// That it is taken, a sentence.
    std::string remark() const;
};

/// None unless both the camera's code and all nine recorded numbers are those of a known slip.
std::optional<KnownMatrix> knownMatrix(const mlv::Recording &recording);

} // namespace mlvdump
