// SPDX-License-Identifier: MIT
#include "mlv_dump/repairsurvey.h"

#include "mlv_dump/columnsurvey.h"
#include "mlv_dump/latticesearch.h"
#include "mlv_dump/parallelframes.h"
#include "mlv_dump/pixelmap.h"
#include "mlv_dump/rowpairs.h"
#include "mlv_dump/singlepixels.h"
#include "mlv_dump/spreadframes.h"
#include "mlv_dump/text.h"
#include "raw/error.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace mlvdump {
namespace {

// Small frames tell less each.
constexpr std::size_t leastRepairFrames = 8;
constexpr std::size_t maxRepairFrames = 16;
constexpr std::size_t enoughSamples = 16U << 20U;
static_assert(maxRepairFrames <= PixelStatistics::maxFrames);

/// The frames to look at: those whose window lies within half a frame of the first one's, so that
/// forged places don't make anybody take memory for a read-out that no sensor has.
std::vector<mlv::DataBlock> surveyedFrames(const mlv::Recording &recording,
                                           const mlv::FrameFormat &format)
{
    const auto count =
        std::clamp(enoughSamples / format.sampleCount(), leastRepairFrames, maxRepairFrames);
    auto frames = spreadFrames(recording.videoFrames(), count);
    const Place first = frames.empty() ? Place{} : cropOf(frames.front());
    std::erase_if(frames, [&](const auto &block) {
        const Place crop = cropOf(block);
        return std::abs(crop.x - first.x) > format.width / 2 ||
               std::abs(crop.y - first.y) > format.height / 2;
    });
    return frames;
}

/// Looks for what is to be repaired, and tells it.
class RepairSearch
{
public:
    RepairSearch(const mlv::Recording &recording, const mlv::FrameFormat &format,
                 const Calibration &calibration, unsigned threads)
        : m_recording(recording)
        , m_format(format)
        , m_calibration(calibration)
        , m_threads(threads)
        , m_frames(surveyedFrames(recording, format))
    {
        m_found.repair.format = format;
        m_found.repair.rowStep = rowsAlternate() ? 4 : 2;
    }

    void takeMap(const std::filesystem::path &path)
    {
        m_found.repair.pixels = readPixelMap(path, m_recording);
        remark("Repaired pixels: %zu of the map", m_found.repair.pixels.size());
    }

    void survey(bool pixels, bool columns)
    {
        if (m_format.width < Residuals::leastSide || m_format.height < Residuals::leastSide) {
            m_found.remarks.emplace_back("The frames are too small to find faulty pixels in");
            return;
        }
        if (columns && m_found.repair.rowStep != 2) {
            m_found.remarks.emplace_back("The columns are not repaired: the sensitivity of the "
                                         "rows alternates");
            columns = false;
        }
        const auto [corner, end] = surveyedPart();
        const auto width = pixels ? end.x - corner.x : 0;
        PixelStatistics statistics(corner, width, pixels ? end.y - corner.y : 0);
        ColumnSurvey columnSurvey(m_format);
        forEachGoodFrame(m_frames, [&](auto samples, const auto &crop) {
            if (pixels) {
                Residuals residuals(m_format, m_found.repair.rowStep);
                residuals.load(samples);
                const FrameNoise noise(residuals, m_format);
                statistics.add(residuals, noise, m_format.height, crop);
            }
            if (columns)
                columnSurvey.add(samples, crop.x, crop.y);
        });
        if (pixels) {
            takeLattice(findLattice(statistics), corner, end);
            takePixels(
                findSinglePixels(statistics, m_found.repair.lattice,
                                 m_format.whiteLevel >> std::max(0, m_format.bitsPerSample - 14)));
        }
        if (columns)
            takeColumns(columnSurvey.result());
    }

    FoundRepair found() { return std::move(m_found); }

private:
    template <typename... Values>
    void remark(const char *pattern, Values... values)
    {
        m_found.remarks.push_back(mlvdump::format(pattern, values...));
    }

