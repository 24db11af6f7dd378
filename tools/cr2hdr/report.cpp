// SPDX-License-Identifier: MIT
#include "cr2hdr/report.h"

#include "output/lineoutput.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <utility>

#include <unistd.h>

namespace dualiso {
namespace {

constexpr std::size_t largestLabel = 1024;

/// A line "label : value" in a write of its own.
void print(std::string_view label, std::string_view value)
{
    output::LineOutput standardOutput(STDOUT_FILENO);
    standardOutput.line(std::string(label) + " : " + std::string(value));
}

std::string rounded(double value, const char *unit)
{
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.2f%s", value, unit);
    return text.data();
}

std::string noiseText(const Noise &noise)
{
    return rounded(std::sqrt(static_cast<double>(noise.readVariance)), " levels of 14 bits");
}

} // namespace

void printFindings(const Survey &survey)
{
    const dng::RawFormat &format = survey.format;
    print("Frame size", std::to_string(format.width) + "x" + std::to_string(format.height) + ", " +
                            std::to_string(format.bitsPerSample) + " bits");
    print("Levels", "black " + std::to_string(format.blackLevel) + ", white " +
                        std::to_string(format.whiteLevel));
    if (!survey.model) {
        print("Row pattern", textOf(survey.obstacle));
        return;
    }
    const Model &model = *survey.model;
    const auto gain = static_cast<double>(model.exposure.gain);
    print("Row pattern", model.pattern.letters() + " (L low, H high sensitivity)");
    print("Exposure difference", rounded(std::log2(gain), " EV"));
    print("Black level difference",
          rounded(static_cast<double>(model.exposure.offset), " levels of 14 bits"));
    print("Noise of low rows", noiseText(model.lowNoise));
    print("Noise of high rows", noiseText(model.highNoise));
    print("High rows usable to",
          rounded(static_cast<double>(model.clippedFrom), " levels of 14 bits above black"));
}

std::string labelOf(const std::filesystem::path &path)
{
    std::string label = path.string();
    if (label.size() > largestLabel)
        label = "..." + label.substr(label.size() - largestLabel);
    std::replace_if(
        label.begin(), label.end(),
        [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; }, '?');
    return label;
}

void FrameLog::tell(std::size_t index, std::string label, std::string value)
{
    const std::lock_guard lock(m_mutex);
    m_waiting.insert_or_assign(index, Line{std::move(label), std::move(value)});
    for (auto line = m_waiting.find(m_next); line != m_waiting.end();
         line = m_waiting.find(m_next)) {
        print(line->second.label, line->second.value);
        m_waiting.erase(line);
        ++m_next;
    }
}

} // namespace dualiso
