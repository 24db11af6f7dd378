// SPDX-License-Identifier: MIT
#include "mlv_dump/extraction.h"

#include "mlv/error.h"
#include "mlv_dump/standin.h"
#include "mlv_dump/text.h"

#include <algorithm>
#include <thread>

namespace mlvdump {
namespace {

/// The last frame that the report counts, or the last of all when that one is not selected.
std::size_t heldBackIndex(const std::vector<PlannedFrame> &frames, std::size_t counted)
{
    const auto held = std::find_if(frames.begin(), frames.end(), [counted](const auto &frame) {
        return frame.number + std::size_t{1} == counted;
    });
    const auto index = static_cast<std::size_t>(held - frames.begin());
    return std::min(index, frames.size() - 1);
}

} // namespace

Extraction::Extraction(Job job, std::vector<PlannedFrame> frames, Output &output)
    : m_job(std::move(job))
    , m_frames(std::move(frames))
    , m_heldBackIndex(heldBackIndex(m_frames, m_job.recording.videoFrames().size()))
    , m_output(output)
{
}

std::size_t Extraction::run()
{
    {
        const auto threads = std::min<std::size_t>(m_job.threads, m_frames.size());
        std::vector<std::jthread> workers;
        for (std::size_t i = 0; i < threads; ++i) {
            workers.emplace_back([this] { work(); });
        }
    }
    if (m_failure) {
        std::rethrow_exception(m_failure);
    }
    m_heldBack->commit();
    return m_frames.size();
}

void Extraction::work()
{
    try {
        FrameEncoder encoder(m_job.recording, m_job.calibration, m_job.tags, m_job.repair);
        for (std::size_t i = m_next++; i < m_frames.size(); i = m_next++) {
            extract(encoder, i);
        }
    } catch (...) {
        fail(std::current_exception());
    }
}

void Extraction::extract(FrameEncoder &encoder, std::size_t index)
{
    const auto &frame = m_frames[index];
    auto path = m_job.prefix;
    path += format("%06llu.dng", static_cast<unsigned long long>(frame.number - m_job.firstNumber));
    m_job.sources.requireOther(path);
    output::OutputFile file(path);
    bool damaged = false;
    try {
        file.write(encoder.encode(frame));
    } catch (const mlv::ReadError &) {
        throw;
    } catch (const mlv::Error &) {
        damaged = true;
    }
    if (!m_turnstile.enter(index)) {
        return;
    }
    if (damaged) {
        m_output.warning(
            format("frame %u is damaged and replaced by the frame before it", frame.number));
        file.write(encoder.encode({frame.number, standIn()}));
    } else {
        m_lastGood = frame.block;
    }
    publish(index, file);
    m_turnstile.leave();
}

const mlv::DataBlock *Extraction::standIn()
{
    if (m_lastGood == nullptr) {
        mlv::FrameDecoder decoder(m_job.recording);
        m_lastGood = lastGood(decoder, m_job.before);
    }
    return m_lastGood;
}

void Extraction::publish(std::size_t index, output::OutputFile &file)
{
    if (index == m_heldBackIndex) {
        m_heldBack.emplace(std::move(file));
    } else {
        file.commit();
    }
    m_output.line(format("Frame %zu of %zu", index + 1, m_frames.size()));
    m_output.flush();
}

void Extraction::fail(std::exception_ptr exception)
{
    const std::lock_guard lock(m_failureMutex);
    if (!m_failure) {
        m_failure = std::move(exception);
    }
    m_turnstile.close();
}

} // namespace mlvdump
