// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/homogeneity.h"
#include "dcraw/lightrows.h"
#include "dcraw/rowsource.h"

namespace dcraw {

/// Finds the missing colours twice, along the rows and along the columns, and takes the candidate
/// that resembles its neighbours more. One pass over the rows: each stage runs a row behind the one
/// before it, in rings that stay in the processor's cache.
class AdaptiveHomogeneity : public RowSource
{
public:
    /// Both outlive it.
    AdaptiveHomogeneity(const Development &development, const SampleRows &samples);

    void read(int first, Picture &rows) override;

private:
    template <typename T>
    using Ring = RowRing<T, 4>;
    template <typename T>
    using SplitRing = SplitRowRing<T, 4>;
    struct LabRings
    {
        explicit LabRings(int columns)
            : lightness(columns)
            , chroma(columns)
        {
        }

        SplitRing<std::int32_t> lightness;
        SplitRing<std::int32_t> chroma;
    };
    /// Each candidate's own values.
    struct Candidate
    {
        explicit Candidate(int columns);

        Ring<std::uint16_t> green;     ///< at red and blue
        Ring<std::int32_t> difference; ///< at red and blue
        Ring<std::uint16_t> opposite;  ///< at red and blue
        Ring<std::uint16_t> beside;    ///< at green, the colour of the row
        Ring<std::uint16_t> vertical;  ///< at green, the other colour
        LabRings lab;
    };

    void start(int row);
    void advance();
    bool isInside(int row, int margin) const;
    void makeGreen(int row);
    void makeColours(int row);
    void makePreferences(int row);
    void chooseRow(int y, Picture &rows, int row) const;
    LabRow labRow(std::size_t d, int row, int half);

    const Development &m_development;
    std::size_t m_columns; ///< of a half
    LightRows m_light;
    Both<Candidate> m_candidates;
    std::array<Both<Range>, 4> m_ranges; ///< of a, ring of rows
    SplitRing<std::int16_t> m_preferences;
    int m_start = 0; ///< the first row that is wanted
    int m_next = 0;  ///< the next row to scale
};

} // namespace dcraw
