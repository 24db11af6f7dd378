// SPDX-License-Identifier: MIT
// Does what our dcraw does with the options of the application, but on a given number of threads
// and with a given instruction set: developframe INSTRUCTIONS THREADS FRAME.dng. What that is
// called is in instructionset.h.
#include "dcraw/frame.h"
#include "dcraw/instructionset.h"
#include "dcraw/tifffile.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string_view>

int main(int argc, char **argv)
{
    if (argc != 4) {
        std::fputs("Usage: developframe INSTRUCTIONS THREADS FRAME.dng\n", stderr);
        return EXIT_FAILURE;
    }
    const auto &names = dcraw::instructionSetNames;
    const auto name = std::find(names.begin(), names.end(), std::string_view(argv[1]));
    const auto set = static_cast<dcraw::InstructionSet>(name - names.begin());
    if (name == names.end() || set > dcraw::bestInstructionSet()) {
        std::fprintf(stderr, "This machine doesn't know %s\n", argv[1]);
        return EXIT_FAILURE;
    }
    dcraw::useInstructionSet(set);
    const auto threads = static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10));
    try {
        const std::array<const char *, 10> arguments{"-H", "3",  "-q", "3", "-w",
                                                     "-W", "-T", "-b", "4", argv[3]};
        const auto options = dcraw::parseOptions(arguments);
        const dcraw::Frame frame = dcraw::readFrame(options);
        dcraw::TiffFile file(dcraw::outputPath(options.file), frame.head.size(),
                             frame.development.outputRowBytes(), frame.development.outputHeight());
        file.writeHead(frame.head);
        dcraw::develop(frame.development, *frame.samples, file, threads);
        file.finish();
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
