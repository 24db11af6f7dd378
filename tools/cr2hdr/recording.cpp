// SPDX-License-Identifier: MIT
#include "cr2hdr/recording.h"

#include "cr2hdr/blending.h"
#include "cr2hdr/framefile.h"
#include "cr2hdr/report.h"
#include "cr2hdr/survey.h"
#include "parallel/sharedwork.h"
#include "raw/error.h"

#include <algorithm>
#include <atomic>
#include <string>
#include <system_error>
#include <thread>

namespace dualiso {
namespace {

constexpr const char *leftAsItIs = "left as it is, ";
constexpr const char *notBlended = "failed, ";

struct Outcome
{
    bool ok = true;
    std::string text;
};

/// `threads` may work on the frame.
Outcome blendFrame(const std::filesystem::path &path, const Survey &survey, int threads)
{
    const dng::RawFile file(path);
    if (isBlended(file))
        return {true, std::string(leftAsItIs) + "blended before"};
    if (file.format() != survey.format) {
        return {false,
                std::string(notBlended) + "has another size, depth or level than the others"};
    }
    if (!survey.model) {
        const bool ok = survey.obstacle != Obstacle::Unmatched;
        return {ok, std::string(ok ? leftAsItIs : notBlended).append(textOf(survey.obstacle))};
    }
    Frame frame = readFrame(file);
    PatternSearch search;
    search.add(frame);
    const Finding finding = search.finding();
    // A frame that leaves it open is blended like the rest, or the picture would jump.
    if (finding == Finding::NotDualIso)
        return {true, std::string(leftAsItIs) + "not dual ISO"};
    if (finding == Finding::DualIso && search.pattern() != survey.model->pattern) {
        return {false, std::string(notBlended) + "other rows are bright than in the others: " +
                           search.pattern().letters()};
    }
    blend(frame, *survey.model, threads);
    replaceFrame(path, file, frame);
    return {true, "blended"};
}

Outcome attempt(const std::filesystem::path &path, const std::optional<Survey> &survey, int threads)
{
    try {
        // Without a survey there is no file that can be read or needs blending; why, it tells.
        return blendFrame(path, survey.value_or(Survey{}), threads);
    } catch (const raw::Error &error) {
        return {false, std::string(notBlended) + error.what()};
    } catch (const std::system_error &error) {
        return {false, std::string(notBlended) + error.what()};
    } catch (const std::bad_alloc &) {
        return {false, std::string(notBlended) + "not enough memory"};
    }
}

/// Without a survey nothing can be blended.
bool blendFrames(std::span<const std::filesystem::path> paths, const std::optional<Survey> &survey)
{
    const std::size_t cores = std::max(1U, std::thread::hardware_concurrency());
    const std::size_t workers = std::min(cores, paths.size());
    const auto threadsOfFrame = static_cast<int>(cores / std::max<std::size_t>(workers, 1));
    std::atomic<bool> allOk = true;
    FrameLog log;
    const auto blend = [&](std::size_t i) {
        const Outcome outcome = attempt(paths[i], survey, threadsOfFrame);
        log.tell(i, labelOf(paths[i]), outcome.text);
        if (!outcome.ok)
            allOk = false;
    };
    parallel::shareWork(paths.size(), workers, [&] { return blend; });
    return allOk;
}

} // namespace

bool blendRecording(std::span<const std::filesystem::path> paths)
{
    const auto found = survey(paths);
    if (found)
        printFindings(*found);
    return blendFrames(paths, found);
}

bool surveyRecording(std::span<const std::filesystem::path> paths,
                     const std::filesystem::path &surveyPath)
{
    const auto found = survey(paths);
    if (!found) {
        blendFrames(paths, found); // tells why of each
        return false;
    }
    printFindings(*found);
    writeSurvey(*found, surveyPath);
    return true;
}

bool blendSurveyed(std::span<const std::filesystem::path> paths,
                   const std::filesystem::path &surveyPath)
{
    return blendFrames(paths, readSurvey(surveyPath, paths));
}

} // namespace dualiso
