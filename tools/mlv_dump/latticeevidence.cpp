// SPDX-License-Identifier: MIT
#include "mlv_dump/latticeevidence.h"

#include "mlv_dump/median.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

namespace mlvdump {
namespace {

constexpr double fewPixels = 8;  // pixels of a line tell nothing
constexpr double shows = 6;      // standard deviations
constexpr double weakest = 0.25; // of what it typically shows
constexpr double nothing = -3;   // of likelihood, at least: it may as well be there

} // namespace

LatticeEvidence::LatticeEvidence(const PixelStatistics &statistics)
    : m_firstLine(statistics.corner().y)
    , m_height(statistics.height())
{
    for (int y = 0; y < m_height; ++y) {
        for (int column = 0; column < Lattice::columns; ++column) {
            const auto &share = statistics.share(y, column);
            const double count = share.counted >= fewPixels ? share.counted : 0;
            m_values.push_back(
                count > 0 ? Value{share.unusual / count, count, share.clarity / count} : Value());
        }
    }
    // What all lines of a column have in common is no lattice but the column's own, or the scene's.
    levelColumns();
    levelLines();
    measureScatter();
    for (int line = 0; line < Lattice::lines; ++line)
        for (int column = 0; column < Lattice::columns; ++column)
            m_places.push_back(best(column, line));
}

void LatticeEvidence::takeFrom(int y, int column, double usual)
{
    m_values[static_cast<std::size_t>(y) * Lattice::columns + static_cast<std::size_t>(column)]
        .excess -= usual;
}

/// Rows of two kinds have their own colours.
void LatticeEvidence::levelColumns()
{
    for (int first = 0; first < 2; ++first) {
        for (int column = 0; column < Lattice::columns; ++column) {
            std::vector<double> shares;
            for (int y = first; y < m_height; y += 2)
                if (at(y, column).count > 0)
                    shares.push_back(at(y, column).excess);
            const double usual = median(shares);
            for (int y = first; y < m_height; y += 2)
                takeFrom(y, column, usual);
        }
    }
}

/// What is left of a line is the scene's, and common to all colours: many lattices together may
/// leave no half of the red or blue ones alone.
void LatticeEvidence::levelLines()
{
    for (int y = 0; y < m_height; ++y) {
        std::vector<double> shares;
        for (int column = 0; column < Lattice::columns; ++column)
            if (at(y, column).count > 0)
                shares.push_back(at(y, column).excess);
        const double usual = median(shares);
        for (int column = 0; column < Lattice::columns; ++column)
            takeFrom(y, column, usual);
    }
}

void LatticeEvidence::measureScatter()
{
    constexpr double deviationsOfMedian = 1.4826;
    std::vector<double> distances;
    for (const auto &value : m_values)
        if (value.count > 0)
            distances.push_back(std::abs(value.excess) * std::sqrt(value.count));
    m_scatter = std::max(0.1, deviationsOfMedian * median(distances));
}

double LatticeEvidence::best(int column, int line) const
{
    std::vector<double> sums{0}; // of deviations, up to and with each line
    const int ahead = (line - m_firstLine % Lattice::lines + Lattice::lines) % Lattice::lines;
    for (int y = ahead; y < m_height; y += Lattice::lines) {
        const auto &value = at(y, column);
        if (value.count > 0)
            sums.push_back(sums.back() + value.excess * std::sqrt(value.count) / m_scatter);
    }
    double best = 0;
    for (std::size_t first = 0; first < sums.size(); ++first) {
        for (std::size_t end = first + 1; end < sums.size(); ++end) {
            const auto lines = static_cast<double>(end - first);
            best = std::max(best, (sums[end] - sums[first]) / std::sqrt(lines));
        }
    }
    return best;
}

LatticeEvidence::Value LatticeEvidence::ofLine(const Lattice &lattice, int y) const
{
    Value sum;
    for (int column = 0; column < Lattice::columns; ++column) {
        if (lattice.cellHas(column, m_firstLine + y)) {
            const auto &value = at(y, column);
            sum.excess += value.excess * value.count;
            sum.clarity += value.clarity * value.count;
            sum.count += value.count;
        }
    }
    if (sum.count > 0) {
        sum.excess /= sum.count;
        sum.clarity /= sum.count;
    }
    return sum;
}

/// How much more likely the lattice shows on each line, if weakly, than not at all: the logarithm
/// of a likelihood. It shows the less the darker or the more restless the scene is there.
std::vector<double> LatticeEvidence::likelihoods(const Lattice &lattice) const
{
    std::vector<Value> lines;
    std::array<std::vector<double>, 2> excesses; // where red ones deviate, and where blue ones do
    std::array<std::vector<double>, 2> clarities;
    const auto deviation = [this](const Value &line) { return m_scatter / std::sqrt(line.count); };
    for (int y = 0; y < m_height; ++y) {
        lines.push_back(ofLine(lattice, y));
        const auto &line = lines.back();
        if (line.count > 0 && line.excess > shows * deviation(line)) {
            excesses[static_cast<std::size_t>(y % 2)].push_back(line.excess);
            clarities[static_cast<std::size_t>(y % 2)].push_back(line.clarity);
        }
    }
    const std::array<double, 2> excess{median(excesses[0]), median(excesses[1])};
    const std::array<double, 2> clarity{median(clarities[0]), median(clarities[1])};
    std::vector<double> likelihoods;
    for (std::size_t y = 0; y < lines.size(); ++y) {
        const auto &line = lines[y];
        if (line.count == 0 || clarity[y % 2] <= 0) {
            likelihoods.push_back(0);
            continue;
        }
        const double share = std::min(1.0, line.clarity / clarity[y % 2]);
        const double weak = weakest * excess[y % 2] * share * share;
        likelihoods.push_back(weak * (2 * line.excess - weak) / (2 * std::pow(deviation(line), 2)));
    }
    return likelihoods;
}

void LatticeEvidence::confine(Lattice &lattice) const
{
    const auto likelihoods = this->likelihoods(lattice);
    // The lines that are most likely together.
    double best = 0;
    double sum = 0;
    std::size_t start = 0;
    std::size_t first = 0;
    std::size_t end = 0;
    for (std::size_t y = 0; y < likelihoods.size(); ++y) {
        sum += likelihoods[y];
        if (sum <= 0) {
            sum = 0;
            start = y + 1;
        }
        if (sum > best) {
            best = sum;
            first = start;
            end = y + 1;
        }
    }
    // The rest above and below belongs to it where nothing speaks against that.
    const auto begin = likelihoods.begin();
    const auto firstOf = begin + static_cast<std::ptrdiff_t>(first);
    const auto endOf = begin + static_cast<std::ptrdiff_t>(end);
    if (std::accumulate(begin, firstOf, 0.0) > nothing)
        first = 0;
    if (std::accumulate(endOf, likelihoods.end(), 0.0) > nothing)
        end = likelihoods.size();
    if (first > 0)
        lattice.firstLine = m_firstLine + static_cast<int>(first);
    if (end < likelihoods.size())
        lattice.lastLine = m_firstLine + static_cast<int>(end) - 1;
}

} // namespace mlvdump