    /// Calls `work(samples, crop)` for each frame, calibrated, on several threads.
    template <typename Work>
    void forEachGoodFrame(std::span<const mlv::DataBlock> frames, Work work) const
    {
        forEachFrame(m_recording, frames, m_threads, [&](auto &decoder, const auto &block) {
            std::span<std::uint16_t> samples;
            try {
                samples = decoder.decode(block);
            } catch (const raw::ReadError &) {
                throw;
            } catch (const raw::Error &) {
                return; // the extraction tells of damaged frames
            }
            m_calibration.apply(samples);
            work(samples, cropOf(block));
        });
    }

    bool rowsAlternate() const
    {
        bool alternate = false;
        forEachGoodFrame(
            std::span(m_frames).first(std::min<std::size_t>(1, m_frames.size())),
            [&](auto samples, const auto &) { alternate = rowPairsAlternate(samples, m_format); });
        return alternate;
    }

    /// Of the read-out, from its upper left corner up to its lower right end.
    std::pair<Place, Place> surveyedPart() const
    {
        Place corner = m_frames.empty() ? Place{} : cropOf(m_frames.front());
        Place last = corner;
        for (const auto &block : m_frames) {
            const Place crop = cropOf(block);
            corner = {std::min(corner.y, crop.y), std::min(corner.x, crop.x)};
            last = {std::max(last.y, crop.y), std::max(last.x, crop.x)};
        }
        return {corner, {last.y + m_format.height, last.x + m_format.width}};
    }

    void takePixels(const SinglePixels &single)
    {
        auto &pixels = m_found.repair.pixels;
        for (const auto *places : {&single.hot, &single.cold, &single.stuck})
            pixels.insert(pixels.end(), places->begin(), places->end());
        std::sort(pixels.begin(), pixels.end());
        pixels.erase(std::unique(pixels.begin(), pixels.end()), pixels.end());
        remark("Repaired pixels: %zu hot, %zu cold, %zu stuck", single.hot.size(),
               single.cold.size(), single.stuck.size());
    }

    void takeLattice(const std::optional<Lattice> &lattice, const Place &corner, const Place &end)
    {
        if (!lattice)
            return;
        m_found.repair.lattice = lattice;
        std::size_t places = 0;
        for (int y = corner.y; y < end.y; ++y)
            for (int x = corner.x; x < end.x; ++x)
                places += lattice->has(x, y) ? 1U : 0U;
        const auto period = periodOf(*lattice);
        const int first = std::max(corner.y, lattice->firstLine);
        const int last = std::min(end.y - 1, lattice->lastLine);
        remark(
            "Repaired pixels: a lattice of %zu, repeated every %d columns and %d lines, on lines "
            "%d to %d of the sensor",
            places, period.columns, period.lines, first, last);
    }

    void takeColumns(const ColumnSurvey::Result &result)
    {
        m_found.repair.columns = result.gains;
        if (result.gains) {
            remark("Repaired columns: gains from %.4f to %.4f, known to %.4f",
                   result.gains->least(), result.gains->most(), result.scatter);
        } else {
            m_found.remarks.emplace_back("Repaired columns: none");
        }
    }

    const mlv::Recording &m_recording;
    const mlv::FrameFormat &m_format;
    const Calibration &m_calibration;
    unsigned m_threads;
    std::vector<mlv::DataBlock> m_frames;
    FoundRepair m_found;
};

} // namespace

FoundRepair findRepair(const mlv::Recording &recording, const std::filesystem::path &recordingPath,
                       const RepairChoice &choice, const mlv::FrameFormat &format,
                       const Calibration &calibration, unsigned threads)
{
    using Pixels = RepairChoice::Pixels;
    if (choice.isNothing())
        return {};
    RepairSearch search(recording, format, calibration, threads);
    if (choice.pixels == Pixels::Map) {
        search.takeMap(choice.map);
    } else if (choice.pixels == Pixels::Auto) {
        if (const auto map = pixelMapBeside(recordingPath, recording))
            search.takeMap(*map);
    }
    if (choice.pixels == Pixels::Auto || choice.columns)
        search.survey(choice.pixels == Pixels::Auto, choice.columns);
    return search.found();
}

} // namespace mlvdump
