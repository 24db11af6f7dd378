// SPDX-License-Identifier: MIT
#include "mlv_dump/calibration.h"

#include "mlv_dump/text.h"
#include "raw/error.h"

#include <algorithm>

namespace mlvdump {
namespace {

std::string shape(const mlv::FrameFormat &format)
{
    return mlvdump::format("%dx%d at %d bits", format.width, format.height, format.bitsPerSample);
}

/// `name` is what the reference is called in front of a person.
std::vector<std::uint16_t> firstFrame(const std::filesystem::path &path, const std::string &name,
                                      const mlv::FrameFormat &footage)
{
    const mlv::Recording recording(path);
    mlv::FrameDecoder decoder(recording);
    if (!decoder.format().hasShapeOf(footage)) {
        throw ShapeMismatch(name + " is " + shape(decoder.format()) + ", but the recording is " +
                            shape(footage));
    }
    if (recording.videoFrames().empty())
        throw raw::Error("holds no whole frame");
    const auto samples = decoder.decode(recording.videoFrames().front());
    return {samples.begin(), samples.end()};
}

} // namespace

Calibration::Calibration(const std::filesystem::path &dark, const std::filesystem::path &flat,
                         const mlv::FrameFormat &format)
    : m_format(format)
{
    if (!dark.empty()) {
        const std::string name = "The dark frame";
        try {
            m_dark = firstFrame(dark, name, format);
        } catch (const raw::Error &error) {
            throw CalibrationError(name + ' ' + error.what());
        }
    }
    if (!flat.empty()) {
        const std::string name = "The flat field";
        try {
            m_flat.emplace(firstFrame(flat, name, format), format);
        } catch (const raw::Error &error) {
            throw CalibrationError(name + ' ' + error.what());
        }
    }
}

void Calibration::apply(std::span<std::uint16_t> samples) const
{
    if (!m_dark.empty())
        subtractDark(samples);
    if (m_flat)
        m_flat->apply(samples);
}

void Calibration::subtractDark(std::span<std::uint16_t> samples) const
{
    const int black = m_format.blackLevel;
    const int maxLevel = m_format.maxLevel();
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] =
            static_cast<std::uint16_t>(std::clamp(samples[i] - m_dark[i] + black, 0, maxLevel));
    }
}

} // namespace mlvdump
