// SPDX-License-Identifier: MIT
#include "mlv_dump/run.h"

#include "mlv_dump/average.h"
#include "mlv_dump/framelevels.h"
#include "mlv_dump/frameplan.h"
#include "mlv_dump/framerun.h"
#include "mlv_dump/knownmatrix.h"
#include "mlv_dump/pixelmap.h"
#include "mlv_dump/recordingwriter.h"
#include "mlv_dump/report.h"
#include "mlv_dump/sourcefiles.h"
#include "mlv_dump/survey.h"
#include "mlv_dump/verification.h"
#include "raw/error.h"
#include "surveyfile/surveyerror.h"

#include <new>
#include <optional>

namespace mlvdump {
namespace {

/// What the frames of a recording would be tagged with otherwise than it was recorded, sentences.
std::vector<std::string> tagRemarks(const Options &options, const mlv::Recording &recording)
{
    auto remarks = frameLevels(recording, mlv::FrameDecoder(recording).format(), options.black,
                               options.white, options.threadCount())
                       .remarks;
    if (const auto known = knownMatrix(recording); known && !options.keepsRecordedMatrix)
        remarks.push_back(known->remark());
    return remarks;
}

/// Prints what is wrong with the recording. Answers whether something is lost.
bool printFindings(const Options &options, const mlv::Recording &recording, Output &output)
{
    auto findings = verify(recording, options.threadCount(), [&output](auto done, auto total) {
        output.line("Checked " + std::to_string(done) + " of " + std::to_string(total) + " bytes");
        output.flush();
    });
    for (const auto &loss : findings.losses)
        output.loss(loss);
    try {
        const auto tags = tagRemarks(options, recording);
        findings.remarks.insert(findings.remarks.end(), tags.begin(), tags.end());
    } catch (const raw::ReadError &) {
        findings.remarks.push_back("what the disk can't read is not judged");
    }
    for (const auto &remark : findings.remarks)
        output.note(remark);
    return !findings.losses.empty();
}

/// Makes a recording, which keeps the levels of the one that it is made of.
class RecordingRun
{
public:
    RecordingRun(const Options &options, const mlv::Recording &recording, Output &output)
        : m_options(options)
        , m_recording(recording)
        , m_output(output)
        , m_decoder(recording)
        , m_calibration(options.dark, options.flat, m_decoder.format())
    {
        if (m_calibration.flat())
            output.line(m_calibration.flat()->description());
        output.flush();
        SourceFiles(recording, options.references()).requireOther(options.output);
    }

    std::size_t writeAverage()
    {
        const auto average =
            averageFrames(m_recording, m_calibration, m_options.threadCount(), m_output);
        RecordingWriter writer(m_recording, m_options.output, 1);
        writer.addFrame(0, m_recording.videoFrames().back().timestamp, average.samples);
        writer.commit();
        return average.frames;
    }

    std::size_t rewrite()
    {
        const auto plan = planFrames(m_recording.videoFrames(), m_options.range);
        const auto &frames = plan.frames;
        if (frames.empty())
            throw raw::Error("has none of the frames that are asked for");
        for (const auto &remark : plan.remarks)
            m_output.note(remark);
        m_output.flush();
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
    const Options &m_options;
    const mlv::Recording &m_recording;
    Output &m_output;
    mlv::FrameDecoder m_decoder;
    Calibration m_calibration;
};

/// Throws raw::Error when no run could read frames; a report says so too.
void requireReadableFrames(const mlv::Recording &recording)
{
    static_cast<void>(mlv::FrameDecoder(recording));
    if (recording.videoFrames().empty())
        throw raw::Error("holds no whole frame");
}

std::size_t runMode(const Options &options, const mlv::Recording &recording, Output &output)
{
    requireReadableFrames(recording);
    switch (options.mode) {
    case Mode::Frames:
        return runFrames(options, recording, std::nullopt, output);
    case Mode::Average:
        return RecordingRun(options, recording, output).writeAverage();
    case Mode::Rewrite:
        return RecordingRun(options, recording, output).rewrite();
    case Mode::Survey:
        for (const auto &remark : tagRemarks(options, recording))
            output.note(remark);
        return recording.videoFrames().size();
    default:
        return recording.videoFrames().size();
    }
}

struct Failure
{
    std::string error;
    bool isRecordings; ///< another recording would not fail with it
};

template <typename Work>
std::optional<Failure> failureOf(Work work)
{
    try {
        work();
        return std::nullopt;
    } catch (const raw::Error &error) {
        return Failure{std::string("The recording ") + error.what(), true};
    } catch (const RefusedOutput &error) {
        return Failure{error.what(), true};
    } catch (const output::WriteError &error) {
        return Failure{"A file can't be written: " + error.code().message(), false};
    } catch (const ShapeMismatch &error) {
        return Failure{error.what(), true};
    } catch (const CalibrationError &error) {
        return Failure{error.what(), false};
    } catch (const ForeignMap &error) {
        return Failure{error.what(), true};
    } catch (const MapError &error) {
        return Failure{error.what(), false};
    } catch (const surveyfile::SurveyError &error) {
        return Failure{error.what(), false};
    } catch (const mlv::ForeignIndex &error) {
        return Failure{std::string("The survey ") + error.what(), false};
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
        auto known =
            options.knownSurvey.empty() ? std::nullopt : std::optional(readSurvey(options));
        const auto recording = known ? mlv::Recording(options.input, std::move(known->recording))
                                     : mlv::Recording(options.input);
        summary.framesPerSecond = recording.framesPerSecond();
        if (options.mode == Mode::Verify) {
            requireReadableFrames(recording);
            isLossy = printFindings(options, recording, output);
            summary.frames = recording.videoFrames().size();
            return;
        }
        if (known) {
            summary.frames = runFrames(options, recording, known, output);
            return;
        }
        for (const auto *sentences : {&recording.warnings(), &recording.remarks()})
            for (const auto &sentence : *sentences)
                output.warning(sentence);
        if (options.verbose)
            printReport(recording, output);
        summary.frames = runMode(options, recording, output);
    };
    const auto failure = failureOf(work);
    if (failure && failure->isRecordings && isOneOfMany(options.mode))
        output.unusable(failure->error);
    else if (failure)
        output.error(failure->error);
    if (!failure || options.mode != Mode::Frames)
        output.finish(summary);
    if (options.mode == Mode::Verify && failure)
        return unreadable;
    return failure || isLossy ? 1 : 0;
}

} // namespace mlvdump
