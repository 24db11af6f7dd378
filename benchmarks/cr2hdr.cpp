// SPDX-License-Identifier: MIT
// How fast cr2hdr blends dual-ISO frames, beside copying the same files; with the argument
// "quality", what it makes of them: the developed picture beside the scene's truth, and the noise
// of the shadows.
#include "dng/rawfile.h"
#include "mlv_sample/scene.h"
#include "row.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace {

constexpr int qualityWidth = 1280;
constexpr int qualityHeight = 720;
constexpr int speedFrames = 24;
constexpr int rounds = 5;

/// Ends the benchmark if the program fails: its figures would mean nothing.
QByteArray run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(program, arguments);
    if (!process.waitForFinished(-1) || process.exitCode() != 0)
        throw std::runtime_error(qPrintable(program + QStringLiteral(" failed")));
    return process.readAllStandardOutput();
}

QString tool(const QString &name)
{
    return QStringLiteral(FILMWRIGHT_RESOURCES_DIR "/") + name;
}

/// The frames of a new recording, in a folder of their own below `folder`.
QStringList frames(const QString &folder, const QString &name, const QStringList &options)
{
    const QString recording = folder + QLatin1Char('/') + name + QStringLiteral(".MLV");
    run(tool(QStringLiteral("mlv_sample")), QStringList(options)
                                                << QStringLiteral("--no-sound") << recording);
    const QDir frameFolder(folder + QLatin1Char('/') + name);
    frameFolder.mkpath(QStringLiteral("."));
    run(tool(QStringLiteral("mlv_dump")), {QStringLiteral("--dng"), QStringLiteral("-o"),
                                           frameFolder.filePath(QStringLiteral("tmp")), recording});
    QStringList paths;
    for (const QString &file : frameFolder.entryList({QStringLiteral("*.dng")}, QDir::Files))
        paths.append(frameFolder.filePath(file));
    return paths;
}

QByteArray developed(const QString &path)
{
    return run(QStringLiteral("dcraw"),
               QStringLiteral("-c -H 3 -q 3 -w -W -b 4").split(QLatin1Char(' ')) << path)
        .right(qsizetype{qualityWidth} * qualityHeight * 3);
}

double psnr(const QByteArray &picture, const QByteArray &truth)
{
    double squares = 0;
    for (qsizetype i = 0; i < truth.size(); ++i) {
        const int difference = int{static_cast<quint8>(picture[i])} - static_cast<quint8>(truth[i]);
        squares += difference * difference;
    }
    return 10 * std::log10(255.0 * 255.0 * static_cast<double>(truth.size()) / squares);
}

/// The noise in the middle of a step of the grey ramp, as a share of full scale.
double noise(const QString &path, const QString &truthPath, int step)
{
    const dng::RawFile file(path.toStdString());
    const dng::RawFile truthFile(truthPath.toStdString());
    const auto samples = file.samples();
    const auto truth = truthFile.samples();
    const auto light = [](const dng::RawFormat &format, double sample) {
        return (sample - format.blackLevel) / (format.whiteLevel - format.blackLevel);
    };
    constexpr int margin = 10;
    const sample::Area area = sample::greyStep(step);
    double squares = 0;
    double count = 0;
    for (int y = static_cast<int>(area.top * qualityHeight) + margin;
         y < static_cast<int>(area.bottom * qualityHeight) - margin; ++y) {
        for (int x = static_cast<int>(area.left * qualityWidth) + margin;
             x < static_cast<int>(area.right * qualityWidth) - margin; ++x) {
            const std::size_t i =
                static_cast<std::size_t>(y) * qualityWidth + static_cast<std::size_t>(x);
            const double difference =
                light(file.format(), samples[i]) - light(truthFile.format(), truth[i]);
            squares += difference * difference;
            count += 1;
        }
    }
    return std::sqrt(squares / count);
}

void measureQuality(const QString &folder)
{
    const QString size = QStringLiteral("%1x%2").arg(qualityWidth).arg(qualityHeight);
    const QStringList common{QStringLiteral("--size"), size, QStringLiteral("--frames"),
                             QStringLiteral("1")};
    const QString low = frames(folder, QStringLiteral("low"), common).first();
    const QString truth =
        frames(folder, QStringLiteral("truth"),
               QStringList(common) << QStringLiteral("--perfect") << QStringLiteral("--bits")
                                   << QStringLiteral("16"))
            .first();
    const QByteArray truthPicture = developed(truth);

    std::printf("%-10s %28s %28s\n", "", "PSNR of the picture, dB", "less noise than ISO 100, EV");
    std::printf("%-10s %8s %8s %10s %9s %9s %9s\n", "ISO pair", "before", "blended", "ISO 100",
                "8 stops", "9 stops", "10 stops");
    for (const int highIso : {400, 800, 1600}) {
        const QString pair = QStringLiteral("100/%1").arg(highIso);
        const QString path = frames(folder, QStringLiteral("dual%1").arg(highIso),
                                    QStringList(common) << QStringLiteral("--dual-iso") << pair)
                                 .first();
        const double before = psnr(developed(path), truthPicture);
        run(tool(QStringLiteral("cr2hdr")), {path});
        const auto gain = [&](int step) {
            return std::log2(noise(low, truth, step) / noise(path, truth, step));
        };
        std::printf("%-10s %8.2f %8.2f %10.2f %9.2f %9.2f %9.2f\n", qPrintable(pair), before,
                    psnr(developed(path), truthPicture), psnr(developed(low), truthPicture),
                    gain(8), gain(9), gain(10));
    }
}

template <typename Work>
double seconds(const Work &work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void copyAll(const QStringList &paths, const QString &folder)
{
    for (const QString &path : paths) {
        const QString copy = folder + QLatin1Char('/') + QFileInfo(path).fileName();
        QFile::remove(copy);
        if (!QFile::copy(path, copy))
            throw std::runtime_error(qPrintable(copy + QStringLiteral(" can't be written")));
    }
}

void measureSpeed(const QString &folder)
{
    const QStringList originals = frames(folder, QStringLiteral("speed"),
                                         {QStringLiteral("--size"), QStringLiteral("1920x1080"),
                                          QStringLiteral("--frames"), QString::number(speedFrames),
                                          QStringLiteral("--dual-iso"), QStringLiteral("100/800")});
    const QString work = folder + QStringLiteral("/work");
    QDir().mkpath(work);
    QStringList paths;
    for (const QString &path : originals)
        paths.append(work + QLatin1Char('/') + QFileInfo(path).fileName());
    double bestCopy = 1e9;
    double bestBlend = 1e9;
    for (int round = 0; round < rounds; ++round) {
        bestCopy = std::min(bestCopy, seconds([&] { copyAll(originals, work); }));
        bestBlend =
            std::min(bestBlend, seconds([&] { run(tool(QStringLiteral("cr2hdr")), paths); }));
    }
    constexpr double megapixels = speedFrames * 1920 * 1080 / 1e6;
    printRow("blending dual-ISO frames", megapixels / bestBlend, "MP/s", "copying the files",
             megapixels / bestCopy);
}

} // namespace

int main(int argc, char **argv)
{
    const QTemporaryDir folder;
    try {
        if (argc > 1 && std::strcmp(argv[1], "quality") == 0)
            measureQuality(folder.path());
        else
            measureSpeed(folder.path());
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
