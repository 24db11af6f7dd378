// SPDX-License-Identifier: MIT
#include "fakewindow.h"

#include "support/events.h"
#include "support/ordinaryuser.h"
#include "support/processes.h"
#include "support/testprogram.h"

#include <QDir>
#include <QMenu>

using namespace filmwright;

namespace {

const QString question = QStringLiteral("Queue not empty|Add to exisiting queue?|Yes|Replace");

QStringList recentEntries(const FakeWindow &window)
{
    QStringList entries;
    const auto *menu = window.widget<QMenu>(QStringLiteral("recentMenu"));
    for (const QAction *entry : menu->actions())
        if (!entry->isSeparator())
            entries << entry->text();
    return entries;
}

} // namespace

class TestAddingFilesWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void onlyNamesOfRecordingsAreAdded();
    void recordingIsAddedOnce();
    void anotherSpellingIsAnotherRecording();
    void folderIsSearchedAtAnyDepth();
    void folderNamedLikeARecordingIsSearched();
    void linkToAFolderIsFollowed();
    void linkToAFolderAboveEndsWithTheFileSystem();
    void folderThatCannotBeReadAddsNothing();
    void missingRecordingIsMarked();
    void cancelledChooserAddsNothing();
    void dragIsWelcomeOrNot_data();
    void dragIsWelcomeOrNot();
    void dragOfOtherAddressesIsIgnored();
    void dropAddsFilesOnly();
    void roadsAskWhenTheQueueIsNotEmpty_data();
    void roadsAskWhenTheQueueIsNotEmpty();
    void emptyQueueAsksNothing();
    void replacedRecordingsAreStopped();
    void roadsAreRefusedWhileWorking();
    void filesOpenedBeforeTheLaunchAreKept();
    void filesOpenedDuringAnAlertWait();
    void nothingStartsUntilAllAreRead();
    void missingToolAddsAndReplacesNothing();
    void removedRecordingsLeaveTheOthers();
    void lastRecordingRemovedLeavesNothingToStart();
    void removedReaderEndsTheReading();
    void nothingIsRemovedWhileWorking();
    void recentRecordingsAreRemembered();
    void recentRecordingIsOpenedFromTheMenu();
    void recentRecordingsAreCleared();
};

void TestAddingFilesWindow::onlyNamesOfRecordingsAreAdded()
{
    FakeWindow window;
    window.launch();
    window.open(window.makeRecordings({QStringLiteral("clip.MLV"), QStringLiteral("clip.mlv.bak"),
                                       QStringLiteral("clip"), QStringLiteral("take.mLv"),
                                       QStringLiteral("take.mlv2"), QStringLiteral("mlv")}));
    window.waitUntilRead();
    QCOMPARE(window.queue(), QStringList({QStringLiteral("clip.MLV"), QStringLiteral("take.mLv")}));
    QCOMPARE(window.alerts.shown, QStringList());
}

void TestAddingFilesWindow::recordingIsAddedOnce()
{
    FakeWindow window;
    window.launch();
    const QStringList paths = window.makeRecordings({a});
    window.open(paths + paths);
    window.waitUntilRead();
    window.open(paths);
    window.waitUntilRead();
    QCOMPARE(window.queue(), QStringList{a});
}

void TestAddingFilesWindow::anotherSpellingIsAnotherRecording()
{
    FakeWindow window;
    window.launch();
    window.open(window.makeRecordings({a}) +
                QStringList{window.recordings() + QStringLiteral("/./a.MLV")});
    window.waitUntilRead();
    QCOMPARE(window.queue(), QStringList({a, a}));
}

void TestAddingFilesWindow::folderIsSearchedAtAnyDepth()
{
    FakeWindow window;
    window.launch();
    window.makeRecordings({QStringLiteral("sub/z.txt"), QStringLiteral("x.mlv"),
                           QStringLiteral("sub/y.Mlv"), QStringLiteral(".card/h.mlv"),
                           QStringLiteral("sub/deep/er/w.MLV"), QStringLiteral("other")});
    QVERIFY(window.drop({window.recordings()}));
    window.waitUntilRead();
    QCOMPARE(window.queue(), QStringList({QStringLiteral("h.mlv"), QStringLiteral("w.MLV"),
                                          QStringLiteral("y.Mlv"), QStringLiteral("x.mlv")}));
}

