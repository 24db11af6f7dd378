// SPDX-License-Identifier: MIT
#include "dcraw/texts.h"

#include "dcraw/notcovered.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace dcraw {
namespace {

constexpr std::array<std::string_view, 22> knownMakes{
    "AgfaPhoto", "Canon",   "Casio", "Epson", "Fujifilm", "Mamiya",  "Minolta", "Motorola",
    "Kodak",     "Konica",  "Leica", "Nikon", "Nokia",    "Olympus", "Ricoh",   "Pentax",
    "Phase One", "Samsung", "Sigma", "Sinar", "Sony",     "YI"};

char lower(char character)
{
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
}

bool equalIgnoringCase(char one, char other)
{
    return lower(one) == lower(other);
}

bool containsIgnoringCase(std::string_view text, std::string_view part)
{
    return std::search(text.begin(), text.end(), part.begin(), part.end(), equalIgnoringCase) !=
           text.end();
}

bool startsIgnoringCase(std::string_view text, std::string_view start)
{
    return text.size() >= start.size() &&
           std::equal(start.begin(), start.end(), text.begin(), equalIgnoringCase);
}

void removeSpacesAtEnd(std::string &text)
{
    text.erase(text.find_last_not_of(' ') + 1);
}

void requireOrdinaryCamera(const Texts &texts)
{
    for (const std::string_view start : {"K", "645", "FinePix ", "Digital Camera "})
        require(!texts.model.starts_with(start), "is from a camera with rules of its own");
    for (const std::string_view make : {"Kodak", "Leica"})
        require(texts.make != make, "is from a camera with rules of its own");
}

} // namespace

Texts normalised(Texts texts)
{
    for (const std::string *name : {&texts.make, &texts.model}) {
        require(name->find_first_not_of(' ') != std::string::npos, "names no camera");
        require(name->find('\n') == std::string::npos, "names a camera in two lines");
    }
    for (const std::string_view make : knownMakes)
        if (containsIgnoringCase(texts.make, make))
            texts.make = make;
    if (startsIgnoringCase(texts.model, "PENTAX"))
        texts.make = "Pentax";
    removeSpacesAtEnd(texts.make);
    removeSpacesAtEnd(texts.model);
    if (startsIgnoringCase(texts.model, texts.make + ' '))
        texts.model.erase(0, texts.make.size() + 1);
    requireOrdinaryCamera(texts);
    return texts;
}

std::time_t parseTime(const std::string &text)
{
    constexpr std::size_t length = 19;
    constexpr int largest = 100000; // keeps all sums far from the ends of their types
    const std::string form = text.substr(0, length);
    std::array<int, 6> parts{};
    if (std::sscanf(form.c_str(), "%d:%d:%d %d:%d:%d", &parts[0], &parts[1], &parts[2], &parts[3],
                    &parts[4], &parts[5]) != 6)
        return 0;
    require(
        std::all_of(parts.begin(), parts.end(), [](int part) { return std::abs(part) < largest; }),
        "has an extreme date");
    std::tm fields{};
    fields.tm_year = parts[0] - 1900;
    fields.tm_mon = parts[1] - 1;
    fields.tm_mday = parts[2];
    fields.tm_hour = parts[3];
    fields.tm_min = parts[4];
    fields.tm_sec = parts[5];
    const std::time_t time = ::timegm(&fields);
    if (time <= 0)
        return 0;
    require(fields.tm_year + 1900 <= 9999, "has an extreme date");
    return time;
}

std::string timeText(std::time_t time)
{
    std::tm fields{};
    ::gmtime_r(&time, &fields);
    std::array<char, 20> text{};
    std::strftime(text.data(), text.size(), "%Y:%m:%d %H:%M:%S", &fields);
    return text.data();
}

} // namespace dcraw
