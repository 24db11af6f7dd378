// SPDX-License-Identifier: MIT
#include "mlv_dump/options.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <thread>

namespace mlvdump {
namespace {

template <typename Number>
std::optional<Number> parseNumber(std::string_view text)
{
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool whole = error == std::errc() && end == text.data() + text.size();
    return whole ? std::optional(number) : std::nullopt;
}

/// "a-b" or "b". Our caller asks for "0-0" when it wants every frame, so an end of 0 in a range is
/// no limit; a range that ends before it starts holds its first frame.
std::optional<FrameRange> parseRange(std::string_view text)
{
    const auto dash = text.find('-');
    if (dash == std::string_view::npos) {
        const auto last = parseNumber<std::uint32_t>(text);
        return last ? std::optional(FrameRange{0, *last}) : std::nullopt;
    }
    const auto first = parseNumber<std::uint32_t>(text.substr(0, dash));
    const auto last = parseNumber<std::uint32_t>(text.substr(dash + 1));
    if (!first || !last)
        return std::nullopt;
    FrameRange range{*first, std::max(*first, *last)};
    if (*last == 0)
        range.last = FrameRange().last;
    return range;
}

class Parser
{
public:
    explicit Parser(std::span<const std::string_view> arguments)
        : m_arguments(arguments)
    {
    }

    Options parse()
    {
        while (m_next < m_arguments.size()) {
            const auto argument = m_arguments[m_next++];
            if (argument == "--" && !m_onlyFiles)
                m_onlyFiles = true;
            else if (argument.size() > 1 && argument.front() == '-' && !m_onlyFiles)
                parseOption(argument);
            else
                setInput(argument);
        }
        m_options.mode = mode();
        if (needsInput() && m_options.input.empty())
            fail("no recording is named");
        if (m_options.mode == Mode::Average && m_options.output.empty())
            fail("an averaged frame needs a file to be written to (-o)");
        checkSurvey();
        if (m_options.mode == Mode::Frames && m_options.output.empty()) {
            m_options.output = m_options.input;
            m_options.output.replace_extension();
            m_options.output += "_";
        }
        return m_options;
    }

private:
    [[noreturn]] void fail(const std::string &text) const { throw UsageError(text, m_frames); }

    void parseOption(std::string_view option)
    {
        if (option == "-m") {
            m_metadataOnly = true;
        } else if (option == "-v") {
            m_options.verbose = true;
        } else if (option == "-a") {
            m_average = true;
        } else if (option == "--dng") {
            m_frames = true;
        } else if (option == "--survey") {
            m_survey = true;
        } else if (option == "--verify") {
            m_verify = true;
        } else if (option == "--no-cs") {
            // Chroma is never smoothed here; callers of other tools of this kind have to say so.
        } else if (option == "-s") {
            m_options.dark = value(option);
        } else if (option == "-t") {
            m_options.flat = value(option);
        } else if (option == "-o") {
            m_options.output = value(option);
        } else if (option == "-f") {
            setRange(value(option));
        } else if (option == "--black-level") {
            m_options.black = level(option);
        } else if (option == "--white-level") {
            m_options.white = level(option);
        } else if (option == "--matrix") {
            setMatrix(value(option));
        } else if (option == "--white-balance") {
            setBalance(value(option));
        } else if (option == "--exposure") {
            setExposure(value(option));
        } else if (option == "--renumber") {
            m_options.renumbers = true;
        } else if (option == "--repair-pixels") {
            setPixelRepair(value(option));
        } else if (option == "--repair-columns") {
            m_options.repair.columns = true;
        } else if (option == "--write-survey") {
            m_options.writtenSurvey = value(option);
        } else if (option == "--survey-frames") {
            m_options.surveyedFrames = value(option);
        } else if (option == "--use-survey") {
            m_options.knownSurvey = value(option);
        } else if (option == "--cinema-dng") {
            m_options.cinemaDng = true;
        } else if (option == "--threads") {
            setThreads(value(option));
        } else if (option == "--help" || option == "-h") {
            m_help = true;
        } else if (option == "--version") {
            m_version = true;
        } else {
            fail("an option is not known");
        }
    }

    std::string_view value(std::string_view option)
    {
        if (m_next == m_arguments.size())
            fail("the option " + std::string(option) + " needs a value");
        return m_arguments[m_next++];
    }

    void setRange(std::string_view text)
    {
        const auto range = parseRange(text);
        if (!range)
            fail("the frames of -f are not given as FIRST-LAST or LAST");
        m_options.range = *range;
    }

    LevelChoice level(std::string_view option)
    {
        const auto text = value(option);
        if (text == "auto")
            return {LevelChoice::Kind::Auto, 0};
        if (text == "recorded")
            return {LevelChoice::Kind::Recorded, 0};
        const auto level = parseNumber<std::uint16_t>(text);
        if (!level) {
            fail("the level of " + std::string(option) +
                 " is neither a number up to 65535 nor auto nor recorded");
        }
        return {LevelChoice::Kind::Given, *level};
    }

    void setMatrix(std::string_view text)
    {
        if (text != "auto" && text != "recorded")
            fail("the matrix is neither auto nor recorded");
        m_options.keepsRecordedMatrix = text == "recorded";
    }

    void setBalance(std::string_view text)
    {
        const auto balance = parseBalance(text);
        if (!balance) {
            fail("the white balance is neither camera nor auto nor a temperature from 2000 to "
                 "25000 nor three multipliers R,G,B");
        }
        m_options.balance = *balance;
    }

