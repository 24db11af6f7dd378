// SPDX-License-Identifier: MIT
#include "mlv_dump/run.h"

#include "mlv/error.h"
#include "mlv_dump/average.h"
#include "mlv_dump/extraction.h"
#include "mlv_dump/framelevels.h"
#include "mlv_dump/knownmatrix.h"
#include "mlv_dump/levelsurvey.h"
#include "mlv_dump/pixelmap.h"
#include "mlv_dump/recordingwriter.h"
#include "mlv_dump/repairsurvey.h"
#include "mlv_dump/report.h"
#include "mlv_dump/sound.h"
#include "mlv_dump/verification.h"

#include <algorithm>
#include <new>
#include <optional>
#include <thread>

namespace mlvdump {
namespace {

unsigned threadCount(const Options &options)
{
    return options.threads > 0 ? options.threads
                               : std::max(1U, std::thread::hardware_concurrency());
}

std::vector<std::filesystem::path> references(const Options &options)
{
    std::vector<std::filesystem::path> paths;
    for (const auto &path : {options.dark, options.flat, options.repair.map}) {
        if (!path.empty()) {
            paths.push_back(path);
        }
    }
    return paths;
}

std::string remarkOn(const KnownMatrix &known)
{
    return "the recorded colour matrix is not that of an " + known.camera +
           ", which is taken instead";
}

/// What the frames of a recording would be tagged with otherwise than it was recorded, sentences.
std::vector<std::string> tagRemarks(const Options &options, const mlv::Recording &recording)
{
    auto remarks = frameLevels(recording, mlv::FrameDecoder(recording).format(), options.black,
                               options.white, threadCount(options))
                       .remarks;
    if (const auto known = knownMatrix(recording); known && !options.keepsRecordedMatrix) {
        remarks.push_back(remarkOn(*known));
    }
    return remarks;
}

/// Prints what is wrong with the recording. Answers whether something is lost.
bool printFindings(const Options &options, const mlv::Recording &recording, Output &output)
{
    auto findings = verify(recording, threadCount(options), [&output](auto done, auto total) {
        output.line("Checked " + std::to_string(done) + " of " + std::to_string(total) + " bytes");
        output.flush();
    });
    for (const auto &loss : findings.losses) {
        output.loss(loss);
    }
    try {
        const auto tags = tagRemarks(options, recording);
        findings.remarks.insert(findings.remarks.end(), tags.begin(), tags.end());
    } catch (const mlv::ReadError &) {
        findings.remarks.push_back("what the disk can't read is not judged");
    }
    for (const auto &remark : findings.remarks) {
        output.note(remark);
    }
    return !findings.losses.empty();
}

/// The stages that need frame data.
class FrameRun
{
public:
    FrameRun(const Options &options, const mlv::Recording &recording, Output &output)
        : m_options(options)
        , m_recording(recording)
        , m_output(output)
        , m_decoder(recording)
        , m_sources(recording, references(options))
        , m_levels(levels())
        , m_calibration(options.dark, options.flat, m_levels.format)
    {
        for (const auto &remark : m_levels.remarks) {
            output.note(remark);
        }
        if (m_calibration.flat()) {
            output.line(m_calibration.flat()->description());
        }
        output.flush();
    }

    std::size_t writeFrames()
    {
        auto plan = framePlan();
        // The sound comes first, so that it is there when the frames are.
        auto soundPath = m_options.output;
        soundPath += ".wav";
        const std::string reelName = m_options.input.stem().string();
        const auto slate =
            m_options.cinemaDng ? std::optional(slateOf(m_recording, reelName)) : std::nullopt;
        writeSound(m_recording, pictureTime(plan), slate, m_sources, soundPath, m_output);

        const auto colours = matrix();
        const FrameTags tags(m_recording, m_levels.format, colours, reelName,
                             {neutral(colours), m_options.exposure, slate});
        const Repair repair = wantedRepair();
        const auto first = m_options.renumbers ? plan.frames.front().number : 0;
        const Extraction::Job job{m_recording,      m_calibration,          tags,    m_sources,
                                  m_options.output, threadCount(m_options), &repair, first};
        return Extraction(job, std::move(plan.frames), m_output).run();
    }

    std::size_t writeAverage()
    {
        m_sources.requireOther(m_options.output);
        const auto average =
            averageFrames(m_recording, m_calibration, threadCount(m_options), m_output);
        RecordingWriter writer(m_recording, m_options.output, 1);
        writer.addFrame(0, m_recording.videoFrames().back().timestamp, average.samples);
        writer.commit();
        return average.frames;
    }

    std::size_t rewrite()
    {
        m_sources.requireOther(m_options.output);
        const auto frames = framePlan().frames;
        RecordingWriter writer(m_recording, m_options.output,
                               static_cast<std::uint32_t>(frames.size()));
        for (const auto &frame : frames) {
            const auto samples = m_decoder.decode(*frame.block);
            m_calibration.apply(samples);
            writer.addFrame(frame.number - frames.front().number, frame.block->timestamp, samples);
        }
        writer.commit();
        return frames.size();
    }

private:
    /// Recordings that are written keep the levels that they were recorded with.
    [[nodiscard]] FrameLevels levels() const
    {
        if (m_options.mode != Mode::Frames) {
            return {m_decoder.format(), {}};
        }
        return frameLevels(m_recording, m_decoder.format(), m_options.black, m_options.white,
                           threadCount(m_options));
    }

