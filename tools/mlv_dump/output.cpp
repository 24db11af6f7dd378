// SPDX-License-Identifier: MIT
#include "mlv_dump/output.h"

#include "mlv_dump/text.h"

namespace mlvdump {

void Output::warning(std::string_view text)
{
    line("[WARNING] " + std::string(text));
}

void Output::note(std::string_view text)
{
    line("[NOTE] " + std::string(text));
}

void Output::loss(std::string_view text)
{
    line("[LOST] " + std::string(text));
}

void Output::error(std::string_view text)
{
    line("[ERROR] " + std::string(text));
}

void Output::unusable(std::string_view text)
{
    line("[UNUSABLE] " + std::string(text));
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