    void setExposure(std::string_view text)
    {
        constexpr double most = 10;
        const auto exposure = parseNumber<double>(text);
        if (!exposure || !(std::abs(*exposure) <= most))
            fail("the exposure is not between -10 and 10");
        m_options.exposure = *exposure;
    }

    /// "./auto" is a map of that name.
    void setPixelRepair(std::string_view text)
    {
        using Pixels = RepairChoice::Pixels;
        if (text.empty())
            fail("the pixels to repair are neither auto nor off nor a map");
        auto &repair = m_options.repair;
        repair.pixels = text == "auto" ? Pixels::Auto : text == "off" ? Pixels::Off : Pixels::Map;
        repair.map = repair.pixels == Pixels::Map ? text : std::string_view();
    }

    void setThreads(std::string_view text)
    {
        const auto threads = parseNumber<unsigned>(text);
        if (!threads || *threads == 0 || *threads > 1024)
            fail("the number of threads is not between 1 and 1024");
        m_options.threads = *threads;
    }

    void setInput(std::string_view path)
    {
        if (!m_options.input.empty())
            fail("more than one recording is named");
        m_options.input = path;
    }

    Mode mode() const
    {
        if (m_help || m_version)
            return m_help ? Mode::Help : Mode::Version;
        if (m_verify || m_survey)
            return m_verify ? Mode::Verify : Mode::Survey;
        if (m_metadataOnly)
            return Mode::Report;
        if (m_average)
            return Mode::Average;
        if (m_frames)
            return Mode::Frames;
        return m_options.output.empty() ? Mode::Report : Mode::Rewrite;
    }

    void checkSurvey() const
    {
        const bool writes = !m_options.writtenSurvey.empty();
        const bool uses = !m_options.knownSurvey.empty();
        if ((writes || uses) && m_options.mode != Mode::Frames)
            fail("a survey is one for frames (--dng)");
        if (writes && uses)
            fail("a survey is either written or used");
        if (!m_options.surveyedFrames.empty() && !writes)
            fail("the option --survey-frames needs --write-survey");
    }

    bool needsInput() const
    {
        return m_options.mode != Mode::Help && m_options.mode != Mode::Version;
    }

    std::span<const std::string_view> m_arguments;
    std::size_t m_next = 0;
    bool m_onlyFiles = false;
    bool m_metadataOnly = false;
    bool m_average = false;
    bool m_frames = false;
    bool m_survey = false;
    bool m_verify = false;
    bool m_help = false;
    bool m_version = false;
    Options m_options;
};

} // namespace

unsigned Options::threadCount() const
{
    return threads > 0 ? threads : std::max(1U, std::thread::hardware_concurrency());
}

std::vector<std::filesystem::path> Options::references() const
{
    std::vector<std::filesystem::path> paths{dark, flat, repair.map, knownSurvey};
    std::erase(paths, std::filesystem::path());
    return paths;
}

Options parseOptions(std::span<const std::string_view> arguments)
{
    return Parser(arguments).parse();
}

std::string_view usage()
{
    return R"(Usage: mlv_dump [OPTION]... RECORDING

Reads an MLV recording with all its chunks (.MLV, .M00, .M01, ...).

  -m -v          print what stands in the recording
  --survey       print which levels and which colour matrix of the recording can't be true
  --verify       read all data, decode every frame and print what is lost
  --dng          write every frame as PREFIX000000.dng, ... and the sound as PREFIX.wav
  -a             write the average of all frames as a recording of one frame
  -s FILE        subtract the first frame of FILE, a dark frame
  -t FILE        divide by the first frame of FILE, a flat field
  -f FIRST-LAST  only these frames; a LAST of 0 means all from FIRST on
  -f LAST        only the frames up to LAST
  -o OUT         the prefix for --dng, otherwise the recording to write
  --black-level N|recorded|auto
  --white-level N|recorded|auto
                 the levels that frames are tagged with; auto: the recorded ones, unless the
                 samples show that they can't be true
  --matrix recorded|auto
                 the colour matrix; auto: the recorded one, unless it is known to be wrong
  --white-balance camera|auto|KELVIN|R,G,B
                 with --dng: what is white; camera: as the camera was set; auto: one white for the
                 whole recording, found in its frames; KELVIN: daylight of that temperature, 2000 to
                 25000; R,G,B: what the camera's colours are multiplied by
  --exposure EV  with --dng: the exposure that frames ask raw converters for
  --renumber     with --dng: the first frame of -f has number 0
  --repair-pixels auto|MAP|off
                 with --dng: replace pixels that don't measure the scene; auto: those that deviate in
                 all frames, and a map beside the recording; MAP: those of a file of places
  --repair-columns
                 with --dng: even out the gains of columns, which repeat every eight
  --write-survey FILE
                 with --dng: write the sound, and instead of the frames what has to be known of the
                 whole recording, or of -f, for each of them
  --survey-frames PREFIX
                 with --write-survey: write the frames that cr2hdr --write-survey needs
  --use-survey FILE
                 with --dng and the same options: write only the frames of -f, without the sound, as
                 if all were written at once
  --cinema-dng   with --dng: frames and sound as an editor takes them for one clip: exact rate,
                 timecode from the camera's clock, sound as long as the picture
  --no-cs        accepted without effect: chroma is never smoothed
  --threads N    use N threads instead of as many as there are processors
  --help         print this text
  --version      print the version
)";
}

} // namespace mlvdump
