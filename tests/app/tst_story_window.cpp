// SPDX-License-Identifier: MIT
// What a person does with the window, on the real tools: recordings in, movies out.
#include "fakewindow.h"

#include "endtoend/sample.h"
#include "support/events.h"
#include "support/processes.h"
#include "support/standinservice.h"
#include "support/testprogram.h"

#include <QDir>
#include <QJsonObject>

using namespace filmwright;

namespace {

const QStringList toolNames{QStringLiteral("mlv_dump"), QStringLiteral("dcraw"),
                            QStringLiteral("ffmpeg"), QStringLiteral("cr2hdr")};

const QString reading = QStringLiteral("Reading data");
const QString extracting = QStringLiteral("Extracting DNG");
const QString converting = QStringLiteral("RGB conversion");

/// A window whose tools are the real ones; their calls are noted.
class RealWindow : public FakeWindow
{
public:
    RealWindow()
    {
        for (const QString &tool : toolNames)
            passThrough(tool, {});
    }

    /// Has the tool stay for so many seconds when it has done its work, which it doesn't say.
    void hold(const QString &tool, int seconds)
    {
        tools.addTool(tool, QStringLiteral("'%1' \"$@\" | grep -v Done; exec sleep %2")
                                .arg(realTool(tool))
                                .arg(seconds));
    }
    void release(const QString &tool) { passThrough(tool, {}); }

    /// Has the tool hang in calls whose arguments match the shell pattern.
    void hang(const QString &tool, const QString &pattern)
    {
        passThrough(tool,
                    QStringLiteral("case \"$*\" in %1) exec sleep 1000 ;; esac\n").arg(pattern));
    }

    /// Writes a sample recording and answers its path.
    QString sample(const QString &name, const QString &options) const
    {
        const QString path = QDir(recordings()).filePath(name);
        [&] { QVERIFY(QDir().mkpath(QFileInfo(path).path())); }();
        [&] { QVERIFY(writeSample(path, options)); }();
        return path;
    }

    /// Notes the states of every recording from now on, each once in a row.
    void noteStates()
    {
        QObject::connect(table()->model(), &QAbstractItemModel::dataChanged, table(), [this] {
            const QStringList now = states();
            seen.resize(now.size());
            for (qsizetype i = 0; i < now.size(); ++i)
                if (seen.at(i).isEmpty() || seen.at(i).constLast() != now.at(i))
                    seen[i] << now.at(i);
        });
    }

    QDialog *sheet() const { return widget<QDialog>(QStringLiteral("preprocessPanel")); }

    QList<QStringList> seen;

private:
    void passThrough(const QString &name, const QString &before)
    {
        tools.addTool(name, before + QStringLiteral("exec '%1' \"$@\"").arg(realTool(name)));
    }
};

} // namespace

class TestStoryWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void folderOfThreeBecomesThreeMovies();
    void neighboursAreMergedIntoAMovie();
    void badRecordingsCostOnlyThemselves();
    void stopInEveryStage_data();
    void stopInEveryStage();
    void quitInEveryState_data();
    void quitInEveryState();
};

