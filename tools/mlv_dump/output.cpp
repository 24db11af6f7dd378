// SPDX-License-Identifier: MIT
#include "mlv_dump/output.h"

#include "mlv_dump/text.h"

#include <cerrno>

#include <unistd.h>

namespace mlvdump {
namespace {

constexpr std::size_t maxWrite = 4096;

} // namespace

Output::Output(int descriptor)
    : m_descriptor(descriptor)
{
}

Output::~Output()
{
    flush();
}

void Output::line(std::string_view text)
{
    const auto fitting = cutToSize(text, maxWrite - 1);
    if (m_pending.size() + fitting.size() + 1 > maxWrite) {
        flush();
    }
    m_pending += fitting;
    m_pending += '\n';
}

void Output::warning(std::string_view text)
{
    line("[WARNING] " + std::string(text));
}

void Output::error(std::string_view text)
{
    line("[ERROR] " + std::string(text));
}

void Output::flush()
{
    std::string_view rest = m_pending;
    while (!rest.empty()) {
        const ssize_t count = ::write(m_descriptor, rest.data(), rest.size());
        if (count >= 0) {
            rest.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            break; // nobody is left to be told
        }
    }
    m_pending.clear();
}

void Output::finish(const Summary &summary)
{
    const double rate = summary.framesPerSecond;
    const double seconds = rate > 0 ? static_cast<double>(summary.frames) / rate : 0;
    flush();
    line(format("Processed %lu video frames at %.2f FPS (%.2f s)", summary.frames, rate, seconds));
    line("Done");
    flush();
}

} // namespace mlvdump
