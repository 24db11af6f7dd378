// SPDX-License-Identifier: MIT
#include "cr2hdr/survey.h"

#include "cr2hdr/framefile.h"
#include "raw/error.h"
#include "surveyfile/surveyreader.h"
#include "surveyfile/surveywriter.h"

#include <algorithm>

namespace dualiso {
namespace {

using surveyfile::SurveyReader;
using surveyfile::SurveyWriter;

constexpr std::string_view kind = "cr2hdr survey 1";

void addFormat(SurveyWriter &writer, const dng::RawFormat &format)
{
    writer.begin("format").add(format.width).add(format.height).add(format.bitsPerSample);
    writer.add(format.blackLevel).add(format.whiteLevel);
    for (const auto colour : format.colours)
        writer.add(colour);
}

dng::RawFormat takeFormat(SurveyReader &reader)
{
    dng::RawFormat format;
    reader.begin("format");
    format.width = reader.number<int>();
    format.height = reader.number<int>();
    format.bitsPerSample = reader.number<int>();
    format.blackLevel = reader.number<std::uint32_t>();
    format.whiteLevel = reader.number<std::uint32_t>();
    for (auto &colour : format.colours)
        colour = reader.number<std::uint8_t>();
    return format;
}

void addModel(SurveyWriter &writer, const Model &model)
{
    writer.begin("rows").add(model.pattern.letters());
    writer.begin("exposure").add(model.exposure.gain).add(model.exposure.offset);
    writer.add(model.clippedFrom);
    writer.begin("noise");
    for (const auto &noise : {model.lowNoise, model.highNoise})
        writer.add(noise.readVariance).add(noise.varianceOfLight);
}

RowPattern takePattern(SurveyReader &reader)
{
    RowPattern pattern;
    reader.begin("rows");
    const auto letters = reader.word();
    std::ranges::transform(letters.substr(0, pattern.high.size()), pattern.high.begin(),
                           [](char letter) { return letter == 'H'; });
    const bool isDual =
        std::ranges::count(pattern.high, true) == 2 && pattern.high[0] != pattern.high[2];
    if (letters != pattern.letters() || !isDual)
        SurveyReader::throwDamaged();
    return pattern;
}

Model takeModel(SurveyReader &reader)
{
    // Wider than what any two sensitivities of a sensor are apart, levels of 14 bits.
    constexpr float mostGain = 1 << 16;
    constexpr float mostLevel = 1 << 16;
    Model model;
    model.pattern = takePattern(reader);
    reader.begin("exposure");
    model.exposure.gain = reader.number<float>(1, mostGain);
    model.exposure.offset = reader.number<float>(-mostLevel, mostLevel);
    model.clippedFrom = reader.number<float>();
    reader.begin("noise");
    for (auto *noise : {&model.lowNoise, &model.highNoise}) {
        noise->readVariance = reader.number<float>(0);
        noise->varianceOfLight = reader.number<float>(0);
    }
    return model;
}

/// What can't be read is told when its turn comes.
void requireOrigin(const Survey &survey, std::span<const std::filesystem::path> frames)
{
    for (const auto &path : frames) {
        try {
            if (originOf(dng::RawFile(path)) != survey.origin)
                throw surveyfile::SurveyError("The survey is of another recording");
            return;
        } catch (const raw::Error &) {
            continue;
        }
    }
}

} // namespace

void writeSurvey(const Survey &survey, const std::filesystem::path &path)
{
    SurveyWriter writer(kind);
    writer.begin("recording").add(survey.origin);
    addFormat(writer, survey.format);
    writer.begin("obstacle").add(static_cast<int>(survey.obstacle));
    if (survey.model)
        addModel(writer, *survey.model);
    writer.write(path);
}

Survey readSurvey(const std::filesystem::path &path, std::span<const std::filesystem::path> frames)
{
    SurveyReader reader(path, kind);
    Survey survey;
    reader.begin("recording");
    survey.origin = reader.number<std::uint64_t>();
    survey.format = takeFormat(reader);
    reader.begin("obstacle");
    survey.obstacle = Obstacle(reader.number<int>(0, static_cast<int>(Obstacle::Unmatched)));
    if (survey.obstacle == Obstacle::None)
        survey.model = takeModel(reader);
    reader.end();
    requireOrigin(survey, frames);
    return survey;
}

} // namespace dualiso
