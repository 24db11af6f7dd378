// SPDX-License-Identifier: MIT
#include "mlv_dump/options.h"
#include "mlv_dump/run.h"

#include <cstdio>
#include <vector>

#include <unistd.h>

using namespace mlvdump;

namespace {

constexpr int wrongUsage = 2;

int runWith(const std::vector<std::string_view> &arguments)
{
    Output output(STDOUT_FILENO);
    try {
        const auto options = parseOptions(arguments);
        if (options.mode == Mode::Help) {
            std::fputs(usage().data(), stdout);
            return 0;
        }
        if (options.mode == Mode::Version) {
            std::puts("mlv_dump (Filmwright) " FILMWRIGHT_VERSION);
            return 0;
        }
        return run(options, output);
    } catch (const UsageError &error) {
        output.error(std::string(error.what()) + "; see mlv_dump --help");
        if (!error.asksForFrames())
            output.finish({});
        return wrongUsage;
    }
}

} // namespace

int main(int argc, char **argv)
{
    return runWith({argv + (argc > 0 ? 1 : 0), argv + argc});
}