void TestStoryWindow::folderOfThreeBecomesThreeMovies()
{
    RealWindow window;
    const QString size = QStringLiteral("--size 320x180 --fps 25 ");
    window.sample(QStringLiteral("card/A1.MLV"), size + QStringLiteral("--frames 6 --sound"));
    window.sample(QStringLiteral("card/day2/B2.mlv"),
                  size + QStringLiteral("--frames 4 --no-sound"));
    window.sample(QStringLiteral("card/C3.MLV"), size + QStringLiteral("--frames 5 --no-sound"));
    const QString dark =
        window.sample(QStringLiteral("dark.MLV"), size + QStringLiteral("--frames 4 --dark"));
    const QString flat =
        window.sample(QStringLiteral("flat.MLV"), size + QStringLiteral("--frames 4 --flat"));
    const QString flatDark =
        window.sample(QStringLiteral("flatdark.MLV"), size + QStringLiteral("--frames 4 --dark"));
    const qint64 darkSize = QFileInfo(dark).size();
    const qint64 flatSize = QFileInfo(flat).size();

    window.launch();
    const QString card = window.recordings() + QStringLiteral("/card");
    QVERIFY(window.drop({card}));
    window.noteStates();
    window.waitUntilRead();
    QCOMPARE(window.queue(), QStringList({QStringLiteral("A1.MLV"), QStringLiteral("C3.MLV"),
                                          QStringLiteral("B2.mlv")}));
    QCOMPARE(window.cell(QStringLiteral("File"), 2), QStringLiteral("A1.MLV\n320x180\n6 frames"));

    // Keep the dark, let the average take the place of the flat, keep its dark.
    window.alerts.answers = {1, 0, 1};
    for (const auto &[button, recording] :
         {std::pair(QStringLiteral("darkButton"), dark),
          std::pair(QStringLiteral("flatButton"), flat),
          std::pair(QStringLiteral("flatDarkButton"), flatDark)}) {
        window.panel.chosen = QStringList{recording};
        window.press(button);
        QVERIFY(window.sheet()->isVisible());
        const auto asked = window.alerts.shown.size();
        QTRY_COMPARE(window.alerts.shown.size(), asked + 1);
        QTRY_VERIFY(!window.sheet()->isVisible());
    }
    QTRY_VERIFY(window.delegate->checkCalibrationIntegrity());
    QVERIFY(window.alerts.shown.at(0).startsWith(QLatin1String("Dark ready|")));
    QVERIFY(window.alerts.shown.at(1).startsWith(QLatin1String("Flat ready|")));
    QVERIFY(window.alerts.shown.at(2).startsWith(QLatin1String("Flat Dark ready|")));
    QCOMPARE(QFileInfo(dark).size(), darkSize);
    QVERIFY(QFileInfo(flat).size() < flatSize / 2);

    window.pressStart();
    window.waitForEnd();
    QCOMPARE(window.alerts.shown.mid(3).join(QLatin1Char(' ')), QString());
    QTRY_COMPARE(window.status(), QStringLiteral("3 movies written"));
    const QStringList stages{ready, pending, extracting, converting, building, finished};
    for (QStringList states : window.seen) {
        states.removeAll(reading);
        QCOMPARE(states, stages);
    }
    QCOMPARE(window.alerts.shown.size(), 3);

    const Movie first = Movie::probe(card + QStringLiteral("/A1.avi"));
    QCOMPARE(first.frames(), 6);
    QCOMPARE(first.sound.size(), 1);
    QCOMPARE(first.video.value(QStringLiteral("width")).toInt(), 320);
    QCOMPARE(first.video.value(QStringLiteral("r_frame_rate")).toString(), QStringLiteral("25/1"));
    QCOMPARE(Movie::probe(card + QStringLiteral("/day2/B2.avi")).frames(), 4);
    QCOMPARE(Movie::probe(card + QStringLiteral("/C3.avi")).frames(), 5);
    // Every recording was calibrated by the averages.
    for (const QStringList &call : window.conversionCalls(QStringLiteral("mlv_dump"))) {
        if (call.constFirst() == QLatin1String("--dng")) {
            QVERIFY(call.contains(window.temporary(QStringLiteral("dark.mlv"))));
            QVERIFY(call.contains(window.temporary(QStringLiteral("flat-flat_dark.mlv"))));
        }
    }

    const QString directory = window.temporary(QString());
    QVERIFY(QFileInfo::exists(directory));
    window.quit();
    QVERIFY(!QFileInfo::exists(directory));
    QTRY_COMPARE(childProcesses(), 0);
}

