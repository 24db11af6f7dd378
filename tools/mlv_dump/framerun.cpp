// SPDX-License-Identifier: MIT
#include "mlv_dump/framerun.h"

#include "dng/surveyedparts.h"
#include "mlv_dump/extraction.h"
#include "mlv_dump/knownmatrix.h"
#include "mlv_dump/levelsurvey.h"
#include "mlv_dump/sound.h"
#include "mlv_dump/standin.h"
#include "mlv_dump/text.h"
#include "raw/error.h"
#include "surveyfile/surveyreader.h"

#include <algorithm>

namespace mlvdump {
namespace {

class FrameRun
{
public:
    FrameRun(const Options &options, const mlv::Recording &recording,
             const std::optional<Survey> &known, Output &output)
        : m_options(options)
        , m_recording(recording)
        , m_output(output)
        , m_decoder(recording)
        , m_sources(recording, options.references())
        , m_levels(known ? knownLevels(*known) : foundLevels())
        , m_calibration(options.dark, options.flat, m_levels.format)
        , m_known(knownMatrix(recording))
        , m_reelName(options.input.stem().string())
    {
        if (options.keepsRecordedMatrix)
            m_known.reset();
    }

    /// Finds out what has to be known, tells it, and writes the sound.
    Survey survey()
    {
        tell(m_levels.remarks);
        if (m_calibration.flat())
            m_output.line(m_calibration.flat()->description());
        m_output.flush();
        const auto plan = framePlan(m_options.range);
        tell(plan.remarks);
        // The sound comes first, so that it is there when the frames are.
        auto soundPath = m_options.output;
        soundPath += ".wav";
        writeSound(m_recording, pictureTime(plan), slate(), m_sources, soundPath, m_output);
        if (m_known)
            m_output.note(m_known->remark());
        Survey survey;
        survey.recording = m_recording.index();
        survey.selection = m_options.range;
        survey.blackLevel = m_levels.format.blackLevel;
        survey.whiteLevel = m_levels.format.whiteLevel;
        survey.neutral = neutral();
        survey.repair = repair();
        const auto damaged = leadingDamage(m_decoder, plan.frames);
        if (damaged > 0) {
            m_output.warning(format("the first %zu frames are damaged and replaced by the "
                                    "frame behind them",
                                    damaged));
        }
        survey.firstGood = plan.frames[damaged].number;
        return survey;
    }

    /// Writes the survey, and the frames of which cr2hdr makes its own.
    std::size_t keep(const Survey &survey)
    {
        m_sources.requireOther(m_options.writtenSurvey);
        const auto frames = selectedFrames(survey);
        if (!m_options.surveyedFrames.empty())
            write(survey, m_options.surveyedFrames, spread(frames), {});
        writeSurvey(survey, m_options, m_options.writtenSurvey);
        m_output.line(
            format("Surveyed frames %u to %u", frames.front().number, frames.back().number));
        return frames.size();
    }

    /// Writes those of the surveyed frames that are asked for.
    std::size_t write(const Survey &survey)
    {
        const auto frames = selectedFrames(survey);
        const auto first = std::ranges::find_if(
            frames, [this](auto number) { return m_options.range.contains(number); },
            &PlannedFrame::number);
        const auto end = std::find_if(first, frames.end(), [this](const auto &frame) {
            return !m_options.range.contains(frame.number);
        });
        if (first == end)
            throw raw::Error(noFrames);
        return write(survey, m_options.output, {first, end}, {frames.begin(), first});
    }

private:
    static constexpr const char *noFrames = "has none of the frames that are asked for";

    unsigned threads() const { return m_options.threadCount(); }

    FrameLevels foundLevels() const
    {
        return frameLevels(m_recording, m_decoder.format(), m_options.black, m_options.white,
                           threads());
    }

    FrameLevels knownLevels(const Survey &survey) const
    {
        auto format = m_decoder.format();
        format.whiteLevel = std::min(survey.whiteLevel, format.maxLevel());
        format.blackLevel = std::min(survey.blackLevel, format.whiteLevel - 1);
        return {format, {}};
    }

    std::optional<Slate> slate() const
    {
        return m_options.cinemaDng ? std::optional(slateOf(m_recording, m_reelName)) : std::nullopt;
    }

    void tell(const std::vector<std::string> &remarks)
    {
        for (const auto &remark : remarks)
            m_output.note(remark);
        m_output.flush();
    }

    ColourMatrix matrix() const
    {
        return m_known ? m_known->matrix : colourMatrix(*m_recording.rawInfo());
    }

