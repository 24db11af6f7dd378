// SPDX-License-Identifier: MIT
#include "mlv/scandata.h"

#include <cstring>

namespace mlv {
namespace {

constexpr std::byte markerStart{0xff};

std::size_t find(std::span<const std::byte> bytes, std::byte wanted)
{
    const void *found = bytes.empty()
                            ? nullptr
                            : std::memchr(bytes.data(), std::to_integer<int>(wanted), bytes.size());
    return found == nullptr
               ? bytes.size()
               : static_cast<std::size_t>(static_cast<const std::byte *>(found) - bytes.data());
}

} // namespace

ScanData takeScanData(std::span<const std::byte> stream)
{
    ScanData data;
    data.bytes.reserve(stream.size());
    while (true) {
        const auto rest = stream.subspan(data.storedSize);
        const std::size_t plain = find(rest, markerStart);
        data.bytes.insert(data.bytes.end(), rest.begin(),
                          rest.begin() + static_cast<std::ptrdiff_t>(plain));
        data.storedSize += plain;
        if (plain + 1 >= rest.size() || rest[plain + 1] != std::byte{0}) {
            return data;
        }
        data.bytes.push_back(markerStart);
        data.storedSize += 2;
    }
}

} // namespace mlv
