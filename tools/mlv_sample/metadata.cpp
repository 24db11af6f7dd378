// SPDX-License-Identifier: MIT
#include "mlv_sample/metadata.h"

#include "mlv_sample/camera.h"
#include "mlv_sample/random.h"
#include "mlv_sample/sensor.h"
#include "mlv_sample/sound.h"

#include "raw/samples.h"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace sample {

namespace {

template <std::size_t n>
std::array<char, n> text(std::string_view characters)
{
    std::array<char, n> field{};
    std::copy_n(characters.begin(), std::min(n, characters.size()), field.begin());
    return field;
}

std::string_view subjectName(Subject subject)
{
    switch (subject) {
    case Subject::Dark:
        return "dark frames";
    case Subject::Flat:
        return "flat field";
    case Subject::Stars:
        return "star field";
    case Subject::Texture:
        return "fine textures";
    case Subject::Specular:
        return "specular points";
    case Subject::Grain:
        return "moving grain";
    case Subject::Landscape:
        return "moving landscape";
    case Subject::Chart:
        break;
    }
    return "moving chart";
}

} // namespace

mlv::FileHeader fileHeader(const Settings &settings, int chunk)
{
    mlv::FileHeader header{};
    header.type = mlv::blocktype::fileHeader;
    header.size = sizeof header;
    header.version = text<8>("v2.0");
    header.guid = mixed(mixed(settings.seed) + static_cast<std::uint64_t>(settings.subject));
    header.chunk = static_cast<std::uint16_t>(chunk);
    header.chunkCount = static_cast<std::uint16_t>(settings.chunks);
    header.videoClass = mlv::videoclass::raw;
    if (settings.compression == Compression::Lossless)
        header.videoClass |= mlv::videoclass::losslessJpeg;
    else if (settings.compression == Compression::Lzma)
        header.videoClass |= mlv::videoclass::lzma;
    header.audioClass = settings.sound ? mlv::audioclass::wav : mlv::audioclass::none;
    header.frameRateNumerator = settings.rateNumerator;
    header.frameRateDenominator = settings.rateDenominator;
    return header;
}

mlv::RawInfo rawInfo(const Settings &settings)
{
    const Levels levels = levelsFor(settings.bits);
    mlv::RawInfo info{};
    info.width = static_cast<std::uint16_t>(settings.width);
    info.height = static_cast<std::uint16_t>(settings.height);
    info.apiVersion = 1;
    info.bufferHeight = settings.crop.y + settings.height;
    info.bufferWidth = settings.crop.x + settings.width;
    const auto width = static_cast<std::size_t>(info.bufferWidth);
    const auto height = static_cast<std::size_t>(info.bufferHeight);
    info.bufferPitch = static_cast<std::int32_t>(raw::packedSize(width, levels.bits));
    info.bufferSize = static_cast<std::int32_t>(raw::packedSize(width * height, levels.bits));
    info.bitsPerSample = levels.bits;
    info.blackLevel = settings.recordedBlack < 0 ? levels.black : settings.recordedBlack;
    info.whiteLevel = settings.recordedWhite == 0 ? levels.white : settings.recordedWhite;
    info.cropWidth = info.activeRight = settings.width;
    info.cropHeight = info.activeBottom = settings.height;
    info.exposureBiasDenominator = 1;
    info.cfaPattern = mlv::cfaRedGreenGreenBlue;
    info.calibrationIlluminant = 1;
    for (std::size_t i = 0; i < 9; ++i) {
        info.colourMatrix[2 * i] =
            settings.recordedMatrix == std::array<int, 9>{}
                ? static_cast<std::int32_t>(std::lround(xyzToCamera[i / 3][i % 3] * 10000))
                : settings.recordedMatrix[i];
        info.colourMatrix[2 * i + 1] = 10000;
    }
    info.dynamicRange = 1100;
    return info;
}

mlv::RawCapture rawCapture(const Settings &settings)
{
    return {static_cast<std::uint16_t>(settings.width),
            static_cast<std::uint16_t>(settings.height),
            100,
            0,
            static_cast<std::uint8_t>(settings.sampledColumns),
            0,
            static_cast<std::uint8_t>(settings.sampledLines),
            0,
            0,
            0};
}

mlv::RawInfo laterRawInfo(const Settings &settings)
{
    mlv::RawInfo info = rawInfo(settings);
    info.blackLevel = settings.laterBlack;
    info.whiteLevel = settings.laterWhite;
    return info;
}

mlv::Identity identity(const Settings &settings)
{
    return {text<32>("Filmwright Sample"), settings.cameraModel, text<32>("F1A3000001")};
}

// Any recording of one seed is the same file, so the clock stands still.
mlv::Clock clock()
{
    return {0, 30, 14, 21, 2, 126, 6, 79, 0, 0, text<8>("UTC")};
}

mlv::Lens lens(int focalLength)
{
    mlv::Lens lens{};
    lens.focalLength = static_cast<std::uint16_t>(focalLength);
    lens.focusDistance = 150;
    lens.aperture = 280;
    lens.id = 1;
    lens.name = text<32>("Sample 35mm f/2.8");
    lens.serial = text<32>("F1A3000002");
    return lens;
}

mlv::WhiteBalance whiteBalance(const Settings &settings)
{
    if (settings.setKelvin != 0) {
        return {mlv::WhiteBalanceMode::Kelvin,
                static_cast<std::uint32_t>(settings.setKelvin),
                0,
                0,
                0,
                0,
                0};
    }
    const Rgb neutral = cameraNeutral();
    const auto gain = [&](std::size_t i) {
        return static_cast<std::uint32_t>(std::lround(neutral[i] * 1024));
    };
    return {mlv::WhiteBalanceMode::Custom, 6500, gain(0), gain(1), gain(2), 0, 0};
}

mlv::WaveInfo waveInfo()
{
    constexpr auto align = soundChannels * sizeof(std::int16_t);
    return {1, soundChannels, soundRate, soundRate * align, align, 16};
}

// The sensitivity is stored as a setting: k means 100 × 2^k.
mlv::DualIso dualIso(const Settings &settings)
{
    return {1, static_cast<std::uint32_t>(std::lround(std::log2(settings.highIso / 100.0)))};
}

std::string versionText()
{
    return "mlv_sample " FILMWRIGHT_VERSION;
}

std::string infoText(const Settings &settings)
{
    return "Synthetic recording: " + std::string(subjectName(settings.subject));
}

mlv::Exposure exposure(const Settings &settings, double stops)
{
    const double iso = settings.iso * std::exp2(stops);
    // The internal code: 72 is ISO 100, 8 more a stop.
    const double code = 72 + 8 * std::log2(iso / 100);
    const double shutter = 1e6 / settings.frameRate() / 2;
    return {0, static_cast<std::uint32_t>(std::lround(iso)),
            static_cast<std::uint32_t>(std::lround(code)), 0,
            static_cast<std::uint64_t>(std::llround(shutter))};
}

} // namespace sample
