// SPDX-License-Identifier: MIT
// A whole recording of arbitrary bytes: index, report, plans, tags, every kind of frame.
#include "mlv_dump/frameencoder.h"
#include "mlv_dump/report.h"
#include "mlv_dump/soundplan.h"
#include "raw/error.h"

#include <cstdlib>
#include <string>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

/// A file in memory that keeps its path from input to input.
class MemoryFile
{
public:
    void fill(const std::uint8_t *data, std::size_t size) const
    {
        if (::ftruncate(m_descriptor, 0) != 0 ||
            ::pwrite(m_descriptor, data, size, 0) != static_cast<ssize_t>(size))
            std::abort();
    }
    std::string path() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }

private:
    int m_descriptor = ::memfd_create("recording", MFD_CLOEXEC);
};

void readFrames(const mlv::Recording &recording)
{
    const mlv::FrameDecoder decoder(recording);
    const mlvdump::Calibration none({}, {}, decoder.format());
    const mlvdump::FrameTags tags(recording, decoder.format(),
                                  mlvdump::colourMatrix(*recording.rawInfo()), "fuzz");
    mlvdump::FrameEncoder encoder(recording, none, tags);
    const auto plan = mlvdump::planFrames(recording.videoFrames(), {});
    constexpr std::size_t enough = 8;
    for (std::size_t i = 0; i < plan.frames.size() && i < enough; ++i) {
        try {
            encoder.encode(plan.frames[i]);
        } catch (const raw::Error &) {
            continue;
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const MemoryFile file;
    static const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    file.fill(data, size);
    try {
        const mlv::Recording recording(file.path());
        mlvdump::Output output(nowhere);
        mlvdump::printReport(recording, output);
        mlvdump::planSound(recording.audioBlocks(), -1000, 1 << 20);
        readFrames(recording);
    } catch (const raw::Error &) {
        return 0;
    }
    return 0;
}
