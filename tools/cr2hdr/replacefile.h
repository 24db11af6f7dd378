// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <filesystem>
#include <initializer_list>
#include <span>

namespace dualiso {

/// Writes a new file beside `path` and moves it there, so that the file under that name is always a
/// whole one, the old or the new. The new one has the old one's permissions; if `path` is a
/// symbolic link, the file that it leads to is replaced. Throws std::system_error with the old file
/// unharmed and nothing left beside it.
void replaceFile(const std::filesystem::path &path,
                 std::initializer_list<std::span<const std::byte>> parts);

} // namespace dualiso
