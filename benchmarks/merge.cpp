// SPDX-License-Identifier: MIT
// How fast neighbouring frames are merged: in memory beside the plain computation and beside
// copying the same bytes, and with the files beside copying those.
#include "conversion/hdrdualimagesmerge.h"
#include "conversion/mergepixels.h"
#include "conversion/mergereference.h"

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

struct Row
{
    const char *name;
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

// The rows in turn, so that what disturbs the machine disturbs all of them; the best round counts.
void measure(std::vector<Row> &rows, std::size_t pixelsOfARound, double (*seconds)())
{
    for (int round = 0; round < rounds; ++round) {
        for (Row &row : rows) {
            const double start = seconds();
            row.work();
            const double time = seconds() - start;
            row.best = std::max(row.best, double(pixelsOfARound) / 1e6 / time);
        }
    }
}

void print(const char *title, const std::vector<Row> &rows)
{
    std::printf("%-28s %14s %10s\n", title, "megapixels/s", "ratio");
    for (const Row &row : rows)
        std::printf("%-28s %14.1f %10.2f\n", row.name, row.best, row.best / rows.front().best);
    std::printf("\n");
}

void measureInMemory(const char *title, const Bytes &first, const Bytes &second)
{
    Bytes result(first.size());
    Bytes copy(2 * first.size());
    std::vector<Row> rows = {
        {"plain computation",
         [&] { mergeReference(first.data(), second.data(), result.data(), pixels); }},
        {"merge", [&] { mergePixels(first.data(), second.data(), result.data(), pixels); }},
        {"copy of both frames",
         [&] {
             std::memcpy(copy.data(), first.data(), first.size());
             std::memcpy(copy.data() + first.size(), second.data(), second.size());
         }},
    };
    measure(rows, pixels, processorSeconds);
    print(title, rows);
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
    std::vector<Row> rows = {
        {"copies of the files",
         [&] {
             renew(copies);
             for (int i = 0; i < frames - 1; ++i)
                 QFile::copy(path(i), copies + QString::number(i));
         }},
        {"read, merge, write",
         [&] {
             renew(hdr);
             HDRDualImagesMerge merger;
             merger.setExtractionPath(hdr);
             for (int i = 1; i < frames; ++i) {
                 merger.setFirstImagePath(path(i - 1));
                 merger.setSecondImagePath(path(i));
                 merger.hdrMerge();
             }
         }},
    };
    measure(rows, pixels * (frames - 1), elapsedSeconds);
    print("files", rows);
    return QFile::exists(hdr + QStringLiteral("0.tiff"));
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const Bytes first = smoothFrame(1.0, 1);
    const Bytes second = smoothFrame(0.4, 2);
    std::printf("Frames of %d x %d, best of %d rounds\n\n", width, height, rounds);
    measureInMemory("smooth frames", first, second);
    measureInMemory("random frames", randomFrame(3), randomFrame(4));
    if (!measureWithFiles(first, second)) {
        std::fprintf(stderr, "No frames could be written to the temporary folder\n");
        return 1;
    }
    return 0;
}
