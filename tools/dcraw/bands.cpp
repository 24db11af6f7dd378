// SPDX-License-Identifier: MIT
#include "dcraw/bands.h"

#include <algorithm>

namespace dcraw {
namespace {

// A band begins with some rows that its neighbour has made too, so that it shouldn't be low.
constexpr int mostRows = 128;
constexpr int bandsPerThread = 4;

} // namespace

Bands::Bands(int height, int leastRows, unsigned threads)
    : m_height(height)
    , m_rows(
          std::clamp(height / (static_cast<int>(threads) * bandsPerThread) / groupRows * groupRows,
                     leastRows, mostRows))
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
