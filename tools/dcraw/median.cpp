// SPDX-License-Identifier: MIT
#include "dcraw/median.h"

#include "dcraw/parallel.h"

#include <array>
#include <atomic>
#include <vector>

namespace dcraw {
namespace {

/// To green, of one row.
using Differences = std::vector<std::int32_t>;

void subtract(const Picture &picture, int colour, int y, Differences &result)
{
    const std::uint16_t *values = picture.row(colour, y);
    const std::uint16_t *greens = picture.row(1, y);
    for (std::size_t x = 0; x < result.size(); ++x)
        result[x] = values[x] - greens[x];
}

void sort(std::int32_t &first, std::int32_t &second)
{
    const std::int32_t low = std::min(first, second);
    second = std::max(first, second);
    first = low;
}

std::int32_t median(std::int32_t first, std::int32_t second, std::int32_t third)
{
    return std::max(std::min(first, second), std::min(std::max(first, second), third));
}

/// The rows `first` to `end`, which are filtered in place, and how those beside them were before.
struct Share
{
    int first;
    int end;
    std::array<Differences, 3> above; ///< of each colour
    std::array<Differences, 3> below;
};

class RowFilter
{
public:
    explicit RowFilter(int width)
    {
        for (Differences *row : {&m_above, &m_here, &m_below, &m_low, &m_middle, &m_high})
            row->resize(static_cast<std::size_t>(width));
    }

    void filter(const Share &share, int colour, Picture &picture)
    {
        m_above = share.above[static_cast<std::size_t>(colour)];
        subtract(picture, colour, share.first, m_here);
        for (int y = share.first; y < share.end; ++y) {
            if (y + 1 < share.end)
                subtract(picture, colour, y + 1, m_below);
            else
                m_below = share.below[static_cast<std::size_t>(colour)];
            sortColumns();
            takeMedians(picture.row(1, y), picture.row(colour, y));
            m_above.swap(m_here);
            m_here.swap(m_below);
        }
    }

private:
    void sortColumns()
    {
        for (std::size_t x = 0; x < m_here.size(); ++x) {
            std::int32_t low = m_above[x];
            std::int32_t middle = m_here[x];
            std::int32_t high = m_below[x];
            sort(low, middle);
            sort(middle, high);
            sort(low, middle);
            m_low[x] = low;
            m_middle[x] = middle;
            m_high[x] = high;
        }
    }

    void takeMedians(const std::uint16_t *greens, std::uint16_t *result) const
    {
        for (std::size_t x = 1; x + 1 < m_here.size(); ++x) {
            const std::int32_t low = std::max(std::max(m_low[x - 1], m_low[x]), m_low[x + 1]);
            const std::int32_t middle = median(m_middle[x - 1], m_middle[x], m_middle[x + 1]);
            const std::int32_t high = std::min(std::min(m_high[x - 1], m_high[x]), m_high[x + 1]);
            result[x] = static_cast<std::uint16_t>(
                std::clamp(median(low, middle, high) + greens[x], 0, 65535));
        }
    }

    Differences m_above;
    Differences m_here;
    Differences m_below;
    Differences m_low;
    Differences m_middle;
    Differences m_high;
};

} // namespace

void filterByMedian(Picture &picture, int passes, unsigned threads)
{
    // The outermost rows and columns stay.
    const int count = static_cast<int>(threads);
    const int rows = picture.rows() - 2;
    const Differences empty(static_cast<std::size_t>(picture.width()));
    std::vector<Share> shares;
    for (int i = 0; i < count; ++i) {
        shares.push_back({1 + rows * i / count, 1 + rows * (i + 1) / count, {}, {}});
        shares.back().above.fill(empty);
        shares.back().below.fill(empty);
    }
    for (int pass = 0; pass < passes; ++pass) {
        for (Share &share : shares) {
            for (const int colour : {0, 2}) {
                subtract(picture, colour, share.first - 1,
                         share.above[static_cast<std::size_t>(colour)]);
                subtract(picture, colour, share.end, share.below[static_cast<std::size_t>(colour)]);
            }
        }
        std::atomic<std::size_t> next = 0;
        onThreads(threads, [&] {
            RowFilter filter(picture.width());
            for (std::size_t i = next++; i < shares.size(); i = next++) {
                if (shares[i].first == shares[i].end)
                    continue;
                filter.filter(shares[i], 0, picture);
                filter.filter(shares[i], 2, picture);
            }
        });
    }
}

} // namespace dcraw