void TestStoryWindow::neighboursAreMergedIntoAMovie()
{
    RealWindow window;
    const QString clip = window.sample(QStringLiteral("hdr.MLV"),
                                       QStringLiteral("--size 320x180 --frames 4 --hdr 3"));
    window.launch();
    window.open({clip});
    window.waitUntilRead();
    window.select(QStringLiteral("hdr.MLV"));
    window.action(QStringLiteral("mergeNeighboursMenuItem"))->trigger();
    window.pressStart();
    window.waitForEnd();
    QTRY_COMPARE(window.status(), QStringLiteral("1 movie written"));
    const Movie movie = Movie::probe(window.recordings() + QStringLiteral("/hdr.avi"));
    QCOMPARE(movie.frames(), 3);
    QVERIFY(movie.sound.isEmpty());
}

/// Nothing is answered while the batch runs; every bad recording has its reason, in its row and in
/// the summary.
void TestStoryWindow::badRecordingsCostOnlyThemselves()
{
    const StandInService notifications(
        QStringLiteral("org.freedesktop.Notifications"),
        [](const QString &method, const QVariantList &) -> QVariantList {
            return {method == QLatin1String("Notify") ? QVariant(1U) : QVariant(QStringList())};
        });
    RealWindow window;
    const QString size = QStringLiteral("--size 320x180 --frames 2 --no-sound");
    const auto write = [&window](const QString &name, const QByteArray &content) {
        QFile file(QDir(window.recordings()).filePath(name));
        [&] { QVERIFY(file.open(QIODevice::WriteOnly)); }();
        file.write(content);
        return file.fileName();
    };
    QStringList queue;
    for (const char *name : {"1.MLV", "2.MLV", "3.MLV", "4.MLV", "5.MLV"})
        queue << window.sample(QString::fromLatin1(name), size);
    queue << write(QStringLiteral("broken.MLV"), QByteArray(5000, 'x'))
          << write(QStringLiteral("empty.MLV"), {})
          << window.sample(QStringLiteral("vanished.MLV"), size)
          << window.sample(QStringLiteral("cutoff.MLV"), QStringLiteral("--size 320x180 --frames 6 "
                                                                        "--no-sound"))
          << window.sample(QStringLiteral("small.MLV"), QStringLiteral("--size 160x96 --frames 2"))
          << window.sample(QStringLiteral("dark.mlv"), size)
          << window.sample(QStringLiteral("1.mlv"), size);
    QFile cutOff(QDir(window.recordings()).filePath(QStringLiteral("cutoff.MLV")));
    QVERIFY(cutOff.resize(cutOff.size() * 6 / 10));
    const QString dark = window.sample(QStringLiteral("cap/lens.MLV"),
                                       QStringLiteral("--size 320x180 --frames 1 --dark"));

    window.launch();
    QVERIFY(window.drop(queue));
    window.waitUntilRead();
    QCOMPARE(window.queue().size(), 12);
    QVERIFY(!window.delegate->isWorking()); // adding has started nothing
    QCOMPARE(window.alerts.shown, QStringList());
    const auto failure = [&window](const QString &name) {
        const auto row = window.queue().size() - 1 - window.queue().indexOf(name);
        return window.delegate
            ->toolTipForTableColumn(QStringLiteral("State"), static_cast<int>(row))
            .section(QLatin1Char('\n'), 1, 1);
    };
    QVERIFY(!failure(QStringLiteral("broken.MLV")).isEmpty());
    QVERIFY(!failure(QStringLiteral("empty.MLV")).isEmpty());
    QVERIFY(failure(QStringLiteral("1.MLV")).isEmpty());

    window.panel.chosen = QStringList{dark};
    window.press(QStringLiteral("darkButton"));
    QTRY_VERIFY(!window.sheet()->isVisible());
    QTRY_COMPARE(window.alerts.shown.size(), 1);
    QVERIFY(window.alerts.shown.takeFirst().contains(QStringLiteral("small.MLV, 160")));
    QVERIFY(QFile::remove(QDir(window.recordings()).filePath(QStringLiteral("vanished.MLV"))));
    QWidget other; // whoever has started a long batch does something else
    other.show();
    other.activateWindow();
    QTRY_VERIFY(!window.delegate->window()->isActiveWindow());
    window.pressStart();
    QTRY_VERIFY_WITH_TIMEOUT(!window.delegate->isWorking(), 240000);
    QTRY_COMPARE(window.alerts.shown.size(), 1);
    QTRY_COMPARE(notifications.calls().size(), 2); // GetCapabilities, Notify
    QCOMPARE(notifications.lastArguments().value(4).toString(),
             QStringLiteral("7 of 12 recordings have no whole movie"));
    const QStringList summary = window.alerts.shown.constFirst().split(QLatin1Char('\n'));
    QVERIFY2(
        summary.constFirst().startsWith(QLatin1String("7 of 12 recordings have no whole movie|")),
        qPrintable(summary.constFirst()));
    const QStringList bad{QStringLiteral("broken.MLV"),   QStringLiteral("empty.MLV"),
                          QStringLiteral("vanished.MLV"), QStringLiteral("cutoff.MLV"),
                          QStringLiteral("small.MLV"),    QStringLiteral("dark.mlv"),
                          QStringLiteral("1.mlv")};
    for (const QString &name : bad) {
        const QString reason = failure(name);
        QVERIFY2(!reason.isEmpty() && !reason.startsWith(QLatin1String("Dark: ")),
                 qPrintable(name));
        QCOMPARE(summary.join(QLatin1Char('\n')).count(QStringLiteral("%1: %2").arg(name, reason)),
                 1);
        qInfo("%s: %s", qPrintable(name), qPrintable(reason));
    }
    // A recording that is cut off has a movie of the frames that are there.
    for (const char *name : {"1.avi", "2.avi", "3.avi", "4.avi", "5.avi"})
        QCOMPARE(Movie::probe(QDir(window.recordings()).filePath(QLatin1String(name))).frames(), 2);
    const Movie rest =
        Movie::probe(QDir(window.recordings()).filePath(QStringLiteral("cutoff.avi")));
    QVERIFY(rest.frames() > 0 && rest.frames() < 6);
    QCOMPARE(QDir(window.recordings()).entryList({QStringLiteral("*.avi")}).size(), 6);

    window.sample(QStringLiteral("broken.MLV"), size);
    window.pressStart();
    QTRY_VERIFY_WITH_TIMEOUT(!window.delegate->isWorking(), 240000);
    QTRY_COMPARE(window.alerts.shown.size(), 2);
    QVERIFY(window.alerts.shown.constLast().startsWith(
        QLatin1String("6 of 12 recordings have no whole movie|")));
    QCOMPARE(
        Movie::probe(QDir(window.recordings()).filePath(QStringLiteral("broken.avi"))).frames(), 2);
}

