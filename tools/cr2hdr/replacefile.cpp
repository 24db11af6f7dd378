// SPDX-License-Identifier: MIT
#include "cr2hdr/replacefile.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace dualiso {
namespace {

constexpr mode_t permissionBits = 07777;

[[noreturn]] void fail(const char *what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

/// A file with a name of its own that is removed unless it gets its final name.
class TemporaryFile
{
public:
    // The name doesn't end as frames do, so that nobody takes what a kill leaves for one.
    explicit TemporaryFile(const std::filesystem::path &beside)
        : m_name(beside.string() + ".XXXXXX")
        , m_descriptor(::mkostemp(m_name.data(), O_CLOEXEC))
    {
        if (m_descriptor < 0) {
            fail("cannot be written beside");
        }
    }
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;
    ~TemporaryFile()
    {
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
        if (!m_name.empty()) {
            ::unlink(m_name.c_str());
        }
    }

    void write(std::span<const std::byte> bytes)
    {
        while (!bytes.empty()) {
            const ssize_t count = ::write(m_descriptor, bytes.data(), bytes.size());
            if (count >= 0) {
                bytes = bytes.subspan(static_cast<std::size_t>(count));
            } else if (errno != EINTR) {
                fail("cannot be written");
            }
        }
    }

    void takePermissionsOf(const std::filesystem::path &path)
    {
        struct stat status = {};
        if (::stat(path.c_str(), &status) != 0 ||
            ::fchmod(m_descriptor, status.st_mode & permissionBits) != 0) {
            fail("cannot keep its permissions");
        }
    }

    void moveTo(const std::filesystem::path &path)
    {
        if (::close(std::exchange(m_descriptor, -1)) != 0) {
            fail("cannot be written");
        }
        if (::rename(m_name.c_str(), path.c_str()) != 0) {
            fail("cannot be replaced");
        }
        m_name.clear();
    }

private:
    std::string m_name;
    int m_descriptor;
};

} // namespace

void replaceFile(const std::filesystem::path &path,
                 std::initializer_list<std::span<const std::byte>> parts)
{
    const std::filesystem::path target = std::filesystem::canonical(path);
    TemporaryFile file(target);
    file.takePermissionsOf(target);
    for (const auto &part : parts) {
        file.write(part);
    }
    file.moveTo(target);
}

} // namespace dualiso
