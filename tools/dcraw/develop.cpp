// SPDX-License-Identifier: MIT
#include "dcraw/adaptivehomogeneity.h"
#include "dcraw/bands.h"
#include "dcraw/bilinear.h"
#include "dcraw/blend.h"
#include "dcraw/development.h"
#include "dcraw/halfsize.h"
#include "dcraw/median.h"
#include "dcraw/outputcolour.h"
#include "dcraw/parallel.h"
#include "dcraw/rowwriter.h"

#include <atomic>
#include <memory>

namespace dcraw {
namespace {

std::unique_ptr<RowSource> interpolation(const Development &development, const SampleRows &samples)
{
    switch (development.interpolation) {
    case Interpolation::Bilinear:
        return std::make_unique<Bilinear>(development, samples);
    case Interpolation::HalfSize:
        return std::make_unique<HalfSize>(development, samples);
    case Interpolation::AdaptiveHomogeneity:
        break;
    }
    return std::make_unique<AdaptiveHomogeneity>(development, samples);
}

void copyRows(const Picture &source, int sourceFirst, Picture &target, int targetFirst, int rows)
{
    for (int row = 0; row < rows; ++row) {
        for (int colour = 0; colour < 3; ++colour) {
            std::copy_n(source.row(colour, sourceFirst + row), source.width(),
                        target.row(colour, targetFirst + row));
        }
    }
}

/// Rows of a picture that is there already.
class PictureRows : public RowSource
{
public:
    explicit PictureRows(const Picture &picture)
        : m_picture(picture)
    {
    }

    void read(int first, Picture &rows) override
    {
        copyRows(m_picture, first, rows, 0, rows.rows());
    }

private:
    const Picture &m_picture;
};

/// The development of one frame.
class Work
{
public:
    Work(const Development &development, const SampleRows &samples, PixelSink &sink,
         unsigned threads)
        : m_development(development)
        , m_samples(samples)
        , m_sink(sink)
        , m_threads(threads)
        , m_width(development.pictureWidth())
        , m_height(development.pictureHeight())
        , m_packer(development)
    {
        if (development.highlights == Highlights::Rebuild)
            m_highlights.emplace(development);
        if (development.pixelAspect < 1)
            m_beforeStretch.emplace(m_width, m_height);
    }

    bool run()
    {
        if (m_development.medianPasses > 0)
            makeFiltered();
        makeRows();
        if (m_beforeStretch && !m_isRefused)
            stretchRows();
        return !m_isRefused;
    }

private:
    /// What a thread works with.
    struct Thread
    {
        explicit Thread(const Work &work)
            : source(work.m_filtered ? std::make_unique<PictureRows>(*work.m_filtered)
                                     : interpolation(work.m_development, work.m_samples))
            , writer(work.m_development, work.m_packer, work.m_sink)
        {
        }

        std::unique_ptr<RowSource> source;
        RowWriter writer;
        std::optional<HighlightRebuilder> rebuilder; ///< as soon as there is anything to rebuild
        std::vector<RowGroup> spares;                ///< whole groups that are used again
    };

    void makeFiltered()
    {
        m_filtered.emplace(m_width, m_height);
        Bands bands(m_height, groupRows, m_threads);
        onThreads(m_threads, [&] {
            const auto source = interpolation(m_development, m_samples);
            while (const auto band = bands.take()) {
                for (int y = bands.first(*band); y < bands.end(*band); y += groupRows) {
                    Picture rows(m_width, std::min(groupRows, bands.end(*band) - y));
                    source->read(y, rows);
                    copyRows(rows, 0, *m_filtered, y, rows.rows());
                }
            }
        });
        filterByMedian(*m_filtered, m_development.medianPasses, m_threads);
    }

    void makeRows()
    {
        const int leastRows =
            m_highlights ? HighlightMap::reach * m_highlights->blockSize() : groupRows;
        Bands bands(m_height, leastRows, m_threads);
        onThreads(m_threads, [&] {
            Thread thread(*this);
            while (!m_isRefused) {
                const auto band = bands.take();
                if (!band)
                    break;
                makeBand(bands, *band, thread);
            }
            end(thread.writer);
        });
    }

