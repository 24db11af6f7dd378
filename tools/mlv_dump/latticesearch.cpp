// SPDX-License-Identifier: MIT
#include "mlv_dump/latticesearch.h"

#include "mlv_dump/latticeevidence.h"
#include "mlv_dump/median.h"

#include <algorithm>
#include <array>
#include <vector>

namespace mlvdump {
namespace {

constexpr double certainPlace = 8;     // standard deviations
constexpr double timesGreen = 1.5;     // as far as the farthest green place
constexpr int largestLatticePart = 4;  // of the red and blue places of a cell, one in so many
constexpr double besideTypical = 0.3;  // of what the lattice's places typically have
constexpr double enough = 0.5;         // of it, for places that would complete a lattice
constexpr double likelyMembers = 0.75; // of a place that repeats, so that the others follow

bool isGreen(int column, int line)
{
    return (column + line) % 2 != 0;
}

template <typename Visit>
void forEachPlace(Visit visit)
{
    for (int line = 0; line < Lattice::lines; ++line)
        for (int column = 0; column < Lattice::columns; ++column)
            visit(column, line);
}

void insert(Lattice &lattice, int column, int line)
{
    lattice.cell[static_cast<unsigned>(line)] |= 1U << static_cast<unsigned>(column);
}

/// A place repeated after that period, within a cell.
template <typename Visit>
void forEachMember(int column, int line, const LatticePeriod &period, Visit visit)
{
    for (int y = line % period.lines; y < Lattice::lines; y += period.lines)
        for (int x = column % period.columns; x < Lattice::columns; x += period.columns)
            visit(x, y);
}

/// The lattice with all its places repeated after that period; none where there is no evidence of
/// most that it would have.
template <typename IsLikely>
std::optional<Lattice> repeated(const Lattice &lattice, const LatticePeriod &period,
                                IsLikely isLikely)
{
    Lattice whole = lattice;
    bool isWhole = true;
    forEachPlace([&](int column, int line) {
        if (!isWhole || !lattice.cellHas(column, line))
            return;
        int members = 0;
        int likely = 0;
        forEachMember(column, line, period, [&](int x, int y) {
            ++members;
            likely += isLikely(x, y) ? 1 : 0;
            insert(whole, x, y);
        });
        isWhole = likely >= likelyMembers * members;
    });
    return isWhole ? std::optional(whole) : std::nullopt;
}

/// Periods that divide a cell, smallest first.
std::vector<LatticePeriod> periods()
{
    std::vector<LatticePeriod> all;
    forEachPlace([&](int column, int line) {
        if (Lattice::columns % (column + 1) == 0 && Lattice::lines % (line + 1) == 0)
            all.push_back({column + 1, line + 1});
    });
    std::ranges::stable_sort(all, {},
                             [](const auto &period) { return period.columns * period.lines; });
    return all;
}

/// The evidence that a place needs to be certain, on lines of either kind.
std::array<double, 2> limits(const LatticeEvidence &evidence)
{
    double farthestGreen = 0;
    forEachPlace([&](int column, int line) {
        if (isGreen(column, line))
            farthestGreen = std::max(farthestGreen, evidence.ofPlace(column, line));
    });
    const double limit = std::max(certainPlace, timesGreen * farthestGreen);
    std::array<std::vector<double>, 2> beyond;
    forEachPlace([&](int column, int line) {
        const double found = evidence.ofPlace(column, line);
        if (!isGreen(column, line) && found > limit)
            beyond[static_cast<std::size_t>(line % 2)].push_back(found);
    });
    // A pixel that has members of the lattice about it seems to deviate too, if less.
    return {std::max(limit, besideTypical * median(beyond[0])),
            std::max(limit, besideTypical * median(beyond[1]))};
}

std::optional<Lattice> certainPlaces(const LatticeEvidence &evidence,
                                     const std::array<double, 2> &limits)
{
    Lattice lattice;
    forEachPlace([&](int column, int line) {
        if (!isGreen(column, line) &&
            evidence.ofPlace(column, line) > limits[static_cast<std::size_t>(line % 2)])
            insert(lattice, column, line);
    });
    constexpr int redAndBlue = Lattice::columns * Lattice::lines / 2;
    const bool isLattice = lattice.size() > 0 && lattice.size() <= redAndBlue / largestLatticePart;
    return isLattice ? std::optional(lattice) : std::nullopt;
}

/// Some members of a lattice may be too dark, or too few, to be certain by themselves.
Lattice completed(const Lattice &lattice, const LatticeEvidence &evidence,
                  const std::array<double, 2> &limits)
{
    const auto isLikely = [&](int column, int line) {
        return lattice.cellHas(column, line) ||
               evidence.ofPlace(column, line) > enough * limits[static_cast<std::size_t>(line % 2)];
    };
    for (const auto &period : periods())
        if (const auto whole = repeated(lattice, period, isLikely))
            return *whole;
    return lattice;
}

} // namespace

std::optional<Lattice> findLattice(const PixelStatistics &statistics)
{
    const LatticeEvidence evidence(statistics);
    const auto limits = mlvdump::limits(evidence);
    const auto places = certainPlaces(evidence, limits);
    if (!places)
        return std::nullopt;
    auto lattice = completed(*places, evidence, limits);
    evidence.confine(lattice);
    return lattice;
}

LatticePeriod periodOf(const Lattice &lattice)
{
    const auto has = [&](int column, int line) { return lattice.cellHas(column, line); };
    for (const auto &period : periods()) {
        const auto whole = repeated(lattice, period, has);
        if (whole && whole->cell == lattice.cell)
            return period;
    }
    return {Lattice::columns, Lattice::lines};
}

} // namespace mlvdump