    /// The white that is chosen for all frames.
    std::optional<Neutral> neutral()
    {
        const auto balance = frameBalance(m_recording, m_options.balance, m_calibration,
                                          sensorFormat(), matrix(), threads());
        tell(balance.remarks);
        return balance.neutral;
    }

    Repair repair()
    {
        auto found = findRepair(m_recording, m_options.input, m_options.repair, sensorFormat(),
                                m_calibration, threads());
        tell(found.remarks);
        return std::move(found.repair);
    }

    /// Columns are evened out, and white is looked for, up to the level at which the sensor is
    /// full, whatever frames are tagged with.
    mlv::FrameFormat sensorFormat() const
    {
        auto format = m_levels.format;
        const bool looksAtFrames =
            m_options.repair.columns || m_options.balance.kind == BalanceChoice::Kind::Auto;
        if (looksAtFrames && m_options.white.kind != LevelChoice::Kind::Auto) {
            const auto survey = surveyLevels(m_recording, threads());
            if (survey && survey->clip && *survey->clip > format.blackLevel)
                format.whiteLevel = std::min(format.whiteLevel, *survey->clip);
        }
        return format;
    }

    FramePlan framePlan(const FrameRange &range) const
    {
        auto plan = planFrames(m_recording.videoFrames(), range);
        if (plan.frames.empty())
            throw raw::Error(noFrames);
        return plan;
    }

    /// All frames that the survey is for; where the first are damaged, with what stands in.
    std::vector<PlannedFrame> selectedFrames(const Survey &survey) const
    {
        auto frames = framePlan(survey.selection).frames;
        const auto good = std::ranges::find(frames, survey.firstGood, &PlannedFrame::number);
        if (good == frames.end())
            surveyfile::SurveyReader::throwDamaged();
        std::for_each(frames.begin(), good, [good](auto &frame) { frame.block = good->block; });
        return frames;
    }

    /// Those of which cr2hdr makes its survey, as they are written.
    std::vector<PlannedFrame> spread(const std::vector<PlannedFrame> &frames)
    {
        std::vector<PlannedFrame> chosen;
        for (const auto index : dng::surveyedParts(frames.size())) {
            const auto before = std::span(frames).first(index + 1);
            chosen.push_back({frames[index].number, lastGood(m_decoder, before)});
        }
        return chosen;
    }

    std::size_t write(const Survey &survey, const std::filesystem::path &prefix,
                      std::vector<PlannedFrame> frames, std::span<const PlannedFrame> before)
    {
        const FrameTags tags(m_recording, m_levels.format, matrix(), m_reelName,
                             {survey.neutral, m_options.exposure, slate()});
        auto repair = survey.repair;
        repair.format = m_levels.format;
        repair.format.whiteLevel =
            std::clamp(survey.repair.format.whiteLevel, repair.format.blackLevel + 1,
                       repair.format.maxLevel());
        const auto first = m_options.renumbers ? survey.selection.first : 0;
        const Extraction::Job job{m_recording, m_calibration, tags,  m_sources, prefix,
                                  threads(),   &repair,       first, before};
        return Extraction(job, std::move(frames), m_output).run();
    }

    PictureTime pictureTime(const FramePlan &plan) const
    {
        const double rate = m_recording.framesPerSecond();
        const auto seconds = [rate](std::size_t frames) {
            return rate > 0 ? static_cast<double>(frames) / rate : 0;
        };
        constexpr double aDay = 86400;
        const auto behind =
            static_cast<std::uint64_t>(1e6 * std::min(seconds(plan.startsBehind), aDay));
        return {plan.frames.front().block->timestamp + behind, seconds(plan.frames.size()),
                !plan.reachesEnd, plan.frames.front().number, plan.frames.size()};
    }

    const Options &m_options;
    const mlv::Recording &m_recording;
    Output &m_output;
    mlv::FrameDecoder m_decoder;
    SourceFiles m_sources;
    FrameLevels m_levels;
    Calibration m_calibration;
    std::optional<KnownMatrix> m_known; ///< taken instead of the recorded one
    std::string m_reelName;
};

} // namespace

std::size_t runFrames(const Options &options, const mlv::Recording &recording,
                      const std::optional<Survey> &known, Output &output)
{
    FrameRun run(options, recording, known, output);
    if (known)
        return run.write(*known);
    const auto survey = run.survey();
    return options.writtenSurvey.empty() ? run.write(survey) : run.keep(survey);
}

} // namespace mlvdump
