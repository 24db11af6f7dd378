// SPDX-License-Identifier: MIT
#include "mlv_sample/options.h"

#include "mlv_sample/faultoptions.h"
#include "mlv_sample/optionvalues.h"

#include "raw/samples.h"

#include <cmath>
#include <tuple>

namespace sample {

const std::string_view helpText =
    R"(Usage: mlv_sample [options] OUT.MLV
Writes a synthetic raw video recording: a chart by which movement, colour, sharpness, tones and
sync can be judged. The same options give the same file.

  --size WxH           frame size (1280x720); W a multiple of 8, H a multiple of 2
  --frames N           number of frames (48)
  --bits N             10, 12, 14 or 16 bits a sample (14)
  --fps F              frames a second: 24, 23.976, 30000/1001 (24)
  --sound, --no-sound  with or without sound (with)
  --dark, --flat       film the lens cap, or an evenly lit wall, instead of the chart; without sound
  --scene NAME         film stars, texture, specular points, moving grain or a moving landscape;
                       without sound
  --seed N             chooses the noise (1)
  --iso N              sensitivity (100)
  --light R,G,B        the light's colour in linear sRGB (1,1,1: daylight of 6500 K)
  --set-kelvin K       the camera is set to that temperature instead of a white card in daylight
  --perfect            a camera without noise, hot pixels and offsets

Two exposures in one recording:
  --dual-iso LOW/HIGH  pairs of rows alternate between two sensitivities
  --phase N            row in which the first low pair starts, 0 to 3 (0)
  --hdr EV             every other frame is EV stops brighter
  --truth FILE         also write the scene without noise, at the lower sensitivity, 16 bits a sample

What cameras and damaged cards make:
  --compress KIND      lossless or lzma
  --shape SHAPE        of a lossless frame: camera, folded or plain (camera)
  --predictor N        of a lossless frame, 1 to 7 (1)
  --sampling LxC       each line was read of L lines of the sensor, each column of C (1x1)
  --recorded-white N   the white level that is noted, whatever the samples reach
  --recorded-black N   the black level that is noted, whatever the samples hold
  --later-levels B/W   other levels are noted halfway
  --split N            N files: OUT.MLV, OUT.M00, OUT.M01 ...
  --lose LIST          of the files OUT.M00 and so on leave out these numbers
  --lower-case         their names are OUT.m00, OUT.m01 ...
  --shuffle            blocks out of order
  --drop LIST          leave frames out, for example 0,3,5-7
  --drop-sound LIST    leave pieces of sound out
  --repeat LIST        write frames twice
  --omit TYPES         leave metadata blocks out, for example LENS,WBAL
  --sound-delay MS     the sound starts later than the picture, or earlier if negative
  --sound-piece MS     length of a piece of sound (that of a frame)
  --padding            padding and unknown blocks between the frames
  --change             exposure and lens are noted to change halfway
  --zero-counts        frame counts of 0 in the header
  --cut BYTES          the last file ends so many bytes early

What is wrong with the camera; places are those of the sensor's read-out:
  --hot N, --cold N, --stuck N
                       so many pixels that add to the light, miss it, or stand still
  --lattice CxL:X/Y,...
                       these places of every C columns and L lines follow the light in a measure of
                       their own; given again, another lattice lies over it
  --lattice-light R/B  their measure, where they are red and where they are blue (0.88/1.1)
  --lattice-lines A-B  only on these lines
  --column-gains G,... the gains of eight columns in turn
  --clip N             the sensor is full at this level of 14 bits
  --model CODE         the camera's code, 0x and hexadecimal digits
  --recorded-matrix N,...
                       the nine numbers, times 10000, that are noted for its colours
  --crop XxY           where the frame lies in the read-out
  --pan                it wanders

  --help, --version
)";

