// SPDX-License-Identifier: MIT
#include "output/writeall.h"

#include <cerrno>

#include <unistd.h>

namespace output {

bool writeAll(int descriptor, std::span<const std::byte> bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count >= 0)
            bytes = bytes.subspan(static_cast<std::size_t>(count));
        else if (errno != EINTR)
            return false;
    }
    return true;
}

} // namespace output
