// SPDX-License-Identifier: MIT
#include "faketools.h"

#include "conversion/tiffbitmap.h"
#include "support/fakemovie.h"

#include <QFile>
#include <QTest>

using namespace filmwright;

namespace {

/// Longer than any block that the application reads.
constexpr int linesPerBlock = 20;

QString quoted(QString text)
{
    return QLatin1Char('\'') + text.replace(QLatin1Char('\''), QLatin1String("'\\''")) +
           QLatin1Char('\'');
}

} // namespace

FakeTools::FakeTools(int frames)
    : m_frames(frames)
    , m_extraction(extraction(frames))
    , m_averaging(averaging(frames))
    , m_substraction(averaging(1))
    , m_verification(QStringLiteral("echo Processed 1 video frames; echo Done"))
{
    for (const QString &header :
         {QStringLiteral("EXPO"), QStringLiteral("IDNT"), QStringLiteral("LENS")})
        for (int line = 1; line <= linesPerBlock; ++line)
            m_blocks[header][line] = QStringLiteral("f/1");
    writeTiff(path(QStringLiteral("whole.tiff")));
    writeMovie(path(QStringLiteral("whole.mov")), frames);
    writeMlvDump();
    setConversion(QStringLiteral("cp \"$frame\" \"$tiff\""));
    setEncoding(QStringLiteral("echo 'frame= 1'; cp \"$film\" \"$movie\""));
    setBlending(QStringLiteral("echo 'blended : all'"));
}

QString FakeTools::extraction(int frames)
{
    return QStringLiteral(
               "n=0; end=%1\n"
               "case \" $* \" in\n"
               "*' --write-survey '*)"
               " echo 'Processed %1 video frames at 25.0 FPS (1.0 s)'; echo Done; exit;;\n"
               "*' --use-survey '*)"
               " end=$((${5#*-} + 1)); case $5 in *-*) n=${5%%-*};; esac;;\n"
               "esac\n"
               "while [ $n -lt $end ]; do echo dng > \"$prefix$(printf '%06d' $n).dng\"; "
               "n=$((n + 1)); done; echo Done")
        .arg(frames);
}

QString FakeTools::averaging(int frames)
{
    return QStringLiteral("echo average > \"$average\"\n"
                          "echo 'Processed %1 video frames at 25.0 FPS (1.0 s)'; echo Done")
        .arg(frames);
}

void FakeTools::writeMlvDump()
{
    QString report = QStringLiteral("printf 'File Header (MLVI)\\n1:\\n2:\\n3:\\nFPS: %1\\n5:\\n"
                                    "Video: %2\\nAudio: 0\\n'\n")
                         .arg(m_rate)
                         .arg(m_frames);
    for (auto block = m_blocks.cbegin(); block != m_blocks.cend(); ++block) {
        report += QStringLiteral("echo 'Block: %1'\n").arg(block.key());
        for (int line = 1; line <= linesPerBlock; ++line)
            report +=
                QStringLiteral("echo %1\n").arg(quoted(QStringLiteral(": ") + block->value(line)));
    }
    tools.addTool(QStringLiteral("mlv_dump"),
                  QStringLiteral("for last; do :; done\n"
                                 "recording=$2; prefix=$last; average=$4\n"
                                 "case $1 in\n"
                                 "-m) recording=$3\n%1\n%2echo Done ;;\n"
                                 "--dng) %3 ;;\n-a) %4 ;;\n-s) %5 ;;\n--verify) %6 ;;\nesac")
                      .arg(m_beforeReport, report, m_extraction, m_averaging, m_substraction,
                           m_verification));
}

void FakeTools::setBlock(const QString &header, const QMap<int, QString> &values)
{
    m_blocks[header] = values;
    writeMlvDump();
}

void FakeTools::setRawInformation(const QString &resolution, int bitsPerSample)
{
    setBlock(QStringLiteral("RAWI"),
             {{4, resolution},
              // This line is known by its name and has no separator.
              {5, QStringLiteral("\n  bits_per_pixel   %1").arg(bitsPerSample)}});
}

void FakeTools::setRate(const QString &rate)
{
    m_rate = rate;
    writeMlvDump();
}

void FakeTools::setBeforeReport(const QString &script)
{
    m_beforeReport = script;
    writeMlvDump();
}

void FakeTools::setExtraction(const QString &script)
{
    m_extraction = script;
    writeMlvDump();
}

void FakeTools::setAveraging(const QString &script)
{
    m_averaging = script;
    writeMlvDump();
}

void FakeTools::setSubstraction(const QString &script)
{
    m_substraction = script;
    writeMlvDump();
}

void FakeTools::setVerification(const QString &script)
{
    m_verification = script;
    writeMlvDump();
}

void FakeTools::setConversion(const QString &script)
{
    tools.addTool(QStringLiteral("dcraw"),
                  QStringLiteral("for dng; do :; done; tiff=\"${dng%.dng}.tiff\"; frame='%1'\n%2")
                      .arg(path(QStringLiteral("whole.tiff")), script));
}

void FakeTools::setEncoding(const QString &script)
{
    tools.addTool(QStringLiteral("ffmpeg"), QStringLiteral("for movie; do :; done; film='%1'\n%2")
                                                .arg(path(QStringLiteral("whole.mov")), script));
}

void FakeTools::setBlending(const QString &script)
{
    tools.addTool(QStringLiteral("cr2hdr"), script);
}

QString FakeTools::untilReleased(const QString &name) const
{
    return QStringLiteral("while [ ! -e '%1' ]; do sleep 0.02; done\n").arg(path(name));
}

void FakeTools::release(const QString &name) const
{
    QVERIFY(QFile(path(name)).open(QIODevice::WriteOnly));
}

void FakeTools::writeTiff(const QString &path, int width)
{
    constexpr int height = 2;
    const TiffBitmap::Layout layout{width, height, 3, 8, 3 * width};
    QVERIFY2(TiffBitmap(layout, QByteArray(3 * width * height, '\x40')).write(path),
             "TIFF not written");
}

void FakeTools::writeMovie(const QString &path, int frames)
{
    QFile movie(path);
    QVERIFY2(movie.open(QIODevice::WriteOnly), "movie not written");
    movie.write(fakeMovie(frames));
}
