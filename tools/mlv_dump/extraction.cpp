// SPDX-License-Identifier: MIT
#include "mlv_dump/extraction.h"

#include "mlv_dump/standin.h"
#include "mlv_dump/text.h"
#include "parallel/sharedwork.h"
#include "raw/error.h"

#include <algorithm>

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
    parallel::shareWork(m_frames.size(), m_job.threads, [this] {
        return [this, encoder = FrameEncoder(m_job.recording, m_job.calibration, m_job.tags,
                                             m_job.repair)](std::size_t index) mutable {
            try {
                extract(encoder, index);
            } catch (...) {
                m_turnstile.close();
                throw;
            }
        };
    });
    m_heldBack->commit();
    return m_frames.size();
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
    } catch (const raw::ReadError &) {
        throw;
    } catch (const raw::Error &) {
        damaged = true;
    }
    if (!m_turnstile.enter(index))
        return;
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
    if (index == m_heldBackIndex)
        m_heldBack.emplace(std::move(file));
    else
        file.commit();
    m_output.line(format("Frame %zu of %zu", index + 1, m_frames.size()));
    m_output.flush();
}

} // namespace mlvdump
