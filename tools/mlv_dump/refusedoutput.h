// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>

namespace mlvdump {

/// A file is not even begun: it would do harm or could not be whole. The text says why and names no
/// path.
class RefusedOutput : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

} // namespace mlvdump
