// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace mlv {

/// The entropy-coded data of a JPEG scan.
struct ScanData
{
    std::vector<std::byte> bytes; ///< without the zeros that are stuffed in behind 0xff
    std::size_t storedSize = 0;   ///< of the same data in the stream, stuffing included
};

/// Takes the data that `stream` begins with, up to a marker or the end.
[[nodiscard]] ScanData takeScanData(std::span<const std::byte> stream);

} // namespace mlv
