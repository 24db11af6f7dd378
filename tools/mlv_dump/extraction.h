// SPDX-License-Identifier: MIT
#pragma once

#include "mlv_dump/frameencoder.h"
#include "mlv_dump/output.h"
#include "mlv_dump/sourcefiles.h"
#include "mlv_dump/turnstile.h"
#include "output/outputfile.h"

#include <atomic>
#include <exception>
#include <filesystem>
#include <mutex>
#include <optional>
#include <span>

namespace mlvdump {

/// Writes the planned frames as DNG files, on several threads, with the same files and the same
/// lines in the same order as on one. Each thread holds one frame at a time.
///
/// Whoever finds as many frames as the report counts takes the extraction for complete. Filled gaps
/// make more files than that, so the last one that the report counts gets its name when all others
/// have theirs.
class Extraction
{
public:
    struct Job
    {
        const mlv::Recording &recording;
        const Calibration &calibration;
        const FrameTags &tags;
        const SourceFiles &sources;
        std::filesystem::path prefix;
        unsigned threads;               ///< at least 1
        const Repair *repair = nullptr; ///< none: samples stay what the calibration makes of them
        std::uint64_t firstNumber = 0;  ///< whose file is called 000000
        /// Those that lie before the ones to be written, for what the first of these are damaged.
        std::span<const PlannedFrame> before{};
    };

    /// `frames` are at least one. What the job refers to and the output outlive the extraction.
    Extraction(Job job, std::vector<PlannedFrame> frames, Output &output);

    /// Answers the number of files written. Throws RefusedOutput, output::WriteError,
    /// mlv::ReadError, or mlv::Error when no frame stands in for a damaged one.
    std::size_t run();

private:
    void work();
    void extract(FrameEncoder &encoder, std::size_t index);
    const mlv::DataBlock *standIn();
    void publish(std::size_t index, output::OutputFile &file);
    void fail(std::exception_ptr exception);

    Job m_job;
    std::vector<PlannedFrame> m_frames;
    std::size_t m_heldBackIndex; // whose file gets its name last
    Output &m_output;            // by the thread that is in the turnstile
    Turnstile m_turnstile;
    std::atomic<std::size_t> m_next = 0;
    std::optional<output::OutputFile> m_heldBack; // by the thread in the turnstile
    const mlv::DataBlock *m_lastGood = nullptr;   // by the thread in the turnstile
    std::mutex m_failureMutex;
    std::exception_ptr m_failure; // guarded by m_failureMutex
};

} // namespace mlvdump
