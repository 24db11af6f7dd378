// SPDX-License-Identifier: MIT
#include "mlv_dump/singlepixels.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace mlvdump {
namespace {

using Pixel = PixelStatistics::Pixel;

constexpr int nearlyAll = 80;                  // per cent of the frames
constexpr float standsOut = 8;                 // times as far as what lies about it
constexpr int stuckFrames = 6;                 // fewer don't tell that a level stands still
constexpr int stuckScatter = 1;                // levels
constexpr int livingScatter = 4;               // levels
constexpr std::size_t largestDefectPart = 200; // one in so many of a sensor's pixels at most

int scatter(const Pixel &pixel)
{
    return pixel.most - pixel.least;
}

bool isNearlyAll(int count, int of)
{
    return count * 100 >= of * nearlyAll;
}

class SinglePixelSearch
{
public:
    SinglePixelSearch(const PixelStatistics &statistics, const std::optional<Lattice> &lattice,
                      int clipLevel)
        : m_statistics(statistics)
        , m_lattice(lattice)
        , m_clipLevel(clipLevel)
    {
    }

    SinglePixels run()
    {
        for (int y = 0; y < m_statistics.height(); ++y)
            for (int x = 0; x < m_statistics.width(); ++x)
                judge(x, y);
        const auto pixels = static_cast<std::size_t>(m_statistics.width()) *
                            static_cast<std::size_t>(m_statistics.height());
        const bool tooMany = m_found.hot.size() + m_found.cold.size() + m_found.stuck.size() >
                             pixels / largestDefectPart;
        return tooMany ? SinglePixels() : std::move(m_found);
    }

private:
    void judge(int x, int y)
    {
        const auto &pixel = m_statistics.pixel(x, y);
        const Place place{y + m_statistics.corner().y, x + m_statistics.corner().x};
        const bool isMember = m_lattice && m_lattice->has(place.x, place.y);
        if (pixel.high + pixel.low == 0 || isMember)
            return;
        // Half of the frames have to be fit to show it.
        const bool isAlone = 2 * pixel.judged >= pixel.seen &&
                             std::abs(pixel.excess()) > standsOut * secondLargestAround(x, y);
        if (isAlone && isNearlyAll(pixel.high, pixel.judged))
            m_found.hot.push_back(place);
        else if (isAlone && isNearlyAll(pixel.low, pixel.judged))
            m_found.cold.push_back(place);
        else if (isStuck(x, y))
            m_found.stuck.push_back(place);
    }

    /// A level that stands still amid noise is no measurement, however seldom it strikes.
    bool isStuck(int x, int y) const
    {
        const auto &pixel = m_statistics.pixel(x, y);
        // A highlight stands still too, at the end of the range.
        return pixel.seen >= stuckFrames && scatter(pixel) <= stuckScatter &&
               pixel.most < m_clipLevel && leastScatterAround(x, y) >= livingScatter;
    }

    template <typename Visit>
    void visitAround(int x, int y, Visit visit) const
    {
        for (int dy = -1; dy <= 1; ++dy) {
            for (int dx = -1; dx <= 1; ++dx) {
                const bool isInside = x + dx >= 0 && x + dx < m_statistics.width() && y + dy >= 0 &&
                                      y + dy < m_statistics.height();
                if (isInside && (dx != 0 || dy != 0))
                    visit(m_statistics.pixel(x + dx, y + dy));
            }
        }
    }

    /// One of those around may be faulty itself.
    float secondLargestAround(int x, int y) const
    {
        float largest = 0;
        float second = 0;
        visitAround(x, y, [&](const Pixel &pixel) {
            const float residual = std::abs(pixel.residual());
            second = std::max(second, std::min(largest, residual));
            largest = std::max(largest, residual);
        });
        return second;
    }

    int leastScatterAround(int x, int y) const
    {
        int least = 65535;
        visitAround(x, y, [&](const Pixel &pixel) { least = std::min(least, scatter(pixel)); });
        return least;
    }

    const PixelStatistics &m_statistics;
    const std::optional<Lattice> &m_lattice;
    int m_clipLevel;
    SinglePixels m_found;
};

} // namespace

SinglePixels findSinglePixels(const PixelStatistics &statistics,
                              const std::optional<Lattice> &lattice, int clipLevel)
{
    return SinglePixelSearch(statistics, lattice, clipLevel).run();
}

} // namespace mlvdump
