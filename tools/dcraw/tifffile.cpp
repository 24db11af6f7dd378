// SPDX-License-Identifier: MIT
#include "dcraw/tifffile.h"

#include "dcraw/notcovered.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace dcraw {
namespace {

[[noreturn]] void fail(int error)
{
    throw std::system_error(error, std::generic_category());
}

int openEmpty(const std::string &path)
{
    struct stat status = {};
    // Asked before, because opening a pipe would wait for its reader.
    require(::stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode),
            "is to be written to something that is no file");
    const int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (descriptor < 0)
        fail(errno);
    return descriptor;
}

} // namespace

TiffFile::TiffFile(const std::string &path, std::size_t headBytes, std::size_t rowBytes, int rows)
    : m_path(path)
    , m_headBytes(headBytes)
    , m_rowBytes(rowBytes)
    , m_fileBytes(headBytes + rowBytes * static_cast<std::size_t>(rows))
    , m_descriptor(openEmpty(path))
{
}

TiffFile::~TiffFile()
{
    if (m_isFinished)
        return;
    if (m_descriptor >= 0) {
        // Where the path is a link, the file that it leads to stays, without content.
        static_cast<void>(::ftruncate(m_descriptor, 0));
        ::close(m_descriptor);
    }
    ::unlink(m_path.c_str());
}

void TiffFile::writeHead(std::span<const std::byte> head)
{
    writeAt(0, head);
}

bool TiffFile::write(int row, std::span<const std::byte> pixels)
{
    const std::size_t offset = m_headBytes + static_cast<std::size_t>(row) * m_rowBytes;
    if (offset + pixels.size() == m_fileBytes) {
        m_lastByte = pixels.back();
        pixels = pixels.first(pixels.size() - 1);
    }
    return writeAt(offset, pixels);
}

void TiffFile::finish()
{
    writeAt(m_fileBytes - 1, {&m_lastByte, 1});
    // A disk on the network may say only now that it is full.
    if (::close(std::exchange(m_descriptor, -1)) != 0)
        m_error = errno;
    if (m_error != 0)
        fail(m_error);
    m_isFinished = true;
}

bool TiffFile::writeAt(std::size_t offset, std::span<const std::byte> bytes)
{
    while (!bytes.empty() && m_error == 0) {
        const ssize_t count =
            ::pwrite(m_descriptor, bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (count < 0 && errno != EINTR) {
            m_error = errno;
        } else if (count > 0) {
            bytes = bytes.subspan(static_cast<std::size_t>(count));
            offset += static_cast<std::size_t>(count);
        }
    }
    return m_error == 0;
}

} // namespace dcraw
