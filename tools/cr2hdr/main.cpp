// SPDX-License-Identifier: MIT
// cr2hdr: blends dual-ISO frames in place.
#include "cr2hdr/recording.h"
#include "output/outputfile.h"
#include "surveyfile/surveyerror.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <span>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace {

constexpr int failed = 1;
constexpr int wrongUsage = 2;

constexpr std::string_view helpText =
    R"(Usage: cr2hdr [--write-survey FILE | --use-survey FILE] FILE.dng ...
Blends dual-ISO frames: raw pictures whose rows alternate in pairs between two sensitivities become
ordinary ones with the lower sensitivity's exposure and cleaner shadows. The files are replaced.
Files that are named together are taken as frames of one recording. A frame that is not dual ISO is
left as it is.

  --write-survey FILE  write what the frames have in common; they stay as they are. Of many frames
                       six are looked at: those that mlv_dump --survey-frames writes are enough
  --use-survey FILE    take that instead of looking at these frames, so that a recording can be
                       blended in parts
  --help, --version
)";

struct Options
{
    std::vector<std::filesystem::path> frames;
    std::filesystem::path writtenSurvey; ///< empty: none
    std::filesystem::path knownSurvey;   ///< empty: none
    bool help = false;
    bool version = false;
};

/// The arguments make no sense.
class UsageError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

Options parseOptions(std::span<char *const> arguments)
{
    Options options;
    bool optionsEnded = false;
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        const std::string_view text = *argument;
        const auto value = [&]() -> std::filesystem::path {
            if (++argument == arguments.end() || std::string_view(*argument).empty())
                throw UsageError("an option needs a file");
            return *argument;
        };
        if (optionsEnded || !text.starts_with('-')) {
            options.frames.emplace_back(text);
        } else if (text == "--") {
            optionsEnded = true;
        } else if (text == "--write-survey") {
            options.writtenSurvey = value();
        } else if (text == "--use-survey") {
            options.knownSurvey = value();
        } else if (text == "--help" || text == "--version") {
            (text == "--help" ? options.help : options.version) = true;
            return options;
        } else {
            throw UsageError("unknown option");
        }
    }
    if (options.frames.empty())
        throw UsageError("no file is given");
    if (!options.writtenSurvey.empty() && !options.knownSurvey.empty())
        throw UsageError("a survey is either written or used");
    return options;
}

bool run(const Options &options)
{
    if (!options.writtenSurvey.empty())
        return dualiso::surveyRecording(options.frames, options.writtenSurvey);
    if (!options.knownSurvey.empty())
        return dualiso::blendSurveyed(options.frames, options.knownSurvey);
    return dualiso::blendRecording(options.frames);
}

} // namespace

int main(int argc, char *argv[])
{
    // A recording isn't left half blended because nobody reads on.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        const auto options =
            parseOptions(std::span(argv, static_cast<std::size_t>(argc)).subspan(1));
        if (options.help) {
            std::cout << helpText;
            return EXIT_SUCCESS;
        }
        if (options.version) {
            std::cout << "cr2hdr " FILMWRIGHT_VERSION "\n";
            return EXIT_SUCCESS;
        }
        return run(options) ? EXIT_SUCCESS : failed;
    } catch (const UsageError &error) {
        std::cerr << "cr2hdr : " << error.what() << "; cr2hdr --help tells more\n";
        return wrongUsage;
    } catch (const surveyfile::SurveyError &error) {
        std::cout << "[ERROR] " << error.what() << '\n';
        return failed;
    } catch (const output::WriteError &error) {
        std::cout << "[ERROR] The survey " << error.what() << '\n';
        return failed;
    }
}
