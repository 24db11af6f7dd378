// SPDX-License-Identifier: MIT
// The order of the lines and what stands before each first ":" is what readers go by; labels of
// lines whose values nobody takes from there have no colon.
#include "mlv_dump/reportblocks.h"

#include "mlv_dump/text.h"

#include <cinttypes>

namespace mlvdump {
namespace {

using mlv::Block;
using mlv::BlockWalk;
using mlv::Chunk;

void print(Output &out, const mlv::RawInfo &raw)
{
    out.line(format("    Res         : %dx%d", raw.width, raw.height));
    out.line("    raw_info    :");
    out.line(format("      api_version      0x%08X", raw.apiVersion));
    out.line(format("      height           %d", raw.bufferHeight));
    out.line(format("      width            %d", raw.bufferWidth));
    out.line(format("      pitch            %d", raw.bufferPitch));
    out.line(format("      frame_size       0x%08X", static_cast<unsigned>(raw.bufferSize)));
    out.line(format("      bits_per_pixel   %d", raw.bitsPerSample));
    out.line(format("      black_level      %d", raw.blackLevel));
    out.line(format("      white_level      %d", raw.whiteLevel));
    out.line(format("      active_area.y1   %d", raw.activeTop));
    out.line(format("      active_area.x1   %d", raw.activeLeft));
    out.line(format("      active_area.y2   %d", raw.activeBottom));
    out.line(format("      active_area.x2   %d", raw.activeRight));
    out.line(format("      exposure_bias    %d, %d", raw.exposureBiasNumerator,
                    raw.exposureBiasDenominator));
    out.line(format("      cfa_pattern      0x%08X", static_cast<unsigned>(raw.cfaPattern)));
    out.line(format("      calibration_ill  %d", raw.calibrationIlluminant));
}

std::string cropWords(unsigned cropFactor)
{
    if (cropFactor == 100)
        return "Full frame";
    return cropFactor >= 160 && cropFactor <= 162 ? "APS-C" : "35mm equiv";
}

std::string samplingWords(unsigned binning, unsigned skipping, const char *unit)
{
    if (binning + skipping <= 1)
        return format("every %s", unit);
    return format("%u of %u %ss read", binning, binning + skipping, unit);
}

void print(Output &out, const mlv::RawCapture &capture)
{
    const unsigned factorX = capture.binningX + unsigned{capture.skippingX};
    const unsigned factorY = capture.binningY + unsigned{capture.skippingY};
    out.line("    raw_capture_info:");
    out.line(format("      sensor res       %dx%d", capture.sensorWidth, capture.sensorHeight));
    out.line(format("      sensor crop      %.2f (%s)", capture.cropFactor / 100.0,
                    cropWords(capture.cropFactor).c_str()));
    out.line(format("      sampling         %ux%u (%s, %s)", factorY, factorX,
                    samplingWords(capture.binningY, capture.skippingY, "line").c_str(),
                    samplingWords(capture.binningX, capture.skippingX, "column").c_str()));
    if (capture.offsetX != mlv::unknownOffset && capture.offsetY != mlv::unknownOffset)
        out.line(format("      offset           %d,%d", capture.offsetX, capture.offsetY));
}

void print(Output &out, const mlv::WaveInfo &wave)
{
    out.line("    wav_info    :");
    out.line(format("      format           %d", wave.format));
    out.line(format("      channels         %d", wave.channels));
    out.line(format("      samplingRate     %u", wave.samplesPerSecond));
    out.line(format("      bytesPerSecond   %u", wave.bytesPerSecond));
    out.line(format("      blockAlign       %d", wave.blockAlign));
    out.line(format("      bitsPerSample    %d", wave.bitsPerSample));
}

void print(Output &out, const mlv::Clock &clock)
{
    out.line(
        format("    Date        : %02d.%02d.%04d", clock.day, clock.month + 1, clock.year + 1900));
    // Readers look for "Time:" without a blank in between: the value has colons of its own.
    out.line(format("    Time:         %02d:%02d:%02d (GMT%+d)", clock.hour, clock.minute,
                    clock.second, clock.gmtOffset));
    out.line("    Zone        : '" + harmless(clock.zone) + "'");
    out.line(format("    Day of week : %d", clock.dayOfWeek));
    out.line(format("    Day of year : %d", clock.dayOfYear));
    out.line(format("    Daylight s. : %d", clock.daylightSaving));
}

void print(Output &out, const mlv::Identity &identity)
{
    out.line("    Camera Name   : '" + harmless(identity.name) + "'");
    out.line("    Camera Serial : '" + harmless(identity.serial) + "'");
    out.line(format("    Camera Model  : 0x%08X", identity.model));
}

void print(Output &out, const mlv::Exposure &exposure)
{
    const auto shutter = static_cast<double>(exposure.shutter);
    out.line(format("    ISO Mode    : %u", exposure.isoMode));
    out.line(format("    ISO         : %u", exposure.iso));
    out.line(format("    ISO Analog  : %u", exposure.isoAnalog));
    out.line(format("    ISO DGain   : %u/1024 EV", exposure.digitalGain));
    // The reader looks for the micro sign U+00B5 directly behind the number.
    out.line(format("    Shutter     : %" PRIu64 "\u00b5s (1/%.2f)", exposure.shutter,
                    exposure.shutter == 0 ? 0.0 : 1e6 / shutter));
}

void print(Output &out, const mlv::Lens &lens)
{
    out.line("    Name        : '" + harmless(lens.name) + "'");
    out.line("    Serial      : '" + harmless(lens.serial) + "'");
    out.line(format("    Focal Len   : %d mm", lens.focalLength));
    out.line(format("    Focus Dist  : %d mm", lens.focusDistance));
    out.line(format("    Aperture    : f/%.2f", lens.aperture / 100.0));
    out.line(format("    IS Mode     : %d", lens.stabiliser));
    out.line(format("    AF Mode     : %d", lens.autofocus));
    out.line(format("    Lens ID     : 0x%08X", lens.id));
    out.line(format("    Flags       : 0x%08X", lens.flags));
}

void print(Output &out, const mlv::WhiteBalance &balance)
{
    out.line(format("    Mode        : %u", static_cast<unsigned>(balance.mode)));
    out.line(format("    Kelvin      : %u", balance.kelvin));
    out.line(format("    Gain R      : %u", balance.gainRed));
    out.line(format("    Gain G      : %u", balance.gainGreen));
    out.line(format("    Gain B      : %u", balance.gainBlue));
    out.line(format("    Shift GM    : %d", balance.shiftGreenMagenta));
    out.line(format("    Shift BA    : %d", balance.shiftBlueAmber));
}

void print(Output &out, const mlv::VideoFrame &frame)
{
    out.line(format("    Frame       : #%04u", frame.number));
    out.line(format("    Crop        : %dx%d", frame.cropX, frame.cropY));
    out.line(format("    Pan         : %dx%d", frame.panX, frame.panY));
    out.line(format("    Space       : %u", frame.frameSpace));
}

void print(Output &out, const mlv::AudioFrame &frame)
{
    out.line(format("    Frame       : #%04u", frame.number));
    out.line(format("    Space       : %u", frame.frameSpace));
}

void print(Output &out, const mlv::DualIso &dualIso)
{
    out.line(format("    Mode        : %u", dualIso.mode));
    out.line(format("    ISO Value   : %u", dualIso.iso));
}

void print(Output &out, const mlv::Mark &mark)
{
    out.line(format("    Button      : 0x%02X", mark.button));
}

void print(Output &out, const mlv::Style &style)
{
    out.line(format("    picStyle    : %u", style.id));
    out.line(format("    contrast    : %d", style.contrast));
    out.line(format("    sharpness   : %d", style.sharpness));
    out.line(format("    saturation  : %d", style.saturation));
    out.line(format("    colortone   : %d", style.colourTone));
}

void print(Output &out, const mlv::Level &level)
{
    out.line(format("    Roll        : %2.2f degrees", level.roll / 100.0));
    out.line(format("    Pitch       : %2.2f degrees", level.pitch / 100.0));
}

/// The text behind a head of `headSize` bytes, at most `textSize` bytes of it.
void printText(Output &out, const Chunk &chunk, const Block &block, std::uint64_t headSize,
               std::uint64_t textSize)
{
    constexpr std::uint64_t maxText = 1000;
    const std::uint64_t available =
        block.header.size - std::min<std::uint64_t>(headSize, block.header.size);
    std::string text(std::min({available, textSize, maxText}), '\0');
    chunk.file().read(block.offset + headSize, std::as_writable_bytes(std::span(text)));
    out.line("    String      : '" + harmless(text) + "'");
}

template <typename Layout>
void printFields(const Chunk &, BlockWalk &walk, const Block &, Output &out)
{
    print(out, walk.layout<Layout>());
}

template <typename Layout>
void printCountedText(const Chunk &chunk, BlockWalk &walk, const Block &block, Output &out)
{
    printText(out, chunk, block, sizeof(mlv::BlockHeader) + sizeof(Layout),
              walk.layout<Layout>().length);
}

void printInfo(const Chunk &chunk, BlockWalk &, const Block &block, Output &out)
{
    printText(out, chunk, block, sizeof(mlv::BlockHeader), block.header.size);
}

struct Printer
{
    mlv::BlockType type;
    void (*print)(const Chunk &, BlockWalk &, const Block &, Output &);
};

namespace blocktype = mlv::blocktype;

constexpr std::array printers{
    Printer{blocktype::rawInfo, printFields<mlv::RawInfo>},
    Printer{blocktype::rawCapture, printFields<mlv::RawCapture>},
    Printer{blocktype::waveInfo, printFields<mlv::WaveInfo>},
    Printer{blocktype::clock, printFields<mlv::Clock>},
    Printer{blocktype::identity, printFields<mlv::Identity>},
    Printer{blocktype::exposure, printFields<mlv::Exposure>},
    Printer{blocktype::lens, printFields<mlv::Lens>},
    Printer{blocktype::whiteBalance, printFields<mlv::WhiteBalance>},
    Printer{blocktype::videoFrame, printFields<mlv::VideoFrame>},
    Printer{blocktype::audioFrame, printFields<mlv::AudioFrame>},
    Printer{blocktype::dualIso, printFields<mlv::DualIso>},
    Printer{blocktype::mark, printFields<mlv::Mark>},
    Printer{blocktype::style, printFields<mlv::Style>},
    Printer{blocktype::level, printFields<mlv::Level>},
    Printer{blocktype::version, printCountedText<mlv::VersionText>},
    Printer{blocktype::debug, printCountedText<mlv::DebugText>},
    Printer{blocktype::info, printInfo},
};

} // namespace

void printBlock(const Chunk &chunk, BlockWalk &walk, const Block &block, Output &output)
{
    const auto &header = block.header;
    output.line("Block: " + harmless(header.type));
    output.line(format("    Offset: 0x%08" PRIx64, block.offset));
    output.line(format("      Size: %u", header.size));
    output.line(format("      Time: %" PRIu64 ".%03u000 ms", header.timestamp / 1000,
                       static_cast<unsigned>(header.timestamp % 1000)));
    for (const auto &printer : printers)
        if (printer.type == header.type)
            printer.print(chunk, walk, block, output);
}

} // namespace mlvdump
