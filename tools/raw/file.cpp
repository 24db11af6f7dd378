// SPDX-License-Identifier: MIT
#include "raw/file.h"

#include "raw/error.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace raw {
namespace {

std::string errorText(int errorNumber)
{
    return std::generic_category().message(errorNumber);
}

} // namespace

File::File(const std::filesystem::path &path)
    // Without O_NONBLOCK the opening of a named pipe would wait for a writer.
    : m_descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK))
{
    if (m_descriptor < 0)
        throw ReadError("can't be opened: " + errorText(errno));
    struct stat status = {};
    if (::fstat(m_descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(m_descriptor);
        throw ReadError("is not a regular file");
    }
    constexpr std::int64_t nanoseconds = 1'000'000'000;
    m_size = static_cast<std::uint64_t>(status.st_size);
    m_modified = status.st_mtim.tv_sec * nanoseconds + status.st_mtim.tv_nsec;
}

File::File(File &&other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1))
    , m_size(other.m_size)
    , m_modified(other.m_modified)
{
}

File::~File()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

void File::read(std::uint64_t offset, std::span<std::byte> bytes) const
{
    while (!bytes.empty()) {
        const ssize_t count =
            ::pread(m_descriptor, bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            throw ReadError("can't be read: " + errorText(errno));
        if (count == 0)
            throw ReadError("became shorter while it was read");
        bytes = bytes.subspan(static_cast<std::size_t>(count));
        offset += static_cast<std::uint64_t>(count);
    }
}

bool File::isSameAs(const std::filesystem::path &path) const
{
    struct stat own = {};
    struct stat other = {};
    return ::fstat(m_descriptor, &own) == 0 && ::stat(path.c_str(), &other) == 0 &&
           own.st_dev == other.st_dev && own.st_ino == other.st_ino;
}

std::string readText(const std::filesystem::path &path, std::uint64_t largest)
{
    const File file(path);
    if (file.size() > largest)
        throw Error("is too large to be one");
    std::string text(file.size(), '\0');
    file.read(0, std::as_writable_bytes(std::span(text)));
    return text;
}

} // namespace raw