void TestStoryWindow::stopInEveryStage_data()
{
    QTest::addColumn<QString>("state");
    QTest::addColumn<QString>("tool");
    QTest::addColumn<int>("seconds");
    QTest::newRow("extracting") << extracting << QStringLiteral("mlv_dump") << 1000;
    // Its frame is kept: it ends by itself.
    QTest::newRow("converting") << converting << QStringLiteral("dcraw") << 2;
    QTest::newRow("building the movie") << building << QStringLiteral("ffmpeg") << 1000;
}

/// The next start makes whole movies.
void TestStoryWindow::stopInEveryStage()
{
    QFETCH(const QString, state);
    QFETCH(const QString, tool);
    QFETCH(const int, seconds);
    RealWindow window;
    const QString clip = window.sample(QStringLiteral("clip.MLV"),
                                       QStringLiteral("--size 320x180 --frames 5 --sound"));
    const QString other = window.sample(QStringLiteral("other.MLV"),
                                        QStringLiteral("--size 320x180 --frames 2 --no-sound"));
    window.launch();
    window.open({clip, other});
    window.waitUntilRead();
    window.hold(tool, seconds);
    window.pressStart();
    QTRY_VERIFY_WITH_TIMEOUT(runningChildren().contains(QStringLiteral("sleep")), 30000);
    QCOMPARE(window.states(), QStringList({state, pending}));
    window.pressStart();
    QVERIFY(!window.delegate->isWorking());
    QCOMPARE(window.states(), QStringList({ready, ready}));
    settle();
    QVERIFY(runningChildren().isEmpty()); // and no tool follows
    QCOMPARE(window.states(), QStringList({ready, ready}));
    QCOMPARE(QDir(window.recordings()).entryList(QDir::Files | QDir::Hidden),
             QStringList({QStringLiteral("clip.MLV"), QStringLiteral("other.MLV")}));

    window.release(tool);
    window.pressStart();
    window.waitForEnd();
    QTRY_COMPARE(window.status(), QStringLiteral("2 movies written"));
    QCOMPARE(Movie::probe(window.recordings() + QStringLiteral("/clip.avi")).frames(), 5);
    QCOMPARE(Movie::probe(window.recordings() + QStringLiteral("/other.avi")).frames(), 2);
    QCOMPARE(window.alerts.shown, QStringList());
}

