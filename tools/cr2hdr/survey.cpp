// SPDX-License-Identifier: MIT
#include "cr2hdr/survey.h"

#include "cr2hdr/framefile.h"
#include "dng/surveyedparts.h"
#include "raw/error.h"

#include <algorithm>

namespace dualiso {
namespace {

bool isUsable(const std::filesystem::path &path)
{
    try {
        return !isBlended(dng::RawFile(path));
    } catch (const raw::Error &) {
        return false; // told when its turn comes
    }
}

/// The first usable file at or after `index`, none from `end` on.
std::optional<std::size_t> usableFrom(std::span<const std::filesystem::path> paths,
                                      std::size_t index, std::size_t end)
{
    for (; index < end; ++index)
        if (isUsable(paths[index]))
            return index;
    return std::nullopt;
}

struct Kind
{
    Finding finding = Finding::Unclear;
    RowPattern pattern;
};

Kind kindOf(const Frame &frame)
{
    PatternSearch search;
    search.add(frame);
    const Finding finding = search.finding();
    return {finding, finding == Finding::DualIso ? search.pattern() : RowPattern{}};
}

/// The pattern that most of the frames have.
std::optional<RowPattern> commonPattern(std::span<const Kind> kinds)
{
    std::optional<RowPattern> common;
    std::ptrdiff_t most = 0;
    for (const Kind &kind : kinds) {
        const auto same = std::count_if(kinds.begin(), kinds.end(), [&](const Kind &other) {
            return other.finding == Finding::DualIso && other.pattern == kind.pattern;
        });
        if (kind.finding == Finding::DualIso && same > most) {
            most = same;
            common = kind.pattern;
        }
    }
    return common;
}

/// Puts into the survey what the frames say.
void judge(Survey &survey, std::vector<Frame> frames)
{
    std::vector<Kind> kinds;
    std::transform(frames.begin(), frames.end(), std::back_inserter(kinds), kindOf);
    const auto pattern = commonPattern(kinds);
    if (!pattern) {
        const bool unclear = std::all_of(kinds.begin(), kinds.end(), [](const Kind &kind) {
            return kind.finding == Finding::Unclear;
        });
        survey.obstacle = unclear ? Obstacle::Unclear : Obstacle::NotDualIso;
        return;
    }
    std::vector<Frame> measured;
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const bool hasPattern =
            kinds[i].finding == Finding::DualIso && kinds[i].pattern == *pattern;
        if (hasPattern || kinds[i].finding == Finding::Unclear)
            measured.push_back(std::move(frames[i]));
    }
    survey.model = measure(measured, *pattern);
    survey.obstacle = survey.model ? Obstacle::None : Obstacle::Unmatched;
}

} // namespace

std::string_view textOf(Obstacle obstacle)
{
    switch (obstacle) {
    case Obstacle::Unclear:
        return "too dark or too bright to tell";
    case Obstacle::NotDualIso:
        return "not dual ISO";
    case Obstacle::Unmatched:
        return "the two exposures can't be matched";
    case Obstacle::None:
        break;
    }
    return {};
}

std::optional<Survey> survey(std::span<const std::filesystem::path> paths)
{
    std::optional<Survey> found;
    std::vector<Frame> frames;
    auto begins = dng::surveyedParts(paths.size());
    begins.push_back(paths.size());
    for (std::size_t part = 0; part + 1 < begins.size(); ++part) {
        const auto index = usableFrom(paths, begins[part], begins[part + 1]);
        if (!index)
            continue;
        try {
            const dng::RawFile file(paths[*index]);
            found = found.value_or(Survey{file.format(), originOf(file), {}, Obstacle::None});
            if (file.format() == found->format)
                frames.push_back(readFrame(file));
        } catch (const raw::Error &) {
            continue; // told when its turn comes
        }
    }
    if (frames.empty())
        return std::nullopt;
    judge(*found, std::move(frames));
    return found;
}

} // namespace dualiso
