// SPDX-License-Identifier: MIT
// Frames as they are shown before the conversion, on the real tools where nothing else is said.
#include "preview/framepreview.h"

#include "conversion/tiffbitmap.h"
#include "endtoend/commandline.h"
#include "endtoend/sample.h"
#include "mlvdump/mlvdumparguments.h"
#include "project/faketools.h"
#include "runner/files.h"
#include "runner/temporarydirectory.h"
#include "support/processes.h"
#include "support/testprogram.h"
#include "support/words.h"

#include <QDir>
#include <QTest>

using namespace filmwright;

namespace {

constexpr int patience = 60000; // milliseconds; a busy machine is no failure

const QString size = QStringLiteral("--size 320x180 --fps 25 --no-sound ");

/// What a preview has shown, in order: "2 quick", "2", "3: the reason".
class Shown
{
public:
    explicit Shown(FramePreview &preview)
    {
        QObject::connect(&preview, &FramePreview::shown, &m_context,
                         [this](const FrameRequest &request, const DevelopedFrame &frame) {
                             note(request, frame);
                         });
        QObject::connect(&preview, &FramePreview::fetched, &m_context,
                         [this](const FrameRequest &request, const DevelopedFrame &frame) {
                             note(request, frame);
                         });
    }

    QStringList log;
    DevelopedFrame last;

private:
    void note(const FrameRequest &request, const DevelopedFrame &frame)
    {
        QString entry = QString::number(request.frame);
        if (request.quality == FrameRequest::Quick)
            entry += QStringLiteral(" quick");
        if (request.quality == FrameRequest::Small)
            entry += QStringLiteral(" small");
        if (!frame.error.isEmpty())
            entry += QStringLiteral(": ") + frame.error;
        log << entry;
        last = frame;
    }

    QObject m_context;
};

/// Nothing has to be measured for such a frame.
FrameRequest unmeasured(const QString &recording, quint64 frame = 1)
{
    FrameRequest request{recording, frame, {}};
    request.settings.corrections.whiteLevel = QStringLiteral("recorded");
    request.settings.corrections.blackLevel = QStringLiteral("recorded");
    return request;
}

} // namespace

class TestFramePreview : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void pixelsAreThoseOfTheFinishedFrame_data();
    void pixelsAreThoseOfTheFinishedFrame();
    void newestRequestWins();
    void frameInWorkOfTheSameRecordingIsShown_data();
    void frameInWorkOfTheSameRecordingIsShown();
    void surveyOfARecordingThatIsLeftIsStopped();
    void frameThatIsKeptIsShownAtOnce();
    void changedRecordingIsReadAgain();
    void unmeasuredRecordingIsShownQuickFirst();
    void recordingIsMeasuredOnce();
    void framesAreShownQuickWhileTheRecordingIsMeasured();
    void failedSurveyTellsTheToolsReason();
    void rowsAreBlendedByTheFramesOfTheMovie();
    void unreadableFrameTellsTheToolsReason();
    void missingToolIsTold();
    void crashedDeveloperIsTold();
    void picturesComeWhenNoFrameIsAskedFor();
    void picturesThatAreReplacedAreNotMade();
    void nothingIsLeftAtTheEnd_data();
    void nothingIsLeftAtTheEnd();
    void folderOfAKilledRunIsRemoved();