void TestStoryWindow::quitInEveryState_data()
{
    QTest::addColumn<QString>("tool");
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("button");
    const QString mlvDump = QStringLiteral("mlv_dump");
    QTest::newRow("idle") << mlvDump << QStringLiteral("never") << QString();
    QTest::newRow("reading") << mlvDump << QStringLiteral("'-m '*") << QString();
    QTest::newRow("extracting") << mlvDump << QStringLiteral("'--dng '*") << QString();
    QTest::newRow("blending") << QStringLiteral("cr2hdr") << QStringLiteral("*") << QString();
    QTest::newRow("converting") << QStringLiteral("dcraw") << QStringLiteral("*") << QString();
    QTest::newRow("building the movie")
        << QStringLiteral("ffmpeg") << QStringLiteral("*") << QString();
    QTest::newRow("averaging") << mlvDump << QStringLiteral("'-a '*")
                               << QStringLiteral("flatButton");
    QTest::newRow("substracting") << mlvDump << QStringLiteral("'-s '*")
                                  << QStringLiteral("flatButton");
}

/// The tool hangs: it would outlive the application if it weren't ended.
void TestStoryWindow::quitInEveryState()
{
    QFETCH(const QString, tool);
    QFETCH(const QString, pattern);
    QFETCH(const QString, button);
    RealWindow window;
    const QString clip =
        window.sample(QStringLiteral("clip.MLV"), QStringLiteral("--size 320x180 --frames 2"));
    const QString flat = window.sample(QStringLiteral("flat.MLV"),
                                       QStringLiteral("--size 320x180 --frames 1 --flat"));
    window.hang(tool, pattern);
    window.launch();
    const bool hangs = pattern != QLatin1String("never");
    if (!button.isEmpty()) {
        for (const QString &each : {QStringLiteral("flatDarkButton"), button}) {
            window.panel.chosen = QStringList{flat};
            window.press(each);
            if (pattern.contains(QLatin1String("-a")))
                break;
            if (each != button)
                QTRY_VERIFY(!window.sheet()->isVisible());
        }
    } else {
        window.open({clip});
        if (!pattern.contains(QLatin1String("-m"))) {
            window.waitUntilRead();
            if (tool == QLatin1String("cr2hdr")) {
                window.table()->selectRow(0);
                window.action(QStringLiteral("blendRowsMenuItem"))->trigger();
            }
            if (hangs)
                window.pressStart();
        }
    }
    if (hangs)
        QTRY_VERIFY_WITH_TIMEOUT(runningChildren().contains(QStringLiteral("sleep")), 20000);
    const QString directory = window.temporary(QString());
    window.quit();
    QTRY_COMPARE(childProcesses(), 0);
    QVERIFY(!QFileInfo::exists(directory));
    QVERIFY(QFileInfo::exists(clip));
    QVERIFY(QFileInfo::exists(flat));
}

FILMWRIGHT_TEST(TestStoryWindow, QApplication)
#include "tst_story_window.moc"
