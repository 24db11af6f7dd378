// SPDX-License-Identifier: MIT
// cr2hdr: blends dual-ISO frames in place.
#include "cr2hdr/recording.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <span>
#include <string_view>
#include <vector>

namespace {

constexpr int failed = 1;
constexpr int wrongUsage = 2;

constexpr std::string_view helpText =
    R"(Usage: cr2hdr FILE.dng ...
Blends dual-ISO frames: raw pictures whose rows alternate in pairs between two sensitivities become
ordinary ones with the lower sensitivity's exposure and cleaner shadows. The files are replaced.
Files that are named together are taken as frames of one recording. A frame that is not dual ISO is
left as it is.

  --help, --version
)";

int refuse(std::string_view reason)
{
    std::cerr << "cr2hdr : " << reason << "; cr2hdr --help tells more\n";
    return wrongUsage;
}

} // namespace

int main(int argc, char *argv[])
{
    std::vector<std::filesystem::path> paths;
    bool optionsEnded = false;
    for (const std::string_view argument :
         std::span(argv, static_cast<std::size_t>(argc)).subspan(1)) {
        if (optionsEnded || !argument.starts_with('-')) {
            paths.emplace_back(argument);
        } else if (argument == "--") {
            optionsEnded = true;
        } else if (argument == "--help") {
            std::cout << helpText;
            return EXIT_SUCCESS;
        } else if (argument == "--version") {
            std::cout << "cr2hdr " FILMWRIGHT_VERSION "\n";
            return EXIT_SUCCESS;
        } else {
            return refuse("unknown option");
        }
    }
    if (paths.empty()) {
        return refuse("no file is given");
    }
    // A recording isn't left half blended because nobody reads on.
    std::signal(SIGPIPE, SIG_IGN);
    return dualiso::blendRecording(paths) ? EXIT_SUCCESS : failed;
}
