// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/highlightmap.h"

#include <mutex>
#include <optional>
#include <vector>

namespace dcraw {

/// How many rows are made at a time: whole blocks of the highlight map, few enough for the cache.
constexpr int groupRows = 4;

/// The runs of rows that threads take one after another. Rows of a band may have to wait until the
/// bands beside it are known.
class Bands
{
public:
    /// All but the last have at least `leastRows`, and whole groups.
    Bands(int height, int leastRows, unsigned threads);

    int mostRows() const { return m_rows; }
    int first(int band) const { return band * m_rows; }
    int end(int band) const { return std::min(first(band) + m_rows, m_height); }

    /// The next band, or nothing after the last.
    std::optional<int> take();

    /// Rows that have waited in a band, complete.
    struct Complete
    {
        int band;
        std::vector<RowGroup> groups;
    };
    /// Answers what has become complete: bands that are known and so are those beside them.
    std::vector<Complete> setKnown(int band, std::vector<RowGroup> waiting);

private:
    struct State
    {
        bool isKnown = false;
        bool isTaken = false; ///< its waiting rows are
        std::vector<RowGroup> waiting;
    };

    bool isKnown(std::size_t band) const; ///< so is what doesn't exist

    int m_height;
    int m_rows;
    std::mutex m_mutex; ///< of all below
    std::size_t m_next = 0;
    std::vector<State> m_states;
};

} // namespace dcraw
