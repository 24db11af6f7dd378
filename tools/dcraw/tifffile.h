// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/development.h"

#include <atomic>
#include <string>

namespace dcraw {

/// The TIFF while it is written. The file is made, or an old one emptied, and filled in place, so
/// that links to it, its owner and its permissions stay; its last byte comes when all others are
/// there. A run that is killed therefore leaves a file that is shorter than its head says.
class TiffFile final : public PixelSink
{
public:
    /// Creates or empties the file, for `rows` rows of pixels behind the head. Throws NotCovered
    /// when something else than a file is there, std::system_error when it can't be written.
    TiffFile(const std::string &path, std::size_t headBytes, std::size_t rowBytes, int rows);
    /// Removes the file unless it is finished.
    ~TiffFile() override;

    // Both may be called by several threads at once.
    void writeHead(std::span<const std::byte> head);
    bool write(int row, std::span<const std::byte> pixels) override;

    /// Completes the file when everything has been written. Throws std::system_error when
    /// something could not be.
    void finish();

private:
    bool writeAt(std::size_t offset, std::span<const std::byte> bytes);

    std::string m_path;
    std::size_t m_headBytes;
    std::size_t m_rowBytes;
    std::size_t m_fileBytes;
    int m_descriptor;
    std::byte m_lastByte{};       // kept back
    std::atomic<int> m_error = 0; // the first error number
    bool m_isFinished = false;
};

} // namespace dcraw
