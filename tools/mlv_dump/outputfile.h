// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <filesystem>
#include <span>
#include <stdexcept>

namespace mlvdump {

/// A file cannot be written. The text names no path.
class WriteError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// A file that is complete under its name or not there: it is written beside its place and moved
/// there by commit(). Without commit() nothing stays behind.
class OutputFile
{
public:
    /// Throws WriteError when the file cannot be created.
    explicit OutputFile(std::filesystem::path path);
    OutputFile(OutputFile &&other) noexcept;
    OutputFile &operator=(OutputFile &&other) = delete;
    ~OutputFile();

    /// Writes behind what was written before. Throws WriteError.
    void write(std::span<const std::byte> bytes);
    /// Closes the file and gives it its name. Throws WriteError.
    void commit();

    [[nodiscard]] const std::filesystem::path &path() const { return m_path; }

private:
    std::filesystem::path m_path;
    std::filesystem::path m_partPath;
    int m_descriptor = -1;
    bool m_isPending = true; // the part file is there
};

} // namespace mlvdump