void TestAddingFilesWindow::folderNamedLikeARecordingIsSearched()
{
    FakeWindow window;
    window.launch();
    window.makeRecordings({QStringLiteral("takes.mlv/a.MLV")});
    QVERIFY(window.drop({window.recordings() + QStringLiteral("/takes.mlv")}));
    window.waitUntilRead();
    QCOMPARE(window.queue(), QStringList{a});
    QVERIFY(window.drop({window.recordings()}));
    window.waitUntilRead();
    QCOMPARE(window.queue(), QStringList{a});
}

void TestAddingFilesWindow::linkToAFolderIsFollowed()
{
    FakeWindow window;
    window.launch();
    window.makeRecordings({QStringLiteral("card/a.MLV"), QStringLiteral("chosen/b.MLV")});
    const QString chosen = window.recordings() + QStringLiteral("/chosen");
    QVERIFY(QFile::link(window.recordings() + QStringLiteral("/card"),
                        chosen + QStringLiteral("/link")));
    QVERIFY(window.drop({chosen}));
    window.waitUntilRead();
    QCOMPARE(window.queue(), QStringList({b, a}));
}

void TestAddingFilesWindow::linkToAFolderAboveEndsWithTheFileSystem()
{
    FakeWindow window;
    window.launch();
    window.makeRecordings({QStringLiteral("card/a.MLV")});
    const QString card = window.recordings() + QStringLiteral("/card");
    QVERIFY(QFile::link(card, card + QStringLiteral("/again")));
    QVERIFY(window.drop({card}));
    const auto found = window.queue().size();
    QVERIFY(found > 1);
    QVERIFY(found <= 41);
    window.waitUntilRead();
}

void TestAddingFilesWindow::folderThatCannotBeReadAddsNothing()
{
    FakeWindow window;
    window.launch();
    window.makeRecordings({QStringLiteral("secret/a.MLV"), QStringLiteral("b.MLV")});
    QVERIFY(QFile::setPermissions(window.recordings(), QFile::Permissions(0x5055)));
    const QString secret = window.recordings() + QStringLiteral("/secret");
    QVERIFY(QFile::setPermissions(secret, QFile::Permissions(0)));
    {
        const OrdinaryUser user;
        window.delegate->scanDirectoryForMLVFiles(secret);
    }
    QCOMPARE(window.queue(), QStringList());
    QCOMPARE(window.alerts.shown, QStringList());
    QVERIFY(QFile::setPermissions(secret, QFile::Permissions(0x7000)));
}

void TestAddingFilesWindow::missingRecordingIsMarked()
{
    FakeWindow window;
    window.setBeforeReport(QStringLiteral("[ -e \"$recording\" ] || exit 1"));
    window.launch();
    window.open({window.recordings() + QStringLiteral("/gone.mlv")});
    window.waitUntilRead();
    QCOMPARE(window.queue(), QStringList{QStringLiteral("gone.mlv")});
    QTRY_COMPARE(window.stateView(0)->error(),
                 QStringLiteral("mlv_dump ended before it had read the recording"));
}

void TestAddingFilesWindow::cancelledChooserAddsNothing()
{
    FakeWindow window;
    window.launch({a});
    window.open({});
    QCOMPARE(window.queue(), QStringList{a});
    QCOMPARE(window.alerts.shown, QStringList());
}

void TestAddingFilesWindow::dragIsWelcomeOrNot_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<bool>("welcome");
    const QString text = QStringLiteral("notes.txt");
    const QString folder = QStringLiteral("folder");
    QTest::newRow("recording") << QStringList{a} << true;
    QTest::newRow("recording and text") << QStringList{a, text} << false;
    QTest::newRow("text") << QStringList{text} << false;
    QTest::newRow("folder without a recording") << QStringList{folder} << true;
    QTest::newRow("folder and recording") << QStringList{folder, a} << true;
    QTest::newRow("missing recording") << QStringList{QStringLiteral("gone.Mlv")} << true;
    QTest::newRow("missing folder") << QStringList{QStringLiteral("gone")} << false;
    QTest::newRow("nothing") << QStringList() << false;
}

void TestAddingFilesWindow::dragIsWelcomeOrNot()
{
    QFETCH(const QStringList, names);
    QFETCH(const bool, welcome);
    FakeWindow window;
    window.launch();
    window.makeRecordings({a, QStringLiteral("notes.txt"), QStringLiteral("folder/notes.txt")});
    QStringList paths;
    for (const QString &name : names)
        paths << QDir(window.recordings()).filePath(name);
    QCOMPARE(window.welcomes(paths), welcome);
    QCOMPARE(window.drop(paths), welcome);
    QCOMPARE(!window.queue().isEmpty(), welcome && !names.endsWith(QStringLiteral("folder")));
    window.waitUntilRead();
}

