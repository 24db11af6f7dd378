// SPDX-License-Identifier: MIT
#include "cr2hdr/boxmean.h"

#include "cr2hdr/mirrored.h"
#include "cr2hdr/parallelrows.h"

#include <algorithm>

namespace dualiso {
namespace {

void meanOfRow(std::span<const float> row, int reach, std::span<float> means)
{
    const auto width = static_cast<int>(row.size());
    const auto value = [&](int x) { return row[static_cast<std::size_t>(mirrored(x, width))]; };
    for (int x = 0; x < width; ++x) {
        // Added up anew for each column: a running sum of squares would lose the small ones that
        // follow large ones.
        float sum = 0;
        if (x >= reach && x + reach < width) {
            const float *first = row.data() + (x - reach);
            for (int i = 0; i <= 2 * reach; ++i)
                sum += first[i];
        } else {
            for (int i = -reach; i <= reach; ++i)
                sum += value(x + i);
        }
        means[static_cast<std::size_t>(x)] = sum / static_cast<float>(2 * reach + 1);
    }
}

} // namespace

Frame boxMean(const Frame &frame, int reachX, int reachY, int threads)
{
    Frame rows(frame.width, frame.height);
    parallelRows(frame.height, threads, [&](int first, int end) {
        for (int y = first; y < end; ++y)
            meanOfRow(frame.row(y), reachX, rows.row(y));
    });
    Frame means(frame.width, frame.height);
    parallelRows(frame.height, threads, [&](int first, int end) {
        for (int y = first; y < end; ++y) {
            auto mean = means.row(y);
            for (int i = -reachY; i <= reachY; ++i) {
                const auto row = rows.row(mirrored(y + i, frame.height));
                for (std::size_t x = 0; x < mean.size(); ++x)
                    mean[x] += row[x] / static_cast<float>(2 * reachY + 1);
            }
        }
    });
    return means;
}

} // namespace dualiso
