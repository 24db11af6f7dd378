// SPDX-License-Identifier: MIT
#include "mlv_dump/average.h"

#include "mlv_dump/parallelframes.h"
#include "mlv_dump/text.h"
#include "raw/error.h"

#include <algorithm>
#include <mutex>

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
        forEachFrame(m_recording, m_recording.videoFrames(), threads,
                     [this](auto &decoder, const auto &block) { add(decoder, block); });
        if (m_damaged > 0)
            m_output.warning(format("%zu damaged frames are left out of the average", m_damaged));
        if (m_added == 0)
            throw raw::Error("holds no frame that can be averaged");
        return {mean(), m_added};
    }

private:
    void add(mlv::FrameDecoder &decoder, const mlv::DataBlock &block)
    {
        std::span<std::uint16_t> samples;
        try {
            samples = decoder.decode(block);
            m_calibration.apply(samples);
        } catch (const raw::ReadError &) {
            throw;
        } catch (const raw::Error &) {
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
    std::mutex m_mutex;
    Output &m_output;                  // guarded by m_mutex
    std::vector<std::uint64_t> m_sums; // guarded by m_mutex
    std::size_t m_added = 0;           // guarded by m_mutex
    std::size_t m_damaged = 0;         // guarded by m_mutex
};

} // namespace

Average averageFrames(const mlv::Recording &recording, const Calibration &calibration,
                      unsigned threads, Output &output)
{
    return Averaging(recording, calibration, output).run(threads);
}

} // namespace mlvdump
