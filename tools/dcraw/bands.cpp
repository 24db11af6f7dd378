// SPDX-License-Identifier: MIT
#include "dcraw/bands.h"

#include <algorithm>

namespace dcraw {
namespace {

// A band begins with some rows that its neighbour has made too: on several threads it shouldn't be
// low. On one thread a band goes on where the one before has ended, and low ones wait in less
// memory.
constexpr int highestBand = 128;
constexpr int bandsPerThread = 4;

int bandRows(int height, int leastRows, unsigned threads)
{
    if (threads == 1)
        return leastRows;
    const int rows = height / (static_cast<int>(threads) * bandsPerThread);
    return std::clamp(rows / groupRows * groupRows, leastRows, highestBand);
}

} // namespace

Bands::Bands(int height, int leastRows, unsigned threads)
    : m_height(height)
    , m_rows(bandRows(height, leastRows, threads))
    , m_states(static_cast<std::size_t>((height + m_rows - 1) / m_rows))
{
}

std::optional<int> Bands::take()
{
    const std::lock_guard lock(m_mutex);
    if (m_next == m_states.size())
        return std::nullopt;
    return static_cast<int>(m_next++);
}

bool Bands::isKnown(std::size_t band) const
{
    return band >= m_states.size() || m_states[band].isKnown;
}

std::vector<Bands::Complete> Bands::setKnown(int band, std::vector<RowGroup> waiting)
{
    const std::lock_guard lock(m_mutex);
    const auto index = static_cast<std::size_t>(band);
    m_states[index].isKnown = true;
    m_states[index].waiting = std::move(waiting);
    std::vector<Complete> complete;
    for (std::size_t i = index - std::min<std::size_t>(index, 1); i <= index + 1; ++i) {
        if (i >= m_states.size() || m_states[i].isTaken)
            continue;
        if (isKnown(i) && isKnown(i - 1) && isKnown(i + 1)) { // -1 is beyond the last, too
            m_states[i].isTaken = true;
            complete.push_back({static_cast<int>(i), std::move(m_states[i].waiting)});
        }
    }
    return complete;
}

} // namespace dcraw
