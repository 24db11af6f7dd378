// SPDX-License-Identifier: MIT
#include "mlv_dump/columnsurvey.h"

#include "mlv_dump/median.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>

namespace mlvdump {
namespace {

constexpr int bins = 2000;       // of a histogram of ratios
constexpr double farthest = 0.1; // from 1; no sensor is worse
constexpr int columnPeriod = ColumnGains::period;
constexpr std::uint32_t fewRatios = 500; // ratios tell nothing
constexpr std::size_t fewParts = 4;
constexpr int columnRowStride = 8;
constexpr double visible = 0.002;
constexpr double certain = 6;         // standard deviations
constexpr double goodEnough = 0.0006; // an estimate that scatters more would leave stripes

} // namespace

ColumnSurvey::ColumnSurvey(const mlv::FrameFormat &format)
    : m_format(format)
    , m_least(format.blackLevel + (format.whiteLevel - format.blackLevel) / 8)
    , m_most(format.blackLevel + (format.whiteLevel - format.blackLevel) / 10 * 9)
    , m_ratios(static_cast<std::size_t>(sides * sides * 2 * columnPeriod) * bins)
{
}

std::size_t ColumnSurvey::binOf(int part, int line, int column) const
{
    return static_cast<std::size_t>((part * 2 + line) * columnPeriod + column) * bins;
}

void ColumnSurvey::add(std::span<const std::uint16_t> samples, int cropX, int cropY)
{
    std::vector<std::uint32_t> ratios(m_ratios.size());
    for (int y = 1; y + 2 < m_format.height; y += columnRowStride) {
        addRow(samples, y, cropX, cropY, ratios);
        addRow(samples, y + 1, cropX, cropY, ratios);
    }
    const std::lock_guard lock(m_mutex);
    std::transform(ratios.begin(), ratios.end(), m_ratios.begin(), m_ratios.begin(), std::plus());
}

/// Compares each sample with the mean of the eight columns about it, which a gradient doesn't
/// change. Green samples stand in every column, on one of two neighbouring rows; of red and blue
/// ones there are four.
void ColumnSurvey::addRow(std::span<const std::uint16_t> samples, int y, int cropX, int cropY,
                          std::vector<std::uint32_t> &ratios) const
{
    const auto width = m_format.width;
    const auto *const row = &samples[static_cast<std::size_t>(y) * static_cast<std::size_t>(width)];
    const auto isFit = [this](int sample) { return sample >= m_least && sample <= m_most; };
    for (int x = 4; x + 4 < width; ++x) {
        bool fits = isFit(row[x]);
        double sum = (row[x - 4] + row[x + 4]) / 2.0 + row[x - 2] + row[x] + row[x + 2];
        fits = fits && isFit(row[x - 4]) && isFit(row[x - 2]) && isFit(row[x + 2]) &&
               isFit(row[x + 4]);
        double count = 4;
        if (x % 2 != y % 2) { // green
            for (const int next : {x - 3, x - 1, x + 1, x + 3}) {
                fits = fits && isFit(row[next - width]) && isFit(row[next + width]);
                sum += (row[next - width] + row[next + width]) / 2.0;
            }
            count = 8;
        }
        const double light = row[x] - m_format.blackLevel;
        const double mean = sum / count - m_format.blackLevel;
        if (!fits || std::abs(light - mean) >= farthest * mean)
            continue;
        const int part = y * sides / m_format.height * sides + x * sides / width;
        const auto bin =
            static_cast<std::size_t>((light / mean - 1 + farthest) / (2 * farthest) * bins);
        ++ratios[binOf(part, (y + cropY) % 2, (x + cropX) % columnPeriod) +
                 std::min<std::size_t>(bin, bins - 1)];
    }
}

std::optional<double> ColumnSurvey::median(int part, int line, int column) const
{
    const auto *const histogram = &m_ratios[binOf(part, line, column)];
    const auto total = std::accumulate(histogram, histogram + bins, 0U);
    if (total < fewRatios)
        return std::nullopt;
    double below = 0;
    int bin = 0;
    while (below + histogram[bin] < total / 2.0)
        below += histogram[bin++];
    const double within = (total / 2.0 - below) / histogram[bin];
    return 1 - farthest + 2 * farthest * (bin + within) / bins;
}

ColumnSurvey::Estimate ColumnSurvey::estimate(int line, int column) const
{
    constexpr double deviationsOfMedian = 1.4826;
    constexpr double medianScatter = 1.2533; // of a median beside that of a mean
    std::vector<double> parts;
    for (int part = 0; part < sides * sides; ++part)
        if (const auto gain = median(part, line, column))
            parts.push_back(*gain);
    if (parts.size() < fewParts)
        return {};
    const double gain = mlvdump::median(parts);
    std::vector<double> distances;
    std::ranges::transform(parts, std::back_inserter(distances),
                           [gain](double part) { return std::abs(part - gain); });
    const double scatter = deviationsOfMedian * mlvdump::median(distances) * medianScatter /
                           std::sqrt(static_cast<double>(parts.size()));
    return {gain, scatter, true};
}

ColumnSurvey::Result ColumnSurvey::result() const
{
    std::array<std::array<Estimate, columnPeriod>, 2> estimates;
    for (int line = 0; line < 2; ++line) {
        for (int column = 0; column < columnPeriod; ++column) {
            estimates[static_cast<std::size_t>(line)][static_cast<std::size_t>(column)] =
                estimate(line, column);
        }
    }
    Result result;
    ColumnGains gains{};
    double strongest = 0;
    // The green samples of a column are on the lines of the other kind than its red or blue ones.
    const auto greenLine = [](std::size_t column) { return column % 2 == 0 ? 1U : 0U; };
    double evenMean = 0;
    double oddMean = 0;
    for (std::size_t column = 0; column < columnPeriod; ++column) {
        const auto &green = estimates[greenLine(column)][column];
        if (!green.isKnown)
            return {};
        (column % 2 == 0 ? evenMean : oddMean) += green.gain / 4;
        result.scatter = std::max(result.scatter, green.scatter);
        strongest = std::max(strongest, std::abs(green.gain - 1) / std::max(green.scatter, 1e-6));
    }
    for (std::size_t column = 0; column < columnPeriod; ++column) {
        const auto line = greenLine(column);
        const auto &green = estimates[line][column];
        const auto &other = estimates[1 - line][column];
        // Red and blue ones are compared among every other column only.
        const double own = other.gain * (column % 2 == 0 ? evenMean : oddMean);
        const bool differs = other.isKnown && other.scatter <= goodEnough &&
                             std::abs(own - green.gain) >
                                 visible / 2 + certain * std::hypot(other.scatter, green.scatter);
        gains.gains[line][column] = green.gain;
        gains.gains[1 - line][column] = differs ? own : green.gain;
    }
    const bool isVisible = gains.most() > 1 + visible || gains.least() < 1 - visible;
    if (isVisible && result.scatter <= goodEnough && strongest >= certain)
        result.gains = gains;
    return result;
}

} // namespace mlvdump
