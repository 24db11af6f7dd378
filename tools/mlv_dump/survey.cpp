// SPDX-License-Identifier: MIT
#include "mlv_dump/survey.h"

#include "surveyfile/surveyreader.h"
#include "surveyfile/surveywriter.h"

#include <limits>
#include <tuple>
#include <vector>

namespace mlvdump {
namespace {

using surveyfile::SurveyError;
using surveyfile::SurveyReader;
using surveyfile::SurveyWriter;

constexpr std::string_view kind = "mlv_dump survey 1";

constexpr int highestLevel = std::numeric_limits<std::uint16_t>::max();
constexpr int mostPlaces = std::numeric_limits<std::uint16_t>::max(); // across and down

/// Values of the options that a survey depends on, in an order of their own. Files count by size
/// and time.
std::vector<double> optionValues(const Options &options)
{
    const auto &[black, white, balance, repair] =
        std::tie(options.black, options.white, options.balance, options.repair);
    std::vector<double> values{static_cast<double>(black.kind),
                               1.0 * black.level,
                               static_cast<double>(white.kind),
                               1.0 * white.level,
                               options.keepsRecordedMatrix ? 1.0 : 0.0,
                               static_cast<double>(balance.kind),
                               balance.kelvin,
                               balance.neutral[0],
                               balance.neutral[2],
                               static_cast<double>(repair.pixels),
                               repair.columns ? 1.0 : 0.0};
    for (const auto &path : {options.dark, options.flat, repair.map}) {
        std::error_code missing;
        const auto size = std::filesystem::file_size(path, missing);
        const auto time = std::filesystem::last_write_time(path, missing);
        values.push_back(missing ? 0.0 : static_cast<double>(size));
        values.push_back(missing ? 0.0 : static_cast<double>(time.time_since_epoch().count()));
    }
    return values;
}

void addIndex(SurveyWriter &writer, const mlv::RecordingIndex &index)
{
    writer.begin("recording").add(index.guid);
    for (const auto &chunk : index.chunks)
        writer.add(chunk.size).add(chunk.modified);
    writer.begin("settings");
    for (const auto &block : index.settings)
        writer.add(block.chunk).add(block.offset);
    writer.begin("frames").add(index.videoFrames.size());
    for (const auto &frame : index.videoFrames) {
        writer.begin("frame").add(frame.number).add(frame.timestamp).add(frame.chunk);
        writer.add(frame.offset).add(frame.size).add(frame.cropX).add(frame.cropY);
    }
}

mlv::RecordingIndex takeIndex(SurveyReader &reader)
{
    mlv::RecordingIndex index{};
    reader.begin("recording");
    index.guid = reader.number<std::uint64_t>();
    while (reader.hasMore()) {
        auto &mark = index.chunks.emplace_back();
        mark.size = reader.number<std::uint64_t>();
        mark.modified = reader.number<std::int64_t>();
    }
    reader.begin("settings");
    while (reader.hasMore()) {
        auto &block = index.settings.emplace_back();
        block.chunk = reader.number<std::uint16_t>();
        block.offset = reader.number<std::uint64_t>();
    }
    reader.begin("frames");
    for (auto left = reader.number<std::uint32_t>(); left > 0; --left) {
        reader.begin("frame");
        auto &frame = index.videoFrames.emplace_back();
        frame.number = reader.number<std::uint32_t>();
        frame.timestamp = reader.number<std::uint64_t>();
        frame.chunk = reader.number<std::uint16_t>();
        frame.offset = reader.number<std::uint64_t>();
        frame.size = reader.number<std::uint32_t>();
        frame.cropX = reader.number<std::uint16_t>();
        frame.cropY = reader.number<std::uint16_t>();
    }
    return index;
}

void addRepair(SurveyWriter &writer, const Repair &repair)
{
    writer.begin("repair").add(repair.format.whiteLevel).add(repair.rowStep);
    writer.begin("pixels");
    for (const auto &place : repair.pixels)
        writer.add(place.x).add(place.y);
    writer.begin("lattice");
    if (repair.lattice) {
        writer.add(repair.lattice->firstLine).add(repair.lattice->lastLine);
        for (const auto line : repair.lattice->cell)
            writer.add(line);
    }
    writer.begin("columns");
    if (repair.columns) {
        for (const auto &line : repair.columns->gains)
            for (const auto gain : line)
                writer.add(gain);
    }
}

Lattice takeLattice(SurveyReader &reader)
{
    Lattice lattice;
    lattice.firstLine = reader.number<int>(0);
    lattice.lastLine = reader.number<int>(0);
    for (auto &line : lattice.cell)
        line = reader.number<std::uint32_t>(0, (1U << unsigned{Lattice::columns}) - 1);
    return lattice;
}

ColumnGains takeGains(SurveyReader &reader)
{
    ColumnGains columns{};
    for (auto &line : columns.gains)
        for (auto &gain : line)
            gain = reader.number<double>(0.5, 2);
    return columns;
}

Repair takeRepair(SurveyReader &reader)
{
    Repair repair;
    reader.begin("repair");
    repair.format.whiteLevel = reader.number<int>(0, highestLevel);
    repair.rowStep = reader.number<int>(2, 4);
    reader.begin("pixels");
    while (reader.hasMore()) {
        const int x = reader.number<int>(0, mostPlaces);
        repair.pixels.push_back({reader.number<int>(0, mostPlaces), x});
    }
    reader.begin("lattice");
    if (reader.hasMore())
        repair.lattice = takeLattice(reader);
    reader.begin("columns");
    if (reader.hasMore())
        repair.columns = takeGains(reader);
    return repair;
}

std::optional<Neutral> takeNeutral(SurveyReader &reader)
{
    reader.begin("neutral");
    if (!reader.hasMore())
        return std::nullopt;
    Neutral neutral{};
    for (auto &light : neutral)
        light = reader.number<double>();
    if (!isUsable(neutral))
        SurveyReader::throwDamaged();
    return neutral;
}

void requireSameOptions(SurveyReader &reader, const Options &options)
{
    reader.begin("options");
    for (const auto value : optionValues(options))
        if (reader.number<double>() != value)
            throw SurveyError("The survey was made with other options");
}

} // namespace

void writeSurvey(const Survey &survey, const Options &options, const std::filesystem::path &path)
{
    SurveyWriter writer(kind);
    writer.begin("options");
    for (const auto value : optionValues(options))
        writer.add(value);
    writer.begin("selection").add(survey.selection.first).add(survey.selection.last);
    writer.add(survey.firstGood);
    writer.begin("levels").add(survey.blackLevel).add(survey.whiteLevel);
    writer.begin("neutral");
    if (survey.neutral)
        for (const auto light : *survey.neutral)
            writer.add(light);
    addRepair(writer, survey.repair);
    addIndex(writer, survey.recording);
    writer.write(path);
}

Survey readSurvey(const Options &options)
{
    SurveyReader reader(options.knownSurvey, kind);
    requireSameOptions(reader, options);
    Survey survey;
    reader.begin("selection");
    survey.selection.first = reader.number<std::uint64_t>();
    survey.selection.last = reader.number<std::uint64_t>();
    survey.firstGood = reader.number<std::uint32_t>();
    reader.begin("levels");
    survey.blackLevel = reader.number<int>(0, highestLevel - 1);
    survey.whiteLevel = reader.number<int>(survey.blackLevel + 1, highestLevel);
    survey.neutral = takeNeutral(reader);
    survey.repair = takeRepair(reader);
    survey.recording = takeIndex(reader);
    reader.end();
    return survey;
}

} // namespace mlvdump
