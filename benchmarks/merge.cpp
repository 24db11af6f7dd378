// SPDX-License-Identifier: MIT
// How fast neighbouring frames of 1920x1080 are merged: in memory beside the plain computation and
// beside copying the same bytes, and with the files beside copying those. The best of the rounds.
#include "conversion/hdrdualimagesmerge.h"
#include "conversion/mergepixels.h"
#include "conversion/mergereference.h"
#include "row.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <functional>
#include <random>
#include <vector>

using filmwright::HDRDualImagesMerge;
using filmwright::mergePixels;
using filmwright::TiffBitmap;

namespace {

constexpr int width = 1920;
constexpr int height = 1080;
constexpr std::size_t pixels = std::size_t(width) * height;
constexpr int rounds = 7;
constexpr int frames = 12;

using Bytes = std::vector<std::uint8_t>;

struct Work
{
    std::function<void()> work;
    double best = 0; // megapixels a second
};

// Gradients with a little noise, as films have them.
Bytes smoothFrame(double brightness, unsigned seed)
{
    std::mt19937 generator(seed);
    Bytes bytes(3 * pixels);
    for (std::size_t i = 0; i < pixels; ++i) {
        const double x = double(i % width) / width;
        const double y = double(i / width) / height;
        const double levels[3] = {x, y, 1 - (x + y) / 2};
        for (std::size_t channel = 0; channel < 3; ++channel) {
            const double noise = double(generator() % 8);
            bytes[3 * i + channel] =
                std::uint8_t(std::min(255.0, 247 * brightness * levels[channel] + noise));
        }
    }
    return bytes;
}

Bytes randomFrame(unsigned seed)
{
    std::mt19937 generator(seed);
    Bytes bytes(3 * pixels);
    std::generate(bytes.begin(), bytes.end(), [&] { return std::uint8_t(generator()); });
    return bytes;
}

double elapsedSeconds()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double>(now).count();
}

// For what only computes: other programs that want the same core don't count.
double processorSeconds()
{
    return double(std::clock()) / CLOCKS_PER_SEC;
}

// In turn, so that what disturbs the machine disturbs all of them.
void measure(std::vector<Work> &works, std::size_t pixelsOfARound, double (*seconds)())
{
    for (int round = 0; round < rounds; ++round) {
        for (Work &work : works) {
            const double start = seconds();
            work.work();
            const double time = seconds() - start;
            work.best = std::max(work.best, double(pixelsOfARound) / 1e6 / time);
        }
    }
}

void measureInMemory(const char *beside, const char *besideCopy, const Bytes &first,
                     const Bytes &second)
{
    Bytes result(first.size());
    Bytes copy(2 * first.size());
    std::vector<Work> works = {
        {[&] { mergePixels(first.data(), second.data(), result.data(), pixels); }},
        {[&] { mergeReference(first.data(), second.data(), result.data(), pixels); }},
        {[&] {
            std::memcpy(copy.data(), first.data(), first.size());
            std::memcpy(copy.data() + first.size(), second.data(), second.size());
        }},
    };
    measure(works, pixels, processorSeconds);
    printRow("merging frames in memory", works[0].best, "MP/s", beside, works[1].best);
    printRow("merging frames in memory", works[0].best, "MP/s", besideCopy, works[2].best);
}

// Beside the same samples with 8 bits, of which twice as many fit into a vector.
void measureDeepInMemory(const Bytes &first, const Bytes &second)
{
    const auto deepened = [](const Bytes &bytes) {
        std::vector<std::uint16_t> samples(bytes.size());
        std::transform(bytes.begin(), bytes.end(), samples.begin(),
                       [](std::uint8_t byte) { return std::uint16_t(257 * byte); });
        return samples;
    };
    const auto deepFirst = deepened(first);
    const auto deepSecond = deepened(second);
    std::vector<std::uint16_t> deepResult(first.size());
    Bytes result(first.size());
    std::vector<Work> works = {
        {[&] { mergePixels(deepFirst.data(), deepSecond.data(), deepResult.data(), pixels); }},
        {[&] { mergePixels(first.data(), second.data(), result.data(), pixels); }},
    };
    measure(works, pixels, processorSeconds);
    printRow("merging frames of 16 bits in memory", works[0].best, "MP/s",
             "frames of 8 bits, smooth", works[1].best);
}

bool measureWithFiles(const Bytes &first, const Bytes &second)
{
    const QTemporaryDir folder;
    const QString hdr = folder.filePath(QStringLiteral("hdr/"));
    const QString copies = folder.filePath(QStringLiteral("copies/"));
    const auto path = [&](int i) { return folder.filePath(QStringLiteral("%1.tiff").arg(i)); };
    for (int i = 0; i < frames; ++i) {
        const Bytes &bytes = i % 2 == 0 ? first : second;
        const QByteArray samples(reinterpret_cast<const char *>(bytes.data()),
                                 qsizetype(bytes.size()));
        if (!TiffBitmap({width, height, 3, 8, 3 * width}, samples).write(path(i)))
            return false;
    }
    const auto renew = [](const QString &name) {
        QDir(name).removeRecursively();
        QDir().mkpath(name);
    };
    std::vector<Work> works = {
        {[&] {
            renew(hdr);
            HDRDualImagesMerge merger;
            merger.setExtractionPath(hdr);
            for (int i = 1; i < frames; ++i) {
                merger.setFirstImagePath(path(i - 1));
                merger.setSecondImagePath(path(i));
                merger.hdrMerge();
            }
        }},
        {[&] {
            renew(copies);
            for (int i = 0; i < frames - 1; ++i)
                QFile::copy(path(i), copies + QString::number(i));
        }},
    };
    measure(works, pixels * (frames - 1), elapsedSeconds);
    printRow("merging frame files", works[0].best, "MP/s", "copying the files", works[1].best);
    return QFile::exists(hdr + QStringLiteral("0.tiff"));
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const Bytes first = smoothFrame(1.0, 1);
    const Bytes second = smoothFrame(0.4, 2);
    measureInMemory("plain computation, smooth frames", "copying both, smooth frames", first,
                    second);
    measureInMemory("plain computation, random frames", "copying both, random frames",
                    randomFrame(3), randomFrame(4));
    measureDeepInMemory(first, second);
    if (!measureWithFiles(first, second)) {
        std::fprintf(stderr, "No frames could be written to the temporary folder\n");
        return 1;
    }
    return 0;
}