void TestAddingFilesWindow::dragOfOtherAddressesIsIgnored()
{
    FakeWindow window;
    window.launch();
    const QUrl elsewhere(QStringLiteral("https://example.org/a.MLV"));
    const QUrl here = QUrl::fromLocalFile(window.makeRecordings({a}).constFirst());
    QCOMPARE(window.delegate->validateDrop({elsewhere}), AppDelegate::DragOperationNone);
    QCOMPARE(window.delegate->validateDrop({elsewhere, here}), AppDelegate::DragOperationCopy);
    QVERIFY(window.delegate->acceptDrop({elsewhere, here}));
    window.waitUntilRead();
    QCOMPARE(window.queue(), QStringList{a});
}

void TestAddingFilesWindow::dropAddsFilesOnly()
{
    FakeWindow window;
    window.launch();
    QVERIFY(window.drop(window.makeRecordings({b, a})));
    window.waitUntilRead();
    QCOMPARE(window.queue(), QStringList({b, a}));
    QCOMPARE(window.status(), QStringLiteral("2 recordings in the queue"));
}

void TestAddingFilesWindow::roadsAskWhenTheQueueIsNotEmpty_data()
{
    QTest::addColumn<QString>("road");
    QTest::addColumn<int>("answer");
    QTest::addColumn<QString>("alert");
    QTest::addColumn<QStringList>("queue");
    const QStringList both{a, b};
    for (const char *name : {"chooser", "opened files", "opened files alone"}) {
        const QString road = QLatin1String(name);
        QTest::addRow("%s: yes", name) << road << 1 << question << both;
        QTest::addRow("%s: replace", name) << road << 0 << question << QStringList{b};
    }
    const QString drop = QStringLiteral("drop");
    const QString withCancel = question + QStringLiteral("|Cancel");
    QTest::newRow("drop: yes") << drop << 1 << withCancel << both;
    QTest::newRow("drop: replace") << drop << 0 << withCancel << QStringList{b};
    QTest::newRow("drop: cancel adds all the same") << drop << -1 << withCancel << both;
}

void TestAddingFilesWindow::roadsAskWhenTheQueueIsNotEmpty()
{
    QFETCH(const QString, road);
    QFETCH(const int, answer);
    QFETCH(const QString, alert);
    QFETCH(const QStringList, queue);
    FakeWindow window;
    window.launch({a});
    window.alerts.answers = {answer};
    const QStringList paths = window.makeRecordings({b});
    if (road == QLatin1String("chooser"))
        window.open(paths);
    else if (road == QLatin1String("opened files"))
        window.delegate->application(paths);
    else if (road == QLatin1String("opened files alone"))
        window.delegate->applicationOpenFiles(paths);
    else
        QVERIFY(window.drop(paths));
    QCOMPARE(window.alerts.shown, QStringList{alert});
    QCOMPARE(window.queue(), queue);
    QCOMPARE(window.table()->model()->rowCount(), queue.size());
    window.waitUntilRead();
}

void TestAddingFilesWindow::emptyQueueAsksNothing()
{
    FakeWindow window;
    window.launch();
    window.open(window.makeRecordings({a}));
    QCOMPARE(window.alerts.shown, QStringList());
    window.waitUntilRead();
}

void TestAddingFilesWindow::replacedRecordingsAreStopped()
{
    FakeWindow window;
    const QString note = window.path(QStringLiteral("pid"));
    window.setBeforeReport(QStringLiteral("case \"$recording\" in *a.MLV) echo $$ > '%1'; "
                                          "exec sleep 60 ;; esac")
                               .arg(note));
    window.launch();
    QVERIFY(window.drop(window.makeRecordings({a})));
    QTRY_VERIFY(QFileInfo(note).size() > 0);
    QFile pid(note);
    QVERIFY(pid.open(QIODevice::ReadOnly));
    const qint64 reader = pid.readAll().trimmed().toLongLong();
    QVERIFY(processRuns(reader));
    window.alerts.answers = {0};
    QVERIFY(window.drop(window.makeRecordings({b})));
    QTRY_VERIFY(!processRuns(reader));
    window.waitUntilRead();
    QCOMPARE(window.queue(), QStringList{b});
    QCOMPARE(window.alerts.shown.size(), 1);
}

