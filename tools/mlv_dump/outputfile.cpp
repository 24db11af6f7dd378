// SPDX-License-Identifier: MIT
#include "mlv_dump/outputfile.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace mlvdump {
namespace {

[[noreturn]] void fail(int errorNumber)
{
    throw WriteError("A file cannot be written: " + std::generic_category().message(errorNumber));
}

} // namespace

OutputFile::OutputFile(std::filesystem::path path)
    : m_path(std::move(path))
    , m_partPath(m_path)
{
    m_partPath += ".part";
    // What a killed run left is removed, not followed: it could be a link.
    ::unlink(m_partPath.c_str());
    m_descriptor = ::open(m_partPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (m_descriptor < 0) {
        fail(errno);
    }
}

OutputFile::OutputFile(OutputFile &&other) noexcept
    : m_path(std::move(other.m_path))
    , m_partPath(std::move(other.m_partPath))
    , m_descriptor(std::exchange(other.m_descriptor, -1))
    , m_isPending(std::exchange(other.m_isPending, false))
{
}

OutputFile::~OutputFile()
{
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
    }
    if (m_isPending) {
        ::unlink(m_partPath.c_str());
    }
}

void OutputFile::write(std::span<const std::byte> bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = ::write(m_descriptor, bytes.data(), bytes.size());
        if (count >= 0) {
            bytes = bytes.subspan(static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            fail(errno);
        }
    }
}

void OutputFile::commit()
{
    if (::close(std::exchange(m_descriptor, -1)) != 0) {
        fail(errno);
    }
    if (::rename(m_partPath.c_str(), m_path.c_str()) != 0) {
        fail(errno);
    }
    m_isPending = false;
}

} // namespace mlvdump