    Repair wantedRepair()
    {
        auto found = findRepair(m_recording, m_options.input, m_options.repair, sensorFormat(),
                                m_calibration, threadCount(m_options));
        for (const auto &remark : found.remarks) {
            m_output.note(remark);
        }
        m_output.flush();
        return std::move(found.repair);
    }

    /// The white that is chosen for all frames.
    std::optional<Neutral> neutral(const ColourMatrix &matrix)
    {
        const auto balance = frameBalance(m_recording, m_options.balance, m_calibration,
                                          sensorFormat(), matrix, threadCount(m_options));
        for (const auto &remark : balance.remarks) {
            m_output.note(remark);
        }
        return balance.neutral;
    }

    /// Columns are evened out, and white is looked for, up to the level at which the sensor is
    /// full, whatever frames are tagged with.
    [[nodiscard]] mlv::FrameFormat sensorFormat() const
    {
        auto format = m_levels.format;
        const bool looksAtFrames =
            m_options.repair.columns || m_options.balance.kind == BalanceChoice::Kind::Auto;
        if (looksAtFrames && m_options.white.kind != LevelChoice::Kind::Auto) {
            const auto survey = surveyLevels(m_recording, threadCount(m_options));
            if (survey && survey->clip && *survey->clip > format.blackLevel) {
                format.whiteLevel = std::min(format.whiteLevel, *survey->clip);
            }
        }
        return format;
    }

    ColourMatrix matrix()
    {
        const auto known = m_options.keepsRecordedMatrix ? std::nullopt : knownMatrix(m_recording);
        if (!known) {
            return colourMatrix(*m_recording.rawInfo());
        }
        m_output.note(remarkOn(*known));
        return known->matrix;
    }

    FramePlan framePlan()
    {
        auto plan = planFrames(m_recording.videoFrames(), m_options.range);
        if (plan.frames.empty()) {
            throw mlv::Error("has none of the frames that are asked for");
        }
        for (const auto &remark : plan.remarks) {
            m_output.note(remark);
        }
        m_output.flush();
        return plan;
    }

    [[nodiscard]] PictureTime pictureTime(const FramePlan &plan) const
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
};

/// Throws mlv::Error when no run could read frames; a report says so too.
void requireReadableFrames(const mlv::Recording &recording)
{
    static_cast<void>(mlv::FrameDecoder(recording));
    if (recording.videoFrames().empty()) {
        throw mlv::Error("holds no whole frame");
    }
}

std::size_t runMode(const Options &options, const mlv::Recording &recording, Output &output)
{
    requireReadableFrames(recording);
    switch (options.mode) {
    case Mode::Frames:
        return FrameRun(options, recording, output).writeFrames();
    case Mode::Average:
        return FrameRun(options, recording, output).writeAverage();
    case Mode::Rewrite:
        return FrameRun(options, recording, output).rewrite();
    case Mode::Survey:
        for (const auto &remark : tagRemarks(options, recording)) {
            output.note(remark);
        }
        return recording.videoFrames().size();
    default:
        return recording.videoFrames().size();
    }
}

struct Failure
{
    std::string reason;
    bool isRecordings; ///< another recording would not fail with it
};

template <typename Work>
std::optional<Failure> failureOf(Work work)
{
    try {
        work();
        return std::nullopt;
    } catch (const mlv::Error &error) {
        return Failure{std::string("The recording ") + error.what(), true};
    } catch (const RefusedOutput &error) {
        return Failure{error.what(), true};
    } catch (const output::WriteError &error) {
        return Failure{"A file cannot be written: " + error.code().message(), false};
    } catch (const ShapeMismatch &error) {
        return Failure{error.what(), true};
    } catch (const CalibrationError &error) {
        return Failure{error.what(), false};
    } catch (const ForeignMap &error) {
        return Failure{error.what(), true};
    } catch (const MapError &error) {
        return Failure{error.what(), false};
    } catch (const std::bad_alloc &) {
        return Failure{"There is not enough memory for the recording", true};
    } catch (const std::system_error &error) {
        return Failure{"The system refuses: " + error.code().message(), false};
    }
}

/// The status of a verification that could not be begun.
constexpr int unreadable = 2;

/// Most runs are one of many: their reader goes on with the next recording. A run that makes one
/// calibrated recording has no next one.
bool isOneOfMany(Mode mode)
{
    return mode != Mode::Average && mode != Mode::Rewrite;
}

} // namespace

int run(const Options &options, Output &output)
{
    Summary summary;
    bool isLossy = false;
    const auto work = [&] {
        const mlv::Recording recording(options.input);
        summary.framesPerSecond = recording.framesPerSecond();
        if (options.mode == Mode::Verify) {
            requireReadableFrames(recording);
            isLossy = printFindings(options, recording, output);
            summary.frames = recording.videoFrames().size();
            return;
        }
        for (const auto *sentences : {&recording.warnings(), &recording.remarks()}) {
            for (const auto &sentence : *sentences) {
                output.warning(sentence);
            }
        }
        if (options.verbose) {
            printReport(recording, output);
        }
        summary.frames = runMode(options, recording, output);
    };
    const auto failure = failureOf(work);
    if (failure && failure->isRecordings && isOneOfMany(options.mode)) {
        output.unusable(failure->reason);
    } else if (failure) {
        output.error(failure->reason);
    }
    if (!failure || options.mode != Mode::Frames) {
        output.finish(summary);
    }
    if (options.mode == Mode::Verify && failure) {
        return unreadable;
    }
    return failure || isLossy ? 1 : 0;
}

} // namespace mlvdump
