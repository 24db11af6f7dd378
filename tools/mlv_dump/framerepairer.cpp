// SPDX-License-Identifier: MIT
#include "mlv_dump/framerepairer.h"

#include <algorithm>
#include <cstdlib>

namespace mlvdump {
namespace {

constexpr int columnStep = 2; // to the next sample of the same colour

} // namespace

FrameRepairer::FrameRepairer(const Repair &repair)
    : m_repair(repair)
    , m_format(repair.format)
{
}

void FrameRepairer::apply(std::span<std::uint16_t> samples, const Place &crop)
{
    if (m_repair.columns)
        m_repair.columns->evenOut(samples, m_format, crop.x, crop.y);
    if (crop != m_crop)
        prepare(crop);
    for (const auto &step : m_steps)
        samples[step.index] = replacement(samples, step);
}

void FrameRepairer::apply(raw::PackedSamples samples, const Place &crop)
{
    if (crop != m_crop)
        prepare(crop);
    for (const auto &step : m_steps)
        samples.set(step.index, replacement(samples, step));
}

bool FrameRepairer::isGood(int x, int y) const
{
    return x >= 0 && x < m_format.width && y >= 0 && y < m_format.height &&
           m_states[static_cast<std::size_t>(y) * static_cast<std::size_t>(m_format.width) +
                    static_cast<std::size_t>(x)] == State::Good;
}

FrameRepairer::Step FrameRepairer::stepOf(std::uint32_t index) const
{
    const int x = static_cast<int>(index % static_cast<std::uint32_t>(m_format.width));
    const int y = static_cast<int>(index / static_cast<std::uint32_t>(m_format.width));
    const int rowStep = m_repair.rowStep;
    return {index, isGood(x - columnStep, y), isGood(x + columnStep, y), isGood(x, y - rowStep),
            isGood(x, y + rowStep)};
}

void FrameRepairer::markBad()
{
    const auto mark = [this](int x, int y) {
        if (x >= 0 && x < m_format.width && y >= 0 && y < m_format.height)
            m_states[static_cast<std::size_t>(y) * static_cast<std::size_t>(m_format.width) +
                     static_cast<std::size_t>(x)] = State::Bad;
    };
    m_states.assign(m_format.sampleCount(), State::Good);
    for (const auto &place : m_repair.pixels)
        mark(place.x - m_crop.x, place.y - m_crop.y);
    for (int y = 0; m_repair.lattice && y < m_format.height; ++y) {
        for (int x = 0; x < m_format.width; ++x)
            if (m_repair.lattice->has(x + m_crop.x, y + m_crop.y))
                mark(x, y);
    }
}

/// Goes from pixels with good neighbours to those that have none until these are repaired. A colour
/// that is bad everywhere stays as it is.
void FrameRepairer::prepare(const Place &crop)
{
    m_crop = crop;
    m_steps.clear();
    markBad();
    std::vector<std::uint32_t> ready;
    const auto collect = [&](std::uint32_t index) {
        const auto step = stepOf(index);
        if (m_states[index] == State::Bad &&
            (step.left || step.right || step.above || step.below)) {
            m_states[index] = State::Waiting;
            ready.push_back(index);
        }
    };
    for (std::uint32_t index = 0; index < m_states.size(); ++index)
        if (m_states[index] == State::Bad)
            collect(index);
    while (!ready.empty()) {
        // All of a ring are made of what lies about it, not of each other.
        std::vector<std::uint32_t> ring;
        ring.swap(ready);
        for (const auto index : ring)
            m_steps.push_back(stepOf(index));
        for (const auto index : ring)
            m_states[index] = State::Good;
        for (const auto index : ring) {
            const auto width = static_cast<std::uint32_t>(m_format.width);
            const auto rows = static_cast<std::uint32_t>(m_repair.rowStep) * width;
            const auto x = index % width;
            if (x >= columnStep)
                collect(index - columnStep);
            if (x + columnStep < width)
                collect(index + columnStep);
            if (index >= rows)
                collect(index - rows);
            if (index + rows < m_states.size())
                collect(index + rows);
        }
    }
    m_states.clear();
}

template <typename Samples>
std::uint16_t FrameRepairer::replacement(const Samples &samples, const Step &step) const
{
    const auto rows =
        static_cast<std::size_t>(m_repair.rowStep) * static_cast<std::size_t>(m_format.width);
    const int left = step.left ? samples[step.index - columnStep] : 0;
    const int right = step.right ? samples[step.index + columnStep] : 0;
    const int above = step.above ? samples[step.index - rows] : 0;
    const int below = step.below ? samples[step.index + rows] : 0;
    bool across = step.left || step.right;
    bool down = step.above || step.below;
    if (step.left && step.right && step.above && step.below) {
        // Differences of this size are noise.
        const int light = std::max(0, (left + right + above + below) / 4 - m_format.blackLevel);
        const int noise = (light >> 6) + (m_format.maxLevel() >> 10);
        const int changeAcross = std::abs(left - right);
        const int changeDown = std::abs(above - below);
        across = changeAcross <= 2 * changeDown + noise;
        down = changeDown <= 2 * changeAcross + noise;
    } else if (across && down) {
        // A pair on both sides says more than one neighbour.
        across = (step.left && step.right) || !(step.above && step.below);
        down = (step.above && step.below) || !(step.left && step.right);
    }
    int sum = 0;
    int count = 0;
    if (across) {
        sum += left + right;
        count += (step.left ? 1 : 0) + (step.right ? 1 : 0);
    }
    if (down) {
        sum += above + below;
        count += (step.above ? 1 : 0) + (step.below ? 1 : 0);
    }
    return count == 0 ? samples[step.index] : static_cast<std::uint16_t>((sum + count / 2) / count);
}

} // namespace mlvdump
