// SPDX-License-Identifier: MIT
#include "cr2hdr/framefile.h"

#include "dng/filehead.h"
#include "dng/tags.h"
#include "output/outputfile.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace dualiso {
namespace {

namespace tag = dng::tag;

constexpr int scaleBits = 14;  // of Frame's values
constexpr int outputBits = 16; // so that what blending gains over the file's steps is kept
// In the software tag it marks a frame as blended.
constexpr const char *programName = "Filmwright cr2hdr";

std::vector<std::uint16_t> outputSamples(const Frame &frame, const dng::RawFormat &format)
{
    const float black =
        std::ldexp(static_cast<float>(format.blackLevel), outputBits - format.bitsPerSample);
    const float scale = std::ldexp(1.0F, outputBits - scaleBits);
    std::vector<std::uint16_t> samples(frame.values.size());
    std::transform(frame.values.begin(), frame.values.end(), samples.begin(), [&](float value) {
        return static_cast<std::uint16_t>(std::clamp(black + value * scale + 0.5F, 0.0F, 65535.0F));
    });
    return samples;
}

/// Empty without the tag.
std::string textOf(const dng::RawFile &file, std::uint16_t tag)
{
    const auto &fields = file.directories().image.fields();
    const auto found = fields.find(tag);
    if (found == fields.end())
        return {};
    const std::vector<std::byte> &data = found->second.data;
    const std::string text(reinterpret_cast<const char *>(data.data()), data.size());
    return text.substr(0, text.find('\0'));
}

} // namespace

Frame readFrame(const dng::RawFile &file)
{
    const dng::RawFormat &format = file.format();
    const float scale = std::ldexp(1.0F, scaleBits - format.bitsPerSample);
    Frame frame(format.width, format.height);
    frame.colours = format.colours;
    frame.step = scale;
    frame.saturation = static_cast<float>(format.whiteLevel - format.blackLevel) * scale;
    const auto samples = file.samples();
    const auto black = static_cast<float>(format.blackLevel);
    std::transform(samples.begin(), samples.end(), frame.values.begin(), [&](std::uint16_t sample) {
        return (static_cast<float>(sample) - black) * scale;
    });
    return frame;
}

std::uint64_t originOf(const dng::RawFile &file)
{
    std::string names;
    for (const auto tag : {tag::reelName, tag::uniqueCameraModel, tag::cameraSerialNumber})
        names += textOf(file, tag) + '\n';
    return std::hash<std::string>()(names);
}

bool isBlended(const dng::RawFile &file)
{
    return textOf(file, tag::software).find(programName) != std::string::npos;
}

void replaceFrame(const std::filesystem::path &path, const dng::RawFile &source, const Frame &frame)
{
    const dng::RawFormat &format = source.format();
    const int shift = outputBits - format.bitsPerSample;
    dng::Ifd image = source.directories().image;
    image.setShorts(tag::bitsPerSample, {outputBits});
    image.setShorts(tag::compression, {dng::compression::none});
    image.setLongs(tag::rowsPerStrip, {static_cast<std::uint32_t>(format.height)});
    image.setLongs(tag::blackLevel, {format.blackLevel << shift});
    image.setLongs(tag::whiteLevel, {format.whiteLevel << shift});
    const std::string before = textOf(source, tag::software);
    image.setText(tag::software,
                  before + (before.empty() ? "" : ", ") + programName + " " + FILMWRIGHT_VERSION);

    const auto samples = outputSamples(frame, format);
    const auto strip = std::as_bytes(std::span(samples));
    const auto head = dng::encodeFileHead(image, source.directories().exif,
                                          static_cast<std::uint32_t>(strip.size()));
    auto file = output::OutputFile::replacing(path);
    file.write(head);
    file.write(strip);
    file.commitToDisk(); // the samples before blending are nowhere else
}

} // namespace dualiso
