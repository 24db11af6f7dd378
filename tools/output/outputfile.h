// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <filesystem>
#include <span>
#include <string>
#include <system_error>

namespace output {

/// A file can't be written: what could not be done and the system's reason. The text names no
/// path.
class WriteError : public std::system_error
{
public:
    using std::system_error::system_error;
};

/// A file that is complete under its name or not there: it is written beside its place and moved
/// there by commit(). Without commit() nothing stays behind.
class OutputFile
{
public:
    /// A new file, or one in the place of another, which loses nothing before commit(). Throws
    /// WriteError when it can't be created.
    explicit OutputFile(const std::filesystem::path &path);

    /// A file in the place of the one that is there, with its permissions; where `path` is a
    /// symbolic link, in the place of what it leads to. Throws std::system_error.
    static OutputFile replacing(const std::filesystem::path &path);

    OutputFile(OutputFile &&other) noexcept;
    OutputFile &operator=(OutputFile &&other) = delete;
    ~OutputFile();

    /// Writes behind what was written before. Throws WriteError.
    void write(std::span<const std::byte> bytes);
    /// Closes the file and gives it its name. Throws WriteError.
    void commit();
    /// commit() once the file is on the disk, so that after a power cut its name stands for no
    /// empty file; takes as long as the disk does. Throws WriteError.
    void commitToDisk();

private:
    OutputFile(const std::filesystem::path &path, std::string partPath, int descriptor);

    void takePermissionsOfOld();

    std::string m_path;
    std::string m_partPath;
    int m_descriptor;
    bool m_isPending = true; // the part file is there
};

} // namespace output
