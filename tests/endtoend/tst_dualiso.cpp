// SPDX-License-Identifier: MIT
// Recordings of two exposures: rows that alternate, frames that alternate.

#include "commandline.h"
#include "sample.h"
#include "support/testprogram.h"
#include "support/toolfolder.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>

#include <cmath>
#include <csignal>
#include <numeric>
#include <vector>

namespace {

constexpr int dualWidth = 320;
constexpr int dualHeight = 192;

double mean(const char *begin, qsizetype count)
{
    const double sum = std::accumulate(begin, begin + count, 0.0, [](double so, char sample) {
        return so + static_cast<double>(static_cast<uchar>(sample));
    });
    return sum / static_cast<double>(count);
}

double standardDeviationOfMeans(const QList<QByteArray> &frames)
{
    std::vector<double> means;
    for (const QByteArray &frame : frames)
        means.push_back(mean(frame.constData(), frame.size()));
    const auto count = static_cast<double>(means.size());
    const double average = std::accumulate(means.begin(), means.end(), 0.0) / count;
    double squares = 0;
    for (const double value : means)
        squares += (value - average) * (value - average);
    return std::sqrt(squares / count);
}

/// How strongly the rows' means alternate with a period of four rows.
double rowPattern(const QByteArray &frame)
{
    double cosine = 0;
    double sine = 0;
    for (int row = 0; row < dualHeight; ++row) {
        const double value = mean(frame.constData() + row * dualWidth, dualWidth);
        cosine += value * std::cos(M_PI / 2 * row);
        sine += value * std::sin(M_PI / 2 * row);
    }
    return std::hypot(cosine, sine) / dualHeight;
}

const QString size = QStringLiteral("--size 320x192 --fps 24 ");

} // namespace

class TestDualIso : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void blendedMovieHasNoRowPatternAndNoFlicker();
    void ordinaryRecordingPassesTheBlendUnchanged();
    void missingBlenderIsNamed();
    void mergedMovieHasOneFrameLess();
    void secondStartMergesNothingAgain();
    void singleFrameFailsWithoutAMovie();

private:
    QString path(const char *name) const { return m_folder->filePath(QString::fromUtf8(name)); }
    QList<QByteArray> convert(const char *clip, const QStringList &options)
    {
        CommandLine cli;
        cli.run(QStringList{QStringLiteral("convert"), QStringLiteral("--quality"),
                            QStringLiteral("maximum")} +
                options + QStringList{path(clip)});
        return cli.status() == 0 ? lumaFrames(cli.output().value(0)) : QList<QByteArray>();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestDualIso::blendedMovieHasNoRowPatternAndNoFlicker()
{
    QVERIFY(writeSample(path("rows.MLV"), size + QStringLiteral("--frames 24 --dual-iso 100/800")));
    QVERIFY(writeSample(path("truth.MLV"), size + QStringLiteral("--frames 24 --perfect")));
    const auto truth = convert("truth.MLV", {});
    QCOMPARE(truth.size(), 24);
    const auto alternating = convert("rows.MLV", {});
    const auto blended = convert("rows.MLV", {QStringLiteral("--dual-iso")});
    QCOMPARE(blended.size(), 24);
    // The scene has rows of its own that differ; what counts is what the recording adds to it.
    const double pattern = rowPattern(truth[12]);
    const double added = std::abs(rowPattern(blended[12]) - pattern);
    QVERIFY2(added < 0.05 * std::abs(rowPattern(alternating[12]) - pattern),
             qPrintable(QString::number(added)));
    const double flicker = standardDeviationOfMeans(blended) / standardDeviationOfMeans(truth);
    QVERIFY2(flicker < 1.2, qPrintable(QString::number(flicker)));
}

void TestDualIso::ordinaryRecordingPassesTheBlendUnchanged()
{
    QVERIFY(writeSample(path("plain.MLV"), size + QStringLiteral("--frames 2")));
    const auto plain = convert("plain.MLV", {});
    QCOMPARE(plain.size(), 2);
    QVERIFY(convert("plain.MLV", {QStringLiteral("--dual-iso")}) == plain);
}

void TestDualIso::missingBlenderIsNamed()
{
    QVERIFY(writeSample(path("plain.MLV"), size + QStringLiteral("--frames 2")));
    ToolFolder tools;
    for (const char *name : {"mlv_dump", "dcraw", "ffmpeg"})
        tools.linkTool(QString::fromUtf8(name), realTool(QString::fromUtf8(name)));
    CommandLine cli;
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("bin")));
    QVERIFY(QFile::copy(cli.program, path("bin/filmwright-cli")));
    cli.program = path("bin/filmwright-cli");
    cli.environment.insert(QStringLiteral("PATH"), m_folder->path());
    QVERIFY(cli.run({QStringLiteral("convert"), QStringLiteral("--dual-iso"), path("plain.MLV")}));
    QCOMPARE(cli.status(), 2);
    QVERIFY(cli.messages().constLast().startsWith(
        QStringLiteral("filmwright-cli: the tool cr2hdr was not found; it was looked for in ")));
}