namespace {

void setRate(Settings &settings, std::string_view text)
{
    const auto [numerator, denominator] = halves(text, '/');
    if (denominator.empty()) {
        const double rate = number("--fps", text, 1.0, 1000.0);
        settings.rateNumerator = static_cast<std::uint32_t>(std::lround(rate * 1000));
        settings.rateDenominator = 1000;
    } else {
        settings.rateNumerator = number<std::uint32_t>("--fps", numerator, 1, 1000000);
        settings.rateDenominator = number<std::uint32_t>("--fps", denominator, 1, 1000000);
    }
}

using Flag = std::function<void(Options &)>;

const std::map<std::string_view, Flag> &flags()
{
    static const std::map<std::string_view, Flag> table{
        {"--help", [](Options &o) { o.help = true; }},
        {"--version", [](Options &o) { o.version = true; }},
        {"--sound", [](Options &o) { o.settings.sound = true; }},
        {"--no-sound", [](Options &o) { o.settings.sound = false; }},
        {"--dark", [](Options &o) { o.settings.subject = Subject::Dark; }},
        {"--flat", [](Options &o) { o.settings.subject = Subject::Flat; }},
        {"--perfect", [](Options &o) { o.settings.perfect = true; }},
        {"--lower-case", [](Options &o) { o.settings.lowerCaseParts = true; }},
        {"--pan", [](Options &o) { o.settings.pans = true; }},
        {"--shuffle", [](Options &o) { o.settings.shuffle = true; }},
        {"--padding", [](Options &o) { o.settings.cameraPadding = true; }},
        {"--change", [](Options &o) { o.settings.changeSettings = true; }},
        {"--zero-counts", [](Options &o) { o.settings.zeroCounts = true; }},
    };
    return table;
}

const std::map<std::string_view, Setter> &setters()
{
    static const std::map<std::string_view, Setter> table{
        {"--size",
         [](Settings &s, std::string_view t) {
             std::tie(s.width, s.height) = numberPair("--size", t, 'x', 16, 16384);
         }},
        {"--frames",
         [](Settings &s, std::string_view t) { s.frames = number("--frames", t, 1, 1000000); }},
        {"--bits", [](Settings &s, std::string_view t) { s.bits = number<int>("--bits", t); }},
        {"--fps", setRate},
        {"--scene",
         [](Settings &s, std::string_view t) {
             s.subject = choice<Subject>("--scene", t,
                                         {{"stars", Subject::Stars},
                                          {"texture", Subject::Texture},
                                          {"specular", Subject::Specular},
                                          {"grain", Subject::Grain},
                                          {"landscape", Subject::Landscape}});
         }},
        {"--seed",
         [](Settings &s, std::string_view t) { s.seed = number<std::uint64_t>("--seed", t); }},
        {"--iso", [](Settings &s, std::string_view t) { s.iso = number("--iso", t, 50, 51200); }},
        {"--dual-iso",
         [](Settings &s, std::string_view t) {
             std::tie(s.iso, s.highIso) = numberPair("--dual-iso", t, '/', 50, 51200);
         }},
        {"--phase",
         [](Settings &s, std::string_view t) { s.dualIsoPhase = number("--phase", t, 0, 3); }},
        {"--hdr",
         [](Settings &s, std::string_view t) { s.hdrStops = number("--hdr", t, 0.0, 10.0); }},
        {"--truth", [](Settings &s, std::string_view t) { s.truthPath = t; }},
        {"--compress",
         [](Settings &s, std::string_view t) {
             s.compression = choice<Compression>(
                 "--compress", t,
                 {{"lossless", Compression::Lossless}, {"lzma", Compression::Lzma}});
         }},
        {"--shape",
         [](Settings &s, std::string_view t) {
             s.losslessShape = choice<LosslessShape>("--shape", t,
                                                     {{"camera", LosslessShape::Camera},
                                                      {"folded", LosslessShape::Folded},
                                                      {"plain", LosslessShape::Plain}});
         }},
        {"--predictor",
         [](Settings &s, std::string_view t) { s.predictor = number("--predictor", t, 1, 7); }},
        {"--sampling",
         [](Settings &s, std::string_view t) {
             std::tie(s.sampledLines, s.sampledColumns) = numberPair("--sampling", t, 'x', 1, 16);
         }},
        {"--recorded-white",
         [](Settings &s, std::string_view t) {
             s.recordedWhite = number("--recorded-white", t, 1, 65535);
         }},
        {"--recorded-black",
         [](Settings &s, std::string_view t) {
             s.recordedBlack = number("--recorded-black", t, 0, 65535);
         }},
        {"--split",
         [](Settings &s, std::string_view t) { s.chunks = number("--split", t, 1, 99); }},
        {"--drop",
         [](Settings &s, std::string_view t) { s.droppedFrames = numberList("--drop", t); }},
        {"--drop-sound",
         [](Settings &s, std::string_view t) { s.droppedSound = numberList("--drop-sound", t); }},
        {"--repeat",
         [](Settings &s, std::string_view t) { s.repeatedFrames = numberList("--repeat", t); }},
        {"--omit",
         [](Settings &s, std::string_view text) {
             for (const std::string_view type : listItems(text))
                 s.omittedBlocks.emplace(type);
         }},
        {"--sound-delay",
         [](Settings &s, std::string_view t) {
             s.soundDelayMs = number("--sound-delay", t, -2000, 1000000);
         }},
        {"--sound-piece",
         [](Settings &s, std::string_view t) {
             s.soundPieceMs = number("--sound-piece", t, 10, 10000);
         }},
        {"--cut",
         [](Settings &s, std::string_view t) { s.cutBytes = number<std::uint64_t>("--cut", t); }},
    };
    return table;
}

const Setter *setterOf(std::string_view option)
{
    for (const auto *table : {&setters(), &faultSetters()})
        if (const auto found = table->find(option); found != table->end())
            return &found->second;
    return nullptr;
}

void checkSettings(const Settings &settings)
{
    if (settings.path.empty())
        throw UsageError("no output file is given");
    if (!raw::isSupportedDepth(settings.bits))
        throw UsageError("--bits must be 10, 12, 14 or 16");
    if (settings.width % 8 != 0 || settings.height % 2 != 0)
        throw UsageError("--size must be a multiple of 8 by a multiple of 2");
    if (settings.highIso != 0 && settings.highIso <= settings.iso)
        throw UsageError("--dual-iso needs the lower sensitivity first");
    if (settings.crop.x % 8 != 0 || settings.crop.y % 2 != 0)
        throw UsageError("--crop must be a multiple of 8 by a multiple of 2");
    const std::size_t dot = settings.path.rfind('.');
    if (settings.chunks > 1 && (dot == std::string::npos || settings.path.size() - dot != 4))
        throw UsageError("--split needs an output file that ends in .MLV");
}

} // namespace

Options parseOptions(std::span<const char *const> arguments)
{
    Options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        if (const auto flag = flags().find(argument); flag != flags().end()) {
            flag->second(options);
        } else if (const Setter *setter = setterOf(argument)) {
            if (++i == arguments.size())
                throw UsageError(std::string(argument) + " needs a value");
            (*setter)(options.settings, arguments[i]);
        } else if (argument.starts_with('-')) {
            throw UsageError("unknown option: " + std::string(argument));
        } else if (options.settings.path.empty()) {
            options.settings.path = argument;
        } else {
            throw UsageError("more than one output file is given");
        }
    }
    if (options.settings.subject != Subject::Chart)
        options.settings.sound = false;
    if (!options.help && !options.version)
        checkSettings(options.settings);
    return options;
}

} // namespace sample
