// SPDX-License-Identifier: MIT
#include "cr2hdr/survey.h"

#include "cr2hdr/framefile.h"
#include "mlv/error.h"

#include <algorithm>

namespace dualiso {
namespace {

// Enough for changes of light within a recording; all of them are in memory at once.
constexpr std::size_t mostFrames = 6;

bool isUsable(const std::filesystem::path &path)
{
    try {
        return !isBlended(dng::RawFile(path));
    } catch (const mlv::Error &) {
        return false; // told when its turn comes
    }
}

/// The first usable file at or after `index`, none from `end` on.
std::optional<std::size_t> usableFrom(std::span<const std::filesystem::path> paths,
                                      std::size_t index, std::size_t end)
{
    for (; index < end; ++index) {
        if (isUsable(paths[index])) {
            return index;
        }
    }
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

Survey judged(const dng::RawFormat &format, std::vector<Frame> frames)
{
    std::vector<Kind> kinds;
    std::transform(frames.begin(), frames.end(), std::back_inserter(kinds), kindOf);
    const auto pattern = commonPattern(kinds);
    if (!pattern) {
        const bool unclear = std::all_of(kinds.begin(), kinds.end(), [](const Kind &kind) {
            return kind.finding == Finding::Unclear;
        });
        return {format, std::nullopt, unclear ? "too dark or too bright to tell" : "not dual ISO",
                false};
    }
    std::vector<Frame> measured;
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const bool hasPattern =
            kinds[i].finding == Finding::DualIso && kinds[i].pattern == *pattern;
        if (hasPattern || kinds[i].finding == Finding::Unclear) {
            measured.push_back(std::move(frames[i]));
        }
    }
    const auto model = measure(measured, *pattern);
    if (!model) {
        return {format, std::nullopt, "the two exposures cannot be matched", true};
    }
    return {format, model, {}, false};
}

} // namespace

std::optional<Survey> survey(std::span<const std::filesystem::path> paths)
{
    std::optional<dng::RawFormat> format;
    std::vector<Frame> frames;
    const std::size_t parts = std::min(paths.size(), mostFrames);
    for (std::size_t part = 0; part < parts; ++part) {
        const auto index =
            usableFrom(paths, paths.size() * part / parts, paths.size() * (part + 1) / parts);
        if (!index) {
            continue;
        }
        try {
            const dng::RawFile file(paths[*index]);
            format = format.value_or(file.format());
            if (file.format() == *format) {
                frames.push_back(readFrame(file));
            }
        } catch (const mlv::Error &) {
            continue; // told when its turn comes
        }
    }
    if (!format || frames.empty()) {
        return std::nullopt;
    }
    return judged(*format, std::move(frames));
}

} // namespace dualiso