private:
    QString sample(const QString &name, const QString &options) const
    {
        const QString path = m_folder->filePath(name);
        [&] { QVERIFY(writeSample(path, size + options)); }();
        return path;
    }
    QString work(const QString &name) const { return QDir(temporaryDirectory()).filePath(name); }
    /// The previews' folders and their locks.
    static QStringList folders()
    {
        return folderEntries(userTemporaryFolder()).filter(QStringLiteral("filmwright-preview-"));
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestFramePreview::init()
{
    qunsetenv("TMPDIR"); // the previous test's folder, which is gone
    m_folder = std::make_unique<QTemporaryDir>();
    const QString temporary = m_folder->filePath(QStringLiteral("temporary"));
    QVERIFY(createPrivateFolder(temporary));
    qputenv("TMPDIR", temporary.toUtf8());
    qunsetenv("XDG_RUNTIME_DIR");
    qputenv("FILMWRIGHT_RESOURCES", qgetenv("FILMWRIGHT_BUILD_RESOURCES"));
    QVERIFY(setBaseTemporaryDirectory(m_folder->filePath(QStringLiteral("work"))));
}

void TestFramePreview::cleanup()
{
    setBaseTemporaryDirectory(QString());
    m_folder.reset();
}

void TestFramePreview::pixelsAreThoseOfTheFinishedFrame_data()
{
    QTest::addColumn<QString>("options"); // of the sample
    QTest::addColumn<QString>("choices"); // of filmwright-cli
    QTest::addColumn<RawCorrections>("corrections");
    QTest::addColumn<bool>("calibrated");
    QTest::addColumn<bool>("merged");
    QTest::addColumn<bool>("blended");

    const auto row = [](const char *name, const QString &options, const QString &choices,
                        const RawCorrections &corrections, bool calibrated = false,
                        bool merged = false, bool blended = false) {
        QTest::newRow(name) << options << choices << corrections << calibrated << merged << blended;
    };
    RawCorrections repaired;
    repaired.pixelRepair = QStringLiteral("auto");
    repaired.repairsColumns = true;
    RawCorrections graded;
    graded.exposure = -0.5;
    graded.whiteBalance = QStringLiteral("4200");
    RawCorrections found;
    found.whiteBalance = QStringLiteral("auto");
    const RawCorrections none;
    row("as recorded", {}, {}, none);
    row("calibrated", QStringLiteral("--hot 40"),
        QStringLiteral("--dark %1/dark.MLV --flat %1/flat.MLV"), none, true);
    row("exposure and white balance", {}, QStringLiteral("--exposure -0.5 --white-balance 4200"),
        graded);
    row("white balance that is found", QStringLiteral("--light 1.2,1,0.7"),
        QStringLiteral("--white-balance auto"), found);
    row("repaired", QStringLiteral("--hot 40 --cold 20 --column-gains 1,1.02,1,1,0.98,1,1,1"),
        QStringLiteral("--repair-pixels auto --repair-columns"), repaired);
    row("clipped below the recorded white level", QStringLiteral("--clip 12000"), {}, none);
    row("neighbours merged", QStringLiteral("--hdr 2"), QStringLiteral("--hdr"), none, false, true);
    row("rows blended", QStringLiteral("--dual-iso 100/1600"), QStringLiteral("--dual-iso"), none,
        false, false, true);
}

void TestFramePreview::pixelsAreThoseOfTheFinishedFrame()
{
    QFETCH(const QString, options);
    QFETCH(const QString, choices);
    QFETCH(const RawCorrections, corrections);
    QFETCH(const bool, calibrated);
    QFETCH(const bool, merged);
    QFETCH(const bool, blended);
    const QString clip =
        sample(QStringLiteral("clip.MLV"), QStringLiteral("--frames 5 ") + options);
    FrameRequest request{clip, 3, {}};
    request.settings.corrections = corrections;
    request.settings.mergesNeighbours = merged;
    request.settings.blendsAlternatingRows = blended;
    if (calibrated) {
        request.settings.calibration.dark =
            sample(QStringLiteral("dark.MLV"), QStringLiteral("--frames 4 --dark --hot 40"));
        request.settings.calibration.flat =
            sample(QStringLiteral("flat.MLV"), QStringLiteral("--frames 4 --flat"));
    }
    CommandLine cli;
    QVERIFY(cli.run(
        QStringList{QStringLiteral("convert"), QStringLiteral("--keep-temp"),
                    QStringLiteral("--temp-dir"), baseTemporaryDirectory()} +
        words(choices.contains(QLatin1Char('%')) ? choices.arg(m_folder->path()) : choices) +
        QStringList{clip}));
    QCOMPARE(cli.status(), 0);
    const QString frames =
        work(merged ? QStringLiteral("clip.MLV/hdr") : QStringLiteral("clip.MLV"));
    const TiffBitmap finished =
        TiffBitmap::read(QDir(frames).filePath(QStringLiteral("tmp000002.tiff")));
    QVERIFY(!finished.isEmpty());

    FramePreview preview;
    Shown shown(preview);
    preview.show(request);
    QTRY_VERIFY_WITH_TIMEOUT(!preview.isAwaited(), patience);
    QCOMPARE(shown.log.constLast(), QStringLiteral("3"));
    QCOMPARE(shown.last.image, finished.toImage().convertToFormat(QImage::Format_RGB32));
    QCOMPARE(shown.last.histogram.channels[1].counts, histogramOf(finished).channels[1].counts);
}

void TestFramePreview::newestRequestWins()
{
    const QString a = sample(QStringLiteral("a.MLV"), QStringLiteral("--frames 2"));
    const QString b = sample(QStringLiteral("b.MLV"), QStringLiteral("--frames 9"));
    FramePreview preview;
    Shown shown(preview);
    preview.show(unmeasured(a));
    for (quint64 frame = 4; frame <= 9; ++frame)
        preview.show(unmeasured(b, frame));
    QTRY_VERIFY_WITH_TIMEOUT(!preview.isAwaited(), patience);
    QCOMPARE(shown.log, QStringList({QStringLiteral("4"), QStringLiteral("9")}));
}

void TestFramePreview::frameInWorkOfTheSameRecordingIsShown_data()
{
    QTest::addColumn<FrameRequest>("request");
    QTest::newRow("nothing to measure") << unmeasured({});
    QTest::newRow("measured") << FrameRequest{};
}

void TestFramePreview::frameInWorkOfTheSameRecordingIsShown()
{
    QFETCH(FrameRequest, request);
    request.recording = sample(QStringLiteral("clip.MLV"), QStringLiteral("--frames 9"));
    FramePreview preview;
    Shown shown(preview);
    preview.show(request);
    QTRY_VERIFY_WITH_TIMEOUT(!preview.isAwaited(), patience);
    shown.log.clear();
    for (const quint64 frame : {2ULL, 3ULL, 5ULL, 9ULL}) {
        request.frame = frame;
        preview.show(request);
    }
    QTRY_COMPARE_WITH_TIMEOUT(shown.log, QStringList({QStringLiteral("2"), QStringLiteral("9")}),
                              patience);
}

/// A card is clicked through: nothing goes on for a recording that was left.
void TestFramePreview::surveyOfARecordingThatIsLeftIsStopped()
{
    FakeTools fakes(1);
    fakes.setExtraction(QStringLiteral("case \"$*\" in *a.MLV*--write-survey*) "
                                       "exec sleep 1000 ;; esac\n%1")
                            .arg(FakeTools::extraction(1)));
    const QString a = sample(QStringLiteral("a.MLV"), QStringLiteral("--frames 1"));
    const QString b = sample(QStringLiteral("b.MLV"), QStringLiteral("--frames 1"));
    FramePreview preview;
    Shown shown(preview);
    preview.show({a, 1, {}});
    QTRY_VERIFY_WITH_TIMEOUT(runningChildren().contains(QStringLiteral("sleep")), patience);
    preview.show({b, 1, {}});
    QVERIFY(!runningChildren().contains(QStringLiteral("sleep")));
    QTRY_VERIFY_WITH_TIMEOUT(!preview.isAwaited(), patience);
    QCOMPARE(shown.log, QStringList({QStringLiteral("1 quick"), QStringLiteral("1 quick"),
                                     QStringLiteral("1")}));
}

void TestFramePreview::frameThatIsKeptIsShownAtOnce()
{
    const QString clip = sample(QStringLiteral("clip.MLV"), QStringLiteral("--frames 3"));
    FramePreview preview;
    Shown shown(preview);
    preview.show(unmeasured(clip, 2));
    QTRY_COMPARE_WITH_TIMEOUT(shown.log.size(), 1, patience);
    const QImage image = shown.last.image;
    preview.show(unmeasured(clip, 3));
    QTRY_COMPARE_WITH_TIMEOUT(shown.log.size(), 2, patience);
    preview.show(unmeasured(clip, 2));
    QCOMPARE(shown.log, words(QStringLiteral("2 3 2")));
    QCOMPARE(shown.last.image, image);
}

void TestFramePreview::changedRecordingIsReadAgain()
{
    const QString clip = sample(QStringLiteral("clip.MLV"), QStringLiteral("--frames 1"));
    FramePreview preview;
    Shown shown(preview);
    preview.show(unmeasured(clip));
    QTRY_COMPARE_WITH_TIMEOUT(shown.log.size(), 1, patience);
    const QImage image = shown.last.image;
    QVERIFY(writeSample(clip, QStringLiteral("--frames 2 --no-sound --size 160x120")));
    preview.show(unmeasured(clip));
    QTRY_COMPARE_WITH_TIMEOUT(shown.log.size(), 2, patience);
    QVERIFY(shown.last.image.size() != image.size());
}

void TestFramePreview::unmeasuredRecordingIsShownQuickFirst()
{
    const QString clip =
        sample(QStringLiteral("clip.MLV"), QStringLiteral("--frames 3 --light 1.4,1,0.6"));
    FramePreview preview;
    Shown shown(preview);
    FrameRequest request{clip, 2, {}};
    request.settings.corrections.whiteBalance = QStringLiteral("auto");
    preview.show(request);
    QTRY_COMPARE_WITH_TIMEOUT(shown.log.size(), 1, patience);
    QVERIFY(preview.isAwaited());
    const QImage quick = shown.last.image;
    QTRY_VERIFY_WITH_TIMEOUT(!preview.isAwaited(), patience);
    QCOMPARE(shown.log, QStringList({QStringLiteral("2 quick"), QStringLiteral("2")}));
    QVERIFY(shown.last.image != quick);
    QCOMPARE(shown.last.image.size(), quick.size());
}

/// For any frame and any exposure, but not for another choice that it depends on.
void TestFramePreview::recordingIsMeasuredOnce()
{
    FakeTools fakes(9);
    const auto surveys = [&fakes] {
        QList<QStringList> calls = fakes.tools.calls(QStringLiteral("mlv_dump"));
        calls.removeIf([](const QStringList &call) {
            return !call.contains(QLatin1String("--write-survey"));
        });
        return calls;
    };
    FramePreview preview;
    Shown shown(preview);
    FrameRequest request{QStringLiteral("/clip.MLV"), 1, {}};
    preview.show(request);
    QTRY_VERIFY_WITH_TIMEOUT(!preview.isAwaited(), patience);
    QCOMPARE(surveys().size(), 1);
    QCOMPARE(surveys().constFirst().mid(0, 5),
             words(QStringLiteral("--dng /clip.MLV --no-cs -f 0-0")));
    QVERIFY(!surveys().constFirst().contains(QLatin1String("--renumber")));
    request.frame = 5;
    request.settings.corrections.exposure = 1;
    preview.show(request);
    QTRY_VERIFY_WITH_TIMEOUT(!preview.isAwaited(), patience);
    QCOMPARE(surveys().size(), 1);
    QCOMPARE(shown.log,
             QStringList({QStringLiteral("1 quick"), QStringLiteral("1"), QStringLiteral("5")}));
    request.settings.corrections.whiteBalance = QStringLiteral("auto");
    preview.show(request);
    QTRY_VERIFY_WITH_TIMEOUT(!preview.isAwaited(), patience);
    QCOMPARE(surveys().size(), 2);
    QVERIFY(surveys().constLast().contains(QLatin1String("auto")));
}

void TestFramePreview::framesAreShownQuickWhileTheRecordingIsMeasured()
{
    FakeTools fakes(9);
    const QString release = fakes.path(QStringLiteral("release"));
    fakes.setExtraction(QStringLiteral("case \"$*\" in *--write-survey*) "
                                       "until [ -e '%1' ]; do sleep 0.01; done ;; esac\n%2")
                            .arg(release, FakeTools::extraction(9)));
    FramePreview preview;
    Shown shown(preview);
    for (const quint64 frame : {1ULL, 4ULL, 7ULL}) {
        preview.show({QStringLiteral("/clip.MLV"), frame, {}});
        QTRY_COMPARE_WITH_TIMEOUT(shown.log.value(shown.log.size() - 1),
                                  QString::number(frame) + QStringLiteral(" quick"), patience);
    }
    QFile file(release);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QTRY_VERIFY_WITH_TIMEOUT(!preview.isAwaited(), patience);
    QCOMPARE(shown.log, QStringList({QStringLiteral("1 quick"), QStringLiteral("4 quick"),
                                     QStringLiteral("7 quick"), QStringLiteral("7")}));
}

void TestFramePreview::failedSurveyTellsTheToolsReason()
{
    FakeTools fakes(1);
    fakes.setExtraction(QStringLiteral("case \"$*\" in *--write-survey*) "
                                       "echo \"[ERROR] The survey can't be written\"; exit 1 ;; "
                                       "esac\n%1")
                            .arg(FakeTools::extraction(1)));
    FramePreview preview;
    Shown shown(preview);
    preview.show({QStringLiteral("/clip.MLV"), 1, {}});
    QTRY_VERIFY_WITH_TIMEOUT(!preview.isAwaited(), patience);
    QCOMPARE(shown.log, QStringList({QStringLiteral("1 quick"),
                                     QStringLiteral("1: The survey can't be written")}));
}

void TestFramePreview::rowsAreBlendedByTheFramesOfTheMovie()
{
    const QString clip =
        sample(QStringLiteral("clip.MLV"), QStringLiteral("--frames 12 --dual-iso 100/1600"));
    FrameRequest request{clip, 6, {}};
    request.settings.blendsAlternatingRows = true;
    request.settings.frames = {4, 7};
    CommandLine cli;
    QVERIFY(cli.run({QStringLiteral("convert"), QStringLiteral("--keep-temp"),
                     QStringLiteral("--temp-dir"), baseTemporaryDirectory(),
                     QStringLiteral("--dual-iso"), QStringLiteral("--frames"),
                     QStringLiteral("4-7"), clip}));
    const TiffBitmap finished = TiffBitmap::read(work(QStringLiteral("clip.MLV/tmp000002.tiff")));
    QVERIFY(!finished.isEmpty());
    FramePreview preview;
    Shown shown(preview);
    preview.show(request);
    QTRY_VERIFY_WITH_TIMEOUT(!preview.isAwaited(), patience);
    QCOMPARE(shown.log.constLast(), QStringLiteral("6"));
    QCOMPARE(shown.last.image, finished.toImage().convertToFormat(QImage::Format_RGB32));
    request.frame = 10; // which the movie leaves out
    preview.show(request);
    QTRY_VERIFY_WITH_TIMEOUT(!preview.isAwaited(), patience);
    QCOMPARE(shown.log.constLast(), QStringLiteral("10"));
}

void TestFramePreview::unreadableFrameTellsTheToolsReason()
{
    const QString path = m_folder->filePath(QStringLiteral("broken.MLV"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("not a recording");
    file.close();
    FramePreview preview;
    Shown shown(preview);
    preview.show({path, 1, {}});
    QTRY_VERIFY_WITH_TIMEOUT(!preview.isAwaited(), patience);
    QCOMPARE(shown.log, QStringList{QStringLiteral(
                            "1 quick: The recording does not begin with an MLV file header")});
    QVERIFY(shown.last.image.isNull());
}

void TestFramePreview::missingToolIsTold()
{
    const FakeTools fakes(1);
    QVERIFY(QFile::remove(fakes.tools.path() + QStringLiteral("/mlv_dump")));
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", "");
    FramePreview preview;
    Shown shown(preview);
    preview.show(unmeasured(QStringLiteral("/clip.MLV")));
    QTRY_VERIFY_WITH_TIMEOUT(!preview.isAwaited(), patience);
    qputenv("PATH", path);
    QCOMPARE(shown.log, QStringList{QStringLiteral("1: mlv_dump could not be started")});
}

void TestFramePreview::crashedDeveloperIsTold()
{
    FakeTools fakes(1);
    fakes.setConversion(QStringLiteral("echo 'no memory for it' >&2; kill -SEGV $$"));
    FramePreview preview;
    Shown shown(preview);
    preview.show(unmeasured(QStringLiteral("/clip.MLV")));
    QTRY_VERIFY_WITH_TIMEOUT(!preview.isAwaited(), patience);
    QCOMPARE(shown.log, QStringList{QStringLiteral("1: dcraw: no memory for it")});
}

void TestFramePreview::picturesComeWhenNoFrameIsAskedFor()
{
    const QString a = sample(QStringLiteral("a.MLV"), QStringLiteral("--frames 3"));
    const QString b = sample(QStringLiteral("b.MLV"), QStringLiteral("--frames 3"));
    FramePreview preview;
    Shown shown(preview);
    preview.fetch({{a, 1, {}, FrameRequest::Small}, {b, 2, {}, FrameRequest::Small}});
    preview.show(unmeasured(b, 3));
    QTRY_COMPARE_WITH_TIMEOUT(shown.log.size(), 3, patience);
    QCOMPARE(shown.log, QStringList({QStringLiteral("3"), QStringLiteral("1 small"),
                                     QStringLiteral("2 small")}));
    QCOMPARE(shown.last.image.size(), QSize(160, 90));
}

void TestFramePreview::picturesThatAreReplacedAreNotMade()
{
    const QString clip = sample(QStringLiteral("clip.MLV"), QStringLiteral("--frames 5"));
    FramePreview preview;
    Shown shown(preview);
    preview.fetch({{clip, 1, {}, FrameRequest::Small}, {clip, 2, {}, FrameRequest::Small}});
    preview.fetch({{clip, 4, {}, FrameRequest::Small}});
    QTRY_VERIFY_WITH_TIMEOUT(shown.log.contains(QStringLiteral("4 small")), patience);
    QVERIFY(!shown.log.contains(QStringLiteral("2 small")));
}

void TestFramePreview::nothingIsLeftAtTheEnd_data()
{
    QTest::addColumn<QString>("hanging");
    for (const char *tool : {"mlv_dump", "cr2hdr", "dcraw"})
        QTest::newRow(tool) << QString::fromLatin1(tool);
}

void TestFramePreview::nothingIsLeftAtTheEnd()
{
    QFETCH(const QString, hanging);
    FakeTools fakes(1);
    fakes.tools.addTool(hanging, QStringLiteral("exec sleep 1000"));
    const qsizetype children = childProcesses();
    {
        FramePreview preview;
        FrameRequest request = unmeasured(QStringLiteral("/clip.MLV"));
        request.settings.blendsAlternatingRows = hanging == QLatin1String("cr2hdr");
        preview.show(request);
        QTRY_VERIFY_WITH_TIMEOUT(runningChildren().contains(QStringLiteral("sleep")), patience);
        QCOMPARE(folders().size(), 2);
    }
    QCOMPARE(childProcesses(), children);
    QCOMPARE(folders(), QStringList());
}

void TestFramePreview::folderOfAKilledRunIsRemoved()
{
    const QString left = userTemporaryFolder() + QStringLiteral("/filmwright-preview-abcdef");
    QVERIFY(createPrivateFolder(left + QStringLiteral("/frame")));
    QFile lock(left + QStringLiteral(".lock"));
    QVERIFY(lock.open(QIODevice::WriteOnly));
    constexpr const char *nobody = "4194305\nfilmwright\n"; // above the highest process number
    lock.write(nobody + QSysInfo::machineHostName().toUtf8() + "\n\n\n");
    lock.close();
    const PreviewFolder folder;
    QVERIFY(folder.isValid());
    QCOMPARE(folders(),
             QStringList({QFileInfo(folder.path()).fileName(),
                          QFileInfo(folder.path()).fileName() + QStringLiteral(".lock")}));
}

FILMWRIGHT_TEST(TestFramePreview, QCoreApplication)
#include "tst_framepreview.moc"
