// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <vector>

namespace mlv {

/// A setting of the camera that may change while it records.
template <typename Layout>
class Timeline
{
public:
    struct Entry
    {
        std::uint64_t timestamp;
        Layout value;
    };

    /// Notes a setting, in any order of time. A recording with more changes than anybody's hands
    /// can make is forged; those beyond are not kept. Answers whether this one is.
    bool add(std::uint64_t timestamp, const Layout &value)
    {
        constexpr std::size_t maxChanges = 65536;
        if (m_entries.size() == maxChanges)
            return false;
        m_entries.push_back({timestamp, value});
        return true;
    }

    /// To be called after the last add() and before at(). Of equal times the one added last holds.
    void sort()
    {
        std::stable_sort(m_entries.begin(), m_entries.end(),
                         [](const Entry &a, const Entry &b) { return a.timestamp < b.timestamp; });
    }

    /// The setting that holds at a time, or the first one when none had been noted yet; null
    /// without any.
    const Entry *at(std::uint64_t timestamp) const
    {
        if (m_entries.empty())
            return nullptr;
        const auto after = std::upper_bound(
            m_entries.begin(), m_entries.end(), timestamp,
            [](std::uint64_t time, const Entry &entry) { return time < entry.timestamp; });
        return after == m_entries.begin() ? &m_entries.front() : &*std::prev(after);
    }

private:
    std::vector<Entry> m_entries;
};

} // namespace mlv
