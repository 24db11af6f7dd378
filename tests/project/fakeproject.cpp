// SPDX-License-Identifier: MIT
#include "fakeproject.h"

#include "conversion/tiffbitmap.h"
#include "runner/temporarydirectory.h"
#include "support/fakemovie.h"

#include <QFile>
#include <QTest>

using namespace filmwright;

FakeProject::FakeProject(int frames)
    : m_frames(frames)
{
    QVERIFY2(setBaseTemporaryDirectory(m_folder.path()), "no temporary directory");
    QVERIFY2(QFile(recording()).open(QIODevice::WriteOnly), "no recording");
    writeTiff(path(QStringLiteral("whole.tiff")));
    writeMovie(path(QStringLiteral("whole.mov")), frames);
    setExtraction(extraction(frames));
    setConversion(QStringLiteral("cp \"$frame\" \"$tiff\""));
    setEncoding(QStringLiteral("echo 'frame= 1'; cp \"$film\" \"$movie\""));
    setBlending(QStringLiteral("echo 'blended : all'"));
}

FakeProject::~FakeProject()
{
    if (controller)
        controller->setDelegate(nullptr);
}

QString FakeProject::extraction(int frames)
{
    return QStringLiteral(
               "n=0; while [ $n -lt %1 ]; do echo dng > \"$prefix$(printf '%06d' $n).dng\"; "
               "n=$((n + 1)); done; echo Done")
        .arg(frames);
}

void FakeProject::setExtraction(const QString &script)
{
    m_extraction = script;
    tools.addTool(
        QStringLiteral("mlv_dump"),
        QStringLiteral("for prefix; do :; done\n"
                       "if [ \"$1\" = -m ]; then\n"
                       "printf 'File Header (MLVI)\\n1:\\n2:\\n3:\\nFPS: 25.0\\n5:\\nVideo: "
                       "%1\\nAudio: 0\\n'\n"
                       "for block in EXPO IDNT LENS; do echo \"Block: $block\"\n"
                       "for n in 1 2 3 4 5 6 7 8 9 10 11 12; do echo ': f/1'; done; done\n"
                       "%2echo Done; else %3\nfi")
            .arg(m_frames)
            .arg(m_rawInformation, script));
}

void FakeProject::setRawInformation(const QString &resolution, int bitsPerSample)
{
    m_rawInformation = QStringLiteral("echo 'Block: RAWI'; for n in 1 2 3; do echo ':'; done\n"
                                      "echo 'Res : %1'; echo '  bits_per_pixel   %2'\n"
                                      "for n in 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15; do echo :; "
                                      "done\n")
                           .arg(resolution)
                           .arg(bitsPerSample);
    setExtraction(m_extraction);
}

void FakeProject::setConversion(const QString &script)
{
    tools.addTool(QStringLiteral("dcraw"),
                  QStringLiteral("for dng; do :; done; tiff=\"${dng%.dng}.tiff\"; frame='%1'\n%2")
                      .arg(path(QStringLiteral("whole.tiff")), script));
}

void FakeProject::setEncoding(const QString &script)
{
    tools.addTool(QStringLiteral("ffmpeg"), QStringLiteral("for movie; do :; done; film='%1'\n%2")
                                                .arg(path(QStringLiteral("whole.mov")), script));
}

void FakeProject::setBlending(const QString &script)
{
    tools.addTool(QStringLiteral("cr2hdr"), script);
}

void FakeProject::read()
{
    controller = std::make_unique<MLVProjectController>();
    controller->setDelegate(this);
    controller->setMovieFormat(MovieFormatMOV);
    controller->setMovieQuality(MovieQualityHigh);
    controller->setMlvPath(recording());
    QTRY_COMPARE(controller->mlvProjectMode(), MLVProjectModeReady);
    QTRY_VERIFY(!controller->isToolBusy());
    events.clear();
}

void FakeProject::launch()
{
    controller->readyToGo();
    controller->launchDNGExtraction();
}

QString FakeProject::frame(int number, const QString &extension) const
{
    return controller->extractionDirectory() +
           QStringLiteral("tmp%1.%2").arg(number, 6, 10, QLatin1Char('0')).arg(extension);
}

void FakeProject::writeTiff(const QString &path) const
{
    const TiffBitmap::Layout layout{4, 2, 3, 8, 12};
    QVERIFY2(TiffBitmap(layout, QByteArray(24, '\x40')).write(path), "TIFF not written");
}

void FakeProject::writeMovie(const QString &path, int frames)
{
    QFile movie(path);
    QVERIFY2(movie.open(QIODevice::WriteOnly), "movie not written");
    movie.write(fakeMovie(frames));
}

void FakeProject::controllerUpdated(MLVProjectController &project)
{
    events << QString::number(project.mlvProjectMode());
}

void FakeProject::imageRGBReceived(const QImage &image, MLVProjectController &)
{
    events << (image.isNull() ? QStringLiteral("no image") : QStringLiteral("image"));
}

void FakeProject::controllerWorkFinished(MLVProjectController &)
{
    events << QStringLiteral("finished");
}

void FakeProject::controllerWorkError(const QString &error)
{
    events << QStringLiteral("error ") + error;
}
