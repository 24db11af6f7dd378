// SPDX-License-Identifier: MIT
#include "mlv_dump/pixelmap.h"

#include "mlv_dump/text.h"
#include "raw/error.h"
#include "raw/file.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>

namespace mlvdump {
namespace {

constexpr std::uint64_t largestFile = 64U << 20U; // bytes: more than any sensor has pixels to list
constexpr std::string_view blanks = " \t\r";
constexpr std::string_view cameraMark = "#FPM";

/// Takes a number off the text, behind blanks.
template <typename Number>
std::optional<Number> takeNumber(std::string_view &text, int base = 10)
{
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (error != std::errc())
        return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return number;
}

std::optional<Place> placeOf(std::string_view line)
{
    const auto x = takeNumber<std::uint16_t>(line);
    const auto y = takeNumber<std::uint16_t>(line);
    const bool isPlace = x && y && (line.empty() || blanks.find(line.front()) != blanks.npos);
    return isPlace ? std::optional(Place{*y, *x}) : std::nullopt;
}

void requireSameCamera(std::string_view firstLine, const mlv::Recording &recording)
{
    if (!firstLine.starts_with(cameraMark))
        return;
    firstLine.remove_prefix(cameraMark.size());
    const auto code = takeNumber<std::uint32_t>(firstLine, 16);
    const auto &identity = recording.identity();
    if (code && identity && *code != identity->model)
        throw ForeignMap("The pixel map is that of another camera");
}

std::vector<Place> parse(std::string_view text, const mlv::Recording &recording)
{
    std::vector<Place> places;
    bool isFirst = true;
    while (!text.empty()) {
        const auto end = std::min(text.find('\n'), text.size());
        const auto line = text.substr(0, end);
        if (isFirst) {
            requireSameCamera(line, recording);
            isFirst = false;
        }
        if (const auto place = placeOf(line))
            places.push_back(*place);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return places;
}

} // namespace

std::vector<Place> readPixelMap(const std::filesystem::path &path, const mlv::Recording &recording)
{
    try {
        auto places = parse(raw::readText(path, largestFile), recording);
        if (places.empty())
            throw raw::Error("names no pixel");
        std::sort(places.begin(), places.end());
        places.erase(std::unique(places.begin(), places.end()), places.end());
        return places;
    } catch (const raw::Error &error) {
        throw MapError(std::string("The pixel map ") + error.what());
    }
}

std::optional<std::filesystem::path> pixelMapBeside(const std::filesystem::path &recordingPath,
                                                    const mlv::Recording &recording)
{
    std::vector<std::filesystem::path> candidates;
    for (const auto *extension : {".fpm", ".bpm"}) {
        candidates.push_back(recordingPath);
        candidates.back().replace_extension(extension);
    }
    const auto &rawInfo = recording.rawInfo();
    if (rawInfo && recording.identity()) {
        for (const int lines : {0, 1, -1, 2, -2}) {
            candidates.push_back(recordingPath.parent_path() /
                                 format("%08x_%dx%lld.fpm", recording.identity()->model,
                                        rawInfo->bufferWidth,
                                        static_cast<long long>(rawInfo->bufferHeight) + lines));
        }
    }
    std::error_code missing;
    const auto found = std::ranges::find_if(candidates, [&missing](const auto &path) {
        return std::filesystem::is_regular_file(path, missing);
    });
    return found == candidates.end() ? std::nullopt : std::optional(*found);
}

} // namespace mlvdump
