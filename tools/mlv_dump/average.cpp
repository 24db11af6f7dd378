// SPDX-License-Identifier: MIT
#include "mlv_dump/average.h"

#include "mlv/error.h"
#include "mlv/framedecoder.h"
#include "mlv_dump/text.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>

namespace mlvdump {
namespace {

class Averaging
{
public:
    Averaging(const mlv::Recording &recording, const Calibration &calibration, Output &output)
        : m_recording(recording)
        , m_calibration(calibration)
        , m_output(output)
    {
    }

    Average run(unsigned threads)
    {
        {
            const auto count = std::min<std::size_t>(threads, m_recording.videoFrames().size());
            std::vector<std::jthread> workers;
            for (std::size_t i = 0; i < count; ++i) {
                workers.emplace_back([this] { work(); });
            }
        }
        if (m_failure) {
            std::rethrow_exception(m_failure);
        }
        if (m_damaged > 0) {
            m_output.warning(format("%zu damaged frames are left out of the average", m_damaged));
        }
        if (m_added == 0) {
            throw mlv::Error("holds no frame that can be averaged");
        }
        return {mean(), m_added};
    }

private:
    void work()
    {
        try {
            const auto &frames = m_recording.videoFrames();
            mlv::FrameDecoder decoder(m_recording);
            for (std::size_t i = m_next++; i < frames.size(); i = m_next++) {
                add(decoder, frames[i]);
            }
        } catch (...) {
            const std::lock_guard lock(m_mutex);
            m_failure = std::current_exception();
            m_next = m_recording.videoFrames().size();
        }
    }

    void add(mlv::FrameDecoder &decoder, const mlv::DataBlock &block)
    {
        std::span<std::uint16_t> samples;
        try {
            samples = decoder.decode(block);
            m_calibration.apply(samples);
        } catch (const mlv::ReadError &) {
            throw;
        } catch (const mlv::Error &) {
            const std::lock_guard lock(m_mutex);
            ++m_damaged;
            return;
        }
        const std::lock_guard lock(m_mutex);
        m_sums.resize(samples.size());
        std::transform(samples.begin(), samples.end(), m_sums.begin(), m_sums.begin(),
                       [](std::uint16_t sample, std::uint64_t sum) { return sum + sample; });
        ++m_added;
        m_output.line(
            format("Averaged %zu of %zu frames", m_added, m_recording.videoFrames().size()));
        m_output.flush();
    }

    std::vector<std::uint16_t> mean() const
    {
        std::vector<std::uint16_t> samples(m_sums.size());
        std::transform(m_sums.begin(), m_sums.end(), samples.begin(),
                       [frames = m_added](std::uint64_t sum) {
                           return static_cast<std::uint16_t>((sum + frames / 2) / frames);
                       });
        return samples;
    }

    const mlv::Recording &m_recording;
    const Calibration &m_calibration;
    std::atomic<std::size_t> m_next = 0;
    std::mutex m_mutex;
    Output &m_output;                  // guarded by m_mutex
    std::vector<std::uint64_t> m_sums; // guarded by m_mutex
    std::size_t m_added = 0;           // guarded by m_mutex
    std::size_t m_damaged = 0;         // guarded by m_mutex
    std::exception_ptr m_failure;      // guarded by m_mutex
};

} // namespace

Average averageFrames(const mlv::Recording &recording, const Calibration &calibration,
                      unsigned threads, Output &output)
{
    return Averaging(recording, calibration, output).run(threads);
}

} // namespace mlvdump
