// SPDX-License-Identifier: MIT
#include "dcraw/realdcraw.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <iostream>
#include <string_view>
#include <system_error>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace dcraw {
namespace {

constexpr int failed = 1;
constexpr const char *forcingVariable = "FILMWRIGHT_DCRAW";
// Set for the program that the work is handed to.
constexpr const char *handedOverVariable = "FILMWRIGHT_DCRAW_HANDED_OVER";

const char *environmentVariable(const char *name)
{
    return std::getenv(name); // NOLINT(concurrency-mt-unsafe): there is no second thread yet.
}

bool isThisProgram(const std::string &path)
{
    struct stat one = {};
    struct stat own = {};
    return ::stat(path.c_str(), &one) == 0 && ::stat("/proc/self/exe", &own) == 0 &&
           one.st_dev == own.st_dev && one.st_ino == own.st_ino;
}

bool isProgram(const std::string &path)
{
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           ::access(path.c_str(), X_OK) == 0;
}

/// Every dcraw in PATH, in its order; an empty folder is the working folder.
std::vector<std::string> programsInPath()
{
    const char *variable = environmentVariable("PATH");
    std::vector<std::string> programs;
    for (std::string_view rest = variable == nullptr ? "" : variable; !rest.empty();) {
        const std::size_t end = std::min(rest.find(':'), rest.size());
        const std::string_view folder = end == 0 ? "." : rest.substr(0, end);
        auto program = std::string(folder) + "/dcraw";
        if (isProgram(program))
            programs.push_back(std::move(program));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return programs;
}

int say(const std::string &text)
{
    std::cerr << "dcraw: " << text << '\n';
    return failed;
}

} // namespace

std::optional<std::string> forcedDcraw()
{
    const char *path = environmentVariable(forcingVariable);
    return path == nullptr || *path == '\0' ? std::nullopt : std::optional<std::string>(path);
}

std::optional<std::string> findRealDcraw()
{
    const auto programs = programsInPath();
    auto from = programs.begin();
    if (environmentVariable(handedOverVariable) != nullptr) {
        // Another copy of this program took this one for the real one. Those before it have been
        // asked already: going on behind it, the search ends.
        const auto own = std::find_if(programs.begin(), programs.end(), isThisProgram);
        from = own == programs.end() ? programs.begin() : own + 1;
    }
    const auto found = std::find_if_not(from, programs.end(), isThisProgram);
    return found == programs.end() ? std::nullopt : std::optional(*found);
}

int handOver(char *const argv[], const std::string &error)
{
    const auto forced = forcedDcraw();
    if (forced && isThisProgram(*forced))
        return say(std::string(forcingVariable) + " names this very program");
    const auto real = forced ? forced : findRealDcraw();
    if (!real) {
        return say(error + "; Filmwright's own dcraw develops the DNGs of its mlv_dump and cr2hdr "
                           "and found no other dcraw in PATH for the rest");
    }
    ::setenv(handedOverVariable, "1", 1); // NOLINT(concurrency-mt-unsafe): as above.
    ::execv(real->c_str(), argv);
    return say(*real + " can't be run: " + std::system_category().message(errno));
}

} // namespace dcraw