void TestAddingFilesWindow::roadsAreRefusedWhileWorking()
{
    FakeWindow window;
    window.setExtraction(QStringLiteral("exec sleep 60"));
    window.launch({a});
    window.pressStart();
    const QStringList paths = window.makeRecordings({b});
    QVERIFY(window.welcomes(paths)); // the drop tells
    QVERIFY(!window.drop(paths));
    QCOMPARE(window.alerts.shown, QStringList{refusal});
    window.panel.chosen = paths;
    window.delegate->openFile();
    QCOMPARE(window.alerts.shown, QStringList({refusal, refusal}));
    window.delegate->application(paths);
    window.delegate->applicationOpenFiles(paths);
    QCOMPARE(window.alerts.shown, QStringList({refusal, refusal, refusal, refusal}));
    QCOMPARE(window.queue(), QStringList{a});
    QVERIFY(window.delegate->isWorking());
    window.pressStart();
}

void TestAddingFilesWindow::filesOpenedBeforeTheLaunchAreKept()
{
    FakeWindow window;
    window.delegate = std::make_unique<AppDelegate>(window.alerts, window.panel);
    window.delegate->applicationOpenFiles(window.makeRecordings({a}));
    QCOMPARE(window.queue(), QStringList{a});
    window.delegate->applicationDidFinishLaunching();
    QCOMPARE(window.queue(), QStringList{a});
    window.waitUntilRead();
    QVERIFY(window.action(QStringLiteral("startStopItem"))->isEnabled());
}

void TestAddingFilesWindow::filesOpenedDuringAnAlertWait()
{
    FakeWindow window;
    window.launch({a});
    window.alerts.answers = {1, 0};
    window.alerts.whileOpen = [&window] {
        window.alerts.whileOpen = nullptr;
        window.delegate->applicationOpenFiles(window.makeRecordings({c}));
        deliverEvents();
        QCOMPARE(window.alerts.shown.size(), 1);
    };
    QVERIFY(window.drop(window.makeRecordings({b})));
    QCOMPARE(window.queue(), QStringList({a, b}));
    QTRY_COMPARE(window.queue(), QStringList{c});
    QCOMPARE(window.alerts.shown.size(), 2);
    window.waitUntilRead();
}

void TestAddingFilesWindow::nothingStartsUntilAllAreRead()
{
    FakeWindow window;
    window.setBeforeReport(
        QStringLiteral("case \"$recording\" in *b.MLV) %1 ;; esac").arg(window.untilReleased()));
    window.launch();
    QVERIFY(window.drop(window.makeRecordings({a, b})));
    QCOMPARE(window.status(), QStringLiteral("Reading recordings…"));
    const QString reading = QStringLiteral("Reading data");
    QCOMPARE(window.states(), QStringList({reading, reading}));
    QTRY_COMPARE(window.states(), QStringList({ready, reading}));
    QVERIFY(!window.action(QStringLiteral("startStopItem"))->isEnabled());
    QVERIFY(!window.action(QStringLiteral("sourceItem"))->isEnabled());
    window.release();
    QTRY_COMPARE(window.states(), QStringList({ready, ready}));
    QVERIFY(window.action(QStringLiteral("startStopItem"))->isEnabled());
    QVERIFY(window.action(QStringLiteral("sourceItem"))->isEnabled());
}

void TestAddingFilesWindow::missingToolAddsAndReplacesNothing()
{
    FakeWindow window;
    window.launch({a});
    QVERIFY(QFile::remove(window.tools.path() + QStringLiteral("/mlv_dump")));
    window.alerts.answers = {0, 0};
    QVERIFY(window.drop(window.makeRecordings({b})));
    QCOMPARE(window.queue(), QStringList{a});
    QCOMPARE(window.alerts.shown.size(), 1);
    QVERIFY(window.alerts.shown.constFirst().startsWith(
        QLatin1String("A tool is missing|the tool mlv_dump was not found; ")));
}

void TestAddingFilesWindow::removedRecordingsLeaveTheOthers()
{
    FakeWindow window;
    window.launch({a, b, c});
    QAction *remove = window.action(QStringLiteral("removeMenuItem"));
    QVERIFY(!remove->isEnabled());
    window.select(b);
    QVERIFY(remove->isEnabled());
    QTest::keyClick(window.table(), Qt::Key_Delete);
    QCOMPARE(window.queue(), QStringList({a, c}));
    QCOMPARE(window.table()->model()->rowCount(), 2);
    QVERIFY(window.action(QStringLiteral("startStopItem"))->isEnabled());
    window.add({b});
    QCOMPARE(window.queue(), QStringList({a, c, b}));
    window.table()->selectAll();
    remove->trigger();
    QCOMPARE(window.queue(), QStringList());
}