    RowGroup emptyGroup(int first, int rows, std::vector<RowGroup> &spares) const
    {
        if (rows < groupRows || spares.empty())
            return {first, Picture(m_width, rows)};
        RowGroup group = std::move(spares.back());
        spares.pop_back();
        group.first = first;
        return group;
    }

    static void keep(RowGroup group, std::vector<RowGroup> &spares)
    {
        if (group.rows.rows() == groupRows)
            spares.push_back(std::move(group));
    }

    void makeBand(Bands &bands, int band, Thread &thread)
    {
        std::vector<RowGroup> waiting;
        for (int y = bands.first(band); y < bands.end(band); y += groupRows) {
            RowGroup group = emptyGroup(y, std::min(groupRows, bands.end(band) - y), thread.spares);
            thread.source->read(y, group.rows);
            if (m_highlights && m_highlights->examine(group)) {
                waiting.push_back(std::move(group));
            } else {
                finish(group, thread.writer);
                keep(std::move(group), thread.spares);
            }
        }
        auto completed = bands.setKnown(band, std::move(waiting));
        for (auto &complete : completed) {
            if (complete.groups.empty())
                continue;
            if (!thread.rebuilder)
                thread.rebuilder.emplace(*m_highlights, bands.mostRows());
            thread.rebuilder->setBand(bands.first(complete.band), bands.end(complete.band));
            for (RowGroup &group : complete.groups) {
                thread.rebuilder->rebuild(group);
                finish(group, thread.writer);
                keep(std::move(group), thread.spares);
            }
        }
    }

    void finish(RowGroup &group, RowWriter &writer)
    {
        Picture &rows = group.rows;
        if (m_development.highlights == Highlights::Blend)
            blendHighlights(m_development, rows);
        // What is above the tone's limit differs only for a mean that is still to be taken.
        const std::uint16_t limit = m_development.pixelAspect == 1 ? m_packer.limit() : UINT16_MAX;
        for (int row = 0; row < rows.rows(); ++row) {
            if (m_development.convertsColour) {
                convertColour({rows.row(0, row), rows.row(1, row), rows.row(2, row)},
                              m_development.cameraToOutput, limit,
                              static_cast<std::size_t>(m_width));
            }
            if (!m_beforeStretch)
                writer.write(group.first + row, rows, row);
        }
        if (m_beforeStretch)
            copyRows(rows, 0, *m_beforeStretch, group.first, rows.rows());
        if (!writer.isWanted())
            m_isRefused = true;
    }

    void stretchRows()
    {
        const Stretch stretch(m_development.outputHeight(), m_development.pixelAspect);
        Bands bands(stretch.count(), groupRows, m_threads);
        onThreads(m_threads, [&] {
            RowWriter writer(m_development, m_packer, m_sink);
            Picture line(m_width, 1);
            while (const auto band = bands.take()) {
                for (int y = bands.first(*band); y < bands.end(*band) && !m_isRefused; ++y) {
                    stretchRow(stretch[y], line);
                    writer.write(y, line, 0);
                    m_isRefused = m_isRefused || !writer.isWanted();
                }
            }
            end(writer);
        });
    }

    void stretchRow(Stretch::Place place, Picture &line) const
    {
        for (int colour = 0; colour < 3; ++colour) {
            const std::uint16_t *first = m_beforeStretch->row(colour, place.index);
            const std::uint16_t *second =
                m_beforeStretch->row(colour, std::min(place.index + 1, m_height - 1));
            std::transform(first, first + m_width, second, line.row(colour, 0),
                           [&](std::uint16_t upper, std::uint16_t lower) {
                               return Stretch::between(upper, lower, place.part);
                           });
        }
    }

    void end(RowWriter &writer)
    {
        writer.flush();
        if (!writer.isWanted())
            m_isRefused = true;
    }

    const Development &m_development;
    const SampleRows &m_samples;
    PixelSink &m_sink;
    unsigned m_threads;
    int m_width;
    int m_height;
    PixelPacker m_packer;
    std::optional<HighlightMap> m_highlights;
    std::optional<Picture> m_filtered;      ///< by the median
    std::optional<Picture> m_beforeStretch; ///< of the rows
    std::atomic<bool> m_isRefused = false;
};

} // namespace

bool develop(const Development &development, const SampleRows &samples, PixelSink &sink,
             unsigned threads)
{
    return Work(development, samples, sink, threads).run();
}

} // namespace dcraw
