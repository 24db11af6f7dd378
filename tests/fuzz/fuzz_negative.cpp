// SPDX-License-Identifier: MIT
// What our dcraw reads of a DNG, on arbitrary bytes: the whole way to the samples, and one row of
// them.
#include "dcraw/frame.h"

#include <exception>
#include <string>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const int file = ::memfd_create("frame", 0);
    if (::ftruncate(file, 0) != 0 || ::pwrite(file, data, size, 0) != static_cast<ssize_t>(size))
        return 0;
    dcraw::Options options;
    options.file = "/proc/self/fd/" + std::to_string(file);
    options.cameraWhiteBalance = true;
    options.highlights = 3;
    try {
        const dcraw::Frame frame = dcraw::readFrame(options);
        std::vector<std::uint16_t> row(static_cast<std::size_t>(frame.development.width));
        frame.samples->read(0, row);
        frame.samples->read(frame.development.height - 1, row);
    } catch (const std::exception &) {
        return 0;
    }
    return 0;
}
