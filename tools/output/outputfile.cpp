// SPDX-License-Identifier: MIT
#include "output/outputfile.h"

#include "output/writeall.h"

#include <cerrno>
#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace output {
namespace {

constexpr mode_t permissionBits = 07777;

[[noreturn]] void fail(const char *what)
{
    throw WriteError(errno, std::generic_category(), what);
}

int checked(int descriptor)
{
    if (descriptor < 0)
        fail("can't be written beside");
    return descriptor;
}

int createNew(const std::string &path)
{
    // What a killed run left is removed, not followed: it could be a link.
    ::unlink(path.c_str());
    return checked(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
}

} // namespace

OutputFile::OutputFile(const std::filesystem::path &path, std::string partPath, int descriptor)
    : m_path(path.string())
    , m_partPath(std::move(partPath))
    , m_descriptor(descriptor)
{
}

OutputFile::OutputFile(const std::filesystem::path &path)
    : OutputFile(path, path.string() + ".part", createNew(path.string() + ".part"))
{
}

OutputFile OutputFile::replacing(const std::filesystem::path &path)
{
    const std::filesystem::path target = std::filesystem::canonical(path);
    // A name that no other run takes: two may replace one file at the same time, and neither may
    // move there what the other is still writing.
    std::string partPath = target.string() + ".XXXXXX";
    const int descriptor = checked(::mkostemp(partPath.data(), O_CLOEXEC));
    OutputFile file(target, std::move(partPath), descriptor);
    file.takePermissionsOfOld();
    return file;
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
    if (m_descriptor >= 0)
        ::close(m_descriptor);
    if (m_isPending)
        ::unlink(m_partPath.c_str());
}

void OutputFile::takePermissionsOfOld()
{
    struct stat status = {};
    if (::stat(m_path.c_str(), &status) != 0 ||
        ::fchmod(m_descriptor, status.st_mode & permissionBits) != 0)
        fail("can't keep its permissions");
}

void OutputFile::write(std::span<const std::byte> bytes)
{
    if (!writeAll(m_descriptor, bytes))
        fail("can't be written");
}

void OutputFile::commit()
{
    if (::close(std::exchange(m_descriptor, -1)) != 0)
        fail("can't be written");
    if (::rename(m_partPath.c_str(), m_path.c_str()) != 0)
        fail("can't be replaced");
    m_isPending = false;
}

void OutputFile::commitToDisk()
{
    // EINVAL: a file system without a disk behind it.
    if (::fsync(m_descriptor) != 0 && errno != EINVAL)
        fail("can't be written");
    commit();
}

} // namespace output
