// SPDX-License-Identifier: MIT
#pragma once

#include "mlv_dump/repair.h"
#include "raw/samples.h"

#include <cstdint>
#include <span>
#include <vector>

namespace mlvdump {

/// Repairs frames. It keeps what the last frame's place in the read-out made of the repair: one
/// repairer a thread.
class FrameRepairer
{
public:
    /// The repair outlives this.
    explicit FrameRepairer(const Repair &repair);

    bool leavesColumns() const { return !m_repair.columns; }

    /// Repairs a frame in place, whose corner is at `crop` in the read-out. Columns first; then
    /// each bad pixel becomes the mean of the nearest good ones of its colour, along the direction
    /// in which they change least where one changes much less. Clusters are filled from their rims.
    void apply(std::span<std::uint16_t> samples, const Place &crop);

    /// The same for the packed samples of a DNG, when no column is to be repaired: some percent of
    /// the samples aren't worth unpacking all.
    void apply(raw::PackedSamples samples, const Place &crop);

private:
    enum class State : std::uint8_t { Good, Bad, Waiting };
    /// A pixel and which of its neighbours it is made of.
    struct Step
    {
        std::uint32_t index;
        bool left, right, above, below;
    };

    void prepare(const Place &crop);
    void markBad();
    Step stepOf(std::uint32_t index) const;
    bool isGood(int x, int y) const;
    template <typename Samples>
    std::uint16_t replacement(const Samples &samples, const Step &step) const;

    const Repair &m_repair;
    mlv::FrameFormat m_format;
    Place m_crop{-1, -1};        ///< that of m_steps
    std::vector<State> m_states; ///< while steps are prepared
    std::vector<Step> m_steps;   ///< in the order in which their neighbours are ready
};

} // namespace mlvdump
