// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

namespace raw {

/// A regular file that is open for reading. Reads carry their own position, so that any number of
/// threads may read at once.
class File
{
public:
    /// Throws ReadError when the path is no regular file that can be read.
    explicit File(const std::filesystem::path &path);
    File(File &&other) noexcept;
    File &operator=(File &&other) = delete;
    ~File();

    /// The size at the time of opening, bytes.
    std::uint64_t size() const { return m_size; }
    /// When it was written last, at the time of opening: nanoseconds since 1970.
    std::int64_t modified() const { return m_modified; }

    /// Fills `bytes` from `offset` on. Throws ReadError when the file ends before or can't be
    /// read.
    void read(std::uint64_t offset, std::span<std::byte> bytes) const;

    /// Whether `path` leads to this very file.
    bool isSameAs(const std::filesystem::path &path) const;

private:
    int m_descriptor = -1;
    std::uint64_t m_size = 0;
    std::int64_t m_modified = 0;
};

/// What a text file holds. Throws Error when it has more than `largest` bytes, ReadError.
std::string readText(const std::filesystem::path &path, std::uint64_t largest);

} // namespace raw
