// SPDX-License-Identifier: MIT
// mlv_sample: writes a synthetic recording for the demo, the tests and the benchmarks.
#include "mlv_sample/options.h"
#include "mlv_sample/recording.h"

#include <exception>
#include <iostream>

namespace {

constexpr int failed = 1;
constexpr int wrongUsage = 2;

int run(std::span<const char *const> arguments)
{
    const sample::Options options = sample::parseOptions(arguments);
    if (options.help)
        std::cout << sample::helpText;
    else if (options.version)
        std::cout << "mlv_sample " FILMWRIGHT_VERSION "\n";
    else
        sample::writeRecording(options.settings);
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    try {
        return run(std::span(argv, static_cast<std::size_t>(argc)).subspan(1));
    } catch (const sample::UsageError &error) {
        std::cerr << "mlv_sample: " << error.what() << "\nTry mlv_sample --help.\n";
        return wrongUsage;
    } catch (const std::exception &error) {
        std::cerr << "mlv_sample: " << error.what() << '\n';
        return failed;
    }
}
