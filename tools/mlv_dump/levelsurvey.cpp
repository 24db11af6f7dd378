// SPDX-License-Identifier: MIT
#include "mlv_dump/levelsurvey.h"

#include "mlv_dump/parallelframes.h"
#include "mlv_dump/spreadframes.h"
#include "raw/error.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace mlvdump {
namespace {

constexpr std::size_t maxLevelFrames = 256;
constexpr int pairStep = 4; // every fourth pair of rows is enough to see an area

// Shares of the samples of one colour.
constexpr double strayShare = 1e-4; // hot pixels
constexpr double pileShare = 5e-4;
constexpr double wholeShare = 0.95; // a frame that is one area tells nothing
constexpr double darkShare = 1e-3;

/// A pile is this much denser than what lies below it. Sensor noise spreads every brightness of the
/// scene over many levels; only the end of the sensor's range collects them on one.
constexpr double pileDensity = 6;

/// Levels over which the sensor's end is scattered.
int pileWidth(const mlv::FrameFormat &format)
{
    return 1 + (format.maxLevel() >> 11); // 8 levels of 14 bits
}

using Histogram = std::vector<std::uint32_t>;

/// One colour of the pattern in one frame.
class Distribution
{
public:
    Distribution(Histogram histogram, const mlv::FrameFormat &format)
        : m_levels(std::move(histogram))
        , m_width(pileWidth(format))
        , m_lowestClip(format.blackLevel + (format.whiteLevel - format.blackLevel) / 4)
        , m_total(static_cast<double>(std::accumulate(m_levels.begin(), m_levels.end(), 0ULL)))
    {
        double above = 0;
        m_top = static_cast<int>(m_levels.size()) - 1;
        while (m_top > 0 &&
               (above += m_levels[static_cast<std::size_t>(m_top)]) <= strayShare * m_total)
            --m_top;
    }

    int top() const { return m_top; }

    int darkest() const
    {
        double below = 0;
        int level = 0;
        while (level < m_top &&
               (below += m_levels[static_cast<std::size_t>(level)]) <= darkShare * m_total)
            ++level;
        return level;
    }

    /// Whether samples pile up just below and at `level`, against the levels below.
    bool isPile(int level) const
    {
        constexpr int stretch = 4;
        const double pile = count(level - m_width, level);
        const double below = count(level - m_width - stretch * (m_width + 1), level - m_width - 1);
        return pile >= pileShare * m_total && pile >= pileDensity * below / stretch &&
               pile <= wholeShare * m_total;
    }

    /// Whether the frame has a bright area without noise below its top, which no sensor gives: then
    /// the top is nothing but such an area.
    bool isDrawn() const
    {
        for (int level = m_lowestClip; level < m_top - 3 * m_width; ++level) {
            const bool isPeak = m_levels[static_cast<std::size_t>(level)] >= pileShare * m_total;
            if (isPeak && isPile(level) && isPileFromAbove(level))
                return true;
        }
        return false;
    }

    bool clips() const { return m_top > m_lowestClip && isPile(m_top); }

    /// Where the pile at the top begins.
    int clipLevel() const
    {
        const auto begin = m_levels.begin() + std::max(0, m_top - m_width);
        const auto end = m_levels.begin() + m_top + 1;
        const auto highest = *std::max_element(begin, end);
        return static_cast<int>(
            std::find_if(begin, end, [highest](auto n) { return n >= highest / 10; }) -
            m_levels.begin());
    }

private:
    double count(int first, int last) const
    {
        const int end = std::min(last + 1, static_cast<int>(m_levels.size()));
        const int begin = std::clamp(first, 0, std::max(0, end));
        return std::accumulate(m_levels.begin() + begin, m_levels.begin() + std::max(begin, end),
                               0.0);
    }

    bool isPileFromAbove(int level) const
    {
        constexpr int stretch = 4;
        const double above = count(level + m_width + 1, level + m_width + stretch * (m_width + 1));
        return count(level, level + m_width) >= pileDensity * above / stretch;
    }

    Histogram m_levels;
    int m_width;      ///< of a pile, levels below its top
    int m_lowestClip; ///< no sensor is full in the lowest quarter of its range
    double m_total;
    int m_top = 0;
};

std::array<Histogram, 4> histograms(std::span<const std::uint16_t> samples,
                                    const mlv::FrameFormat &format)
{
    std::array<Histogram, 4> colours;
    colours.fill(Histogram(static_cast<std::size_t>(format.maxLevel()) + 1));
    const auto width = static_cast<std::size_t>(format.width);
    for (std::size_t row = 0; row < samples.size() / width; ++row) {
        auto *const pair = &colours[row % 2 * 2];
        for (std::size_t x = 0; x < width; ++x)
            ++pair[x % 2][samples[row * width + x]];
    }
    return colours;
}

} // namespace

FrameExtremes frameExtremes(std::span<const std::uint16_t> samples, const mlv::FrameFormat &format)
{
    std::vector<Distribution> colours;
    for (auto &histogram : histograms(samples, format))
        colours.emplace_back(std::move(histogram), format);
    FrameExtremes extremes{format.maxLevel(), 0, std::nullopt};
    bool isDrawn = false;
    int lowest = format.maxLevel();
    int highest = 0;
    for (const auto &colour : colours) {
        extremes.darkest = std::min(extremes.darkest, colour.darkest());
        extremes.brightest = std::max(extremes.brightest, colour.top());
        isDrawn = isDrawn || colour.isDrawn();
        if (colour.clips()) {
            lowest = std::min(lowest, colour.clipLevel());
            highest = std::max(highest, colour.top());
        }
    }
    // All colours clip at one level; piles at different ones are areas of the scene.
    const int width = pileWidth(format);
    if (!isDrawn && lowest <= highest && highest - lowest <= 2 * width &&
        extremes.brightest - lowest <= 2 * width)
        extremes.clip = lowest;
    return extremes;
}

std::optional<LevelSurvey> surveyLevels(const mlv::Recording &recording, unsigned threads)
{
    std::mutex mutex;
    std::vector<FrameExtremes> frames; // guarded by mutex
    int width = 0;                     // guarded by mutex
    forEachFrame(recording, spreadFrames(recording.videoFrames(), maxLevelFrames), threads,
                 [&](mlv::FrameDecoder &decoder, const mlv::DataBlock &block) {
                     try {
                         const auto found = frameExtremes(decoder.decodeRowPairs(block, pairStep),
                                                          decoder.format());
                         const std::lock_guard lock(mutex);
                         frames.push_back(found);
                         width = pileWidth(decoder.format());
                     } catch (const raw::ReadError &) {
                         throw;
                     } catch (const raw::Error &) {
                         return; // the extraction tells of damaged frames
                     }
                 });
    if (frames.empty())
        return std::nullopt;
    LevelSurvey survey{frames.front().darkest, std::nullopt};
    int brightest = 0;
    for (const auto &frame : frames) {
        survey.darkest = std::min(survey.darkest, frame.darkest);
        brightest = std::max(brightest, frame.brightest);
        if (frame.clip)
            survey.clip = std::min(survey.clip.value_or(*frame.clip), *frame.clip);
    }
    if (survey.clip && brightest - *survey.clip > 2 * width)
        survey.clip.reset(); // another frame goes higher
    return survey;
}

} // namespace mlvdump