void TestDualIso::mergedMovieHasOneFrameLess()
{
    QVERIFY(writeSample(path("frames.MLV"), size + QStringLiteral("--frames 6 --hdr 3")));
    CommandLine cli;
    QVERIFY(cli.run({QStringLiteral("convert"), QStringLiteral("--hdr"), path("frames.MLV")}));
    QCOMPARE(cli.status(), 0);
    QVERIFY(cli.messages().contains(QStringLiteral("frames.MLV: encoding, 5 frames")));
    const Movie movie = Movie::probe(path("frames.mov"));
    QCOMPARE(movie.frames(), 5);
    QCOMPARE(movie.sound.size(), 0);
    QCOMPARE(cli.temporaryEntries(), QStringList());
}

void TestDualIso::secondStartMergesNothingAgain()
{
    QVERIFY(writeSample(path("frames.MLV"), size + QStringLiteral("--frames 4 --hdr 3")));
    const QDir hdr(path("work/FilmwrightTmp/frames.MLV/hdr"));
    const QStringList arguments{QStringLiteral("convert"), QStringLiteral("--hdr"),
                                QStringLiteral("--temp-dir"), path("work"), path("frames.MLV")};
    QList<QDateTime> written;
    for (int run = 0; run < 2; ++run) {
        ToolFolder tools;
        tools.addTool(QStringLiteral("ffmpeg"),
                      QStringLiteral("echo up > \"$0.up\"; exec sleep 1000"));
        CommandLine cli;
        cli.start(arguments);
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(tools.path() + QStringLiteral("/ffmpeg.up")), 60000);
        cli.sendSignal(SIGINT);
        QVERIFY(cli.waitForEnd());
        const QFileInfoList merged = hdr.entryInfoList(QDir::Files);
        QCOMPARE(merged.size(), 3);
        for (qsizetype frame = 0; frame < merged.size(); ++frame)
            if (run == 0)
                written << merged.at(frame).lastModified();
            else
                QCOMPARE(merged.at(frame).lastModified(), written.at(frame));
    }
}

void TestDualIso::singleFrameFailsWithoutAMovie()
{
    QVERIFY(writeSample(path("one.MLV"), size + QStringLiteral("--frames 1")));
    CommandLine cli;
    QVERIFY(cli.run({QStringLiteral("convert"), QStringLiteral("--hdr"), path("one.MLV")}));
    QCOMPARE(cli.status(), 1);
    QCOMPARE(cli.messages().constLast(),
             QStringLiteral("one.MLV: failed: its only frame has no neighbour to be merged with"));
    QVERIFY(!QFile::exists(path("one.mov")));
}

FILMWRIGHT_TEST(TestDualIso, QCoreApplication)
#include "tst_dualiso.moc"