void TestAddingFilesWindow::lastRecordingRemovedLeavesNothingToStart()
{
    FakeWindow window;
    window.launch({a});
    window.select(a);
    window.action(QStringLiteral("removeMenuItem"))->trigger();
    QVERIFY(!window.action(QStringLiteral("startStopItem"))->isEnabled());
    QVERIFY(window.action(QStringLiteral("sourceItem"))->isEnabled());
    QVERIFY(!window.action(QStringLiteral("removeMenuItem"))->isEnabled());
}

void TestAddingFilesWindow::removedReaderEndsTheReading()
{
    FakeWindow window;
    window.setBeforeReport(QStringLiteral("case \"$recording\" in *b.MLV) exec sleep 60 ;; esac"));
    window.launch();
    QVERIFY(window.drop(window.makeRecordings({a, b})));
    QTRY_COMPARE(window.states().constFirst(), QStringLiteral("Ready"));
    window.select(b);
    window.action(QStringLiteral("removeMenuItem"))->trigger();
    QVERIFY(window.action(QStringLiteral("startStopItem"))->isEnabled());
    QVERIFY(window.action(QStringLiteral("sourceItem"))->isEnabled());
    QCOMPARE(window.queue(), QStringList{a});
}

void TestAddingFilesWindow::nothingIsRemovedWhileWorking()
{
    FakeWindow window;
    window.setExtraction(QStringLiteral("exec sleep 60"));
    window.launch({a, b});
    window.select(b);
    window.pressStart();
    QVERIFY(!window.action(QStringLiteral("removeMenuItem"))->isEnabled());
    QTest::keyClick(window.table(), Qt::Key_Delete);
    window.delegate->removeSelectedProjects();
    QCOMPARE(window.queue(), QStringList({a, b}));
    window.pressStart();
    QVERIFY(window.action(QStringLiteral("removeMenuItem"))->isEnabled());
}

void TestAddingFilesWindow::recentRecordingsAreRemembered()
{
    FakeWindow window;
    window.launch();
    const auto *menu = window.widget<QMenu>(QStringLiteral("recentMenu"));
    QVERIFY(!menu->menuAction()->isEnabled());
    QStringList names;
    for (int number = 10; number <= 21; ++number)
        names << QStringLiteral("take&%1.MLV").arg(number);
    window.add(names);
    QStringList expected;
    for (int number = 21; number >= 12; --number)
        expected << QStringLiteral("take&&%1.MLV").arg(number);
    expected << QStringLiteral("&Clear");
    QCOMPARE(recentEntries(window), expected);
    window.launch();
    QCOMPARE(recentEntries(window), expected);
    QVERIFY(window.widget<QMenu>(QStringLiteral("recentMenu"))->menuAction()->isEnabled());
    window.add({names.at(5)});
    expected.move(6, 0);
    QCOMPARE(recentEntries(window), expected);
}

void TestAddingFilesWindow::recentRecordingIsOpenedFromTheMenu()
{
    FakeWindow window;
    window.launch({a, b});
    window.launch();
    QCOMPARE(window.queue(), QStringList());
    window.widget<QMenu>(QStringLiteral("recentMenu"))->actions().at(1)->trigger();
    QCOMPARE(window.queue(), QStringList{a});
    window.waitUntilRead();
    QCOMPARE(recentEntries(window), QStringList({a, b, QStringLiteral("&Clear")}));
}

void TestAddingFilesWindow::recentRecordingsAreCleared()
{
    FakeWindow window;
    window.launch({a});
    const auto *menu = window.widget<QMenu>(QStringLiteral("recentMenu"));
    menu->actions().constLast()->trigger();
    QVERIFY(!menu->menuAction()->isEnabled());
    QTRY_COMPARE(recentEntries(window), QStringList{QStringLiteral("&Clear")});
    window.launch();
    QCOMPARE(recentEntries(window), QStringList{QStringLiteral("&Clear")});
}

FILMWRIGHT_TEST(TestAddingFilesWindow, QApplication)
#include "tst_addingfiles_window.moc"
