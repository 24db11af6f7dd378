// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/development.h"

#include <algorithm>
#include <vector>

namespace dcraw {

/// Samples that are all in memory.
class DecodedRows final : public SampleRows
{
public:
    /// The picture's rows of `width` samples begin `first` samples behind the start of `samples`,
    /// `stride` samples apart, and lie inside.
    DecodedRows(std::vector<std::uint16_t> samples, std::size_t first, std::size_t stride,
                std::size_t width)
        : m_samples(std::move(samples))
        , m_first(first)
        , m_stride(stride)
        , m_width(width)
    {
    }

    void read(int row, std::span<std::uint16_t> samples) const override
    {
        std::size_t start = m_first + static_cast<std::size_t>(row) * m_stride;
        for (; !samples.empty(); samples = samples.subspan(m_width), start += m_stride)
            std::copy_n(&m_samples[start], m_width, samples.begin());
    }

private:
    std::vector<std::uint16_t> m_samples;
    std::size_t m_first;
    std::size_t m_stride;
    std::size_t m_width;
};

} // namespace dcraw
