// SPDX-License-Identifier: MIT
// How recordings leave the queue, and come back.
#include "fakewindow.h"

#include "support/testprogram.h"

using namespace filmwright;

class TestRemovingWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void finishedRecordingsAreRemoved();
    void commandsAreLockedWhileWorking();
    void removalIsUndone();
    void whatComesBackIsSelected();
    void undoneRecordingIsAsItWas();
    void recordingThatWasStillReadIsReadAnew();
    void recordingThatWasAddedAnewStaysAsItIs();
    void onlyTheLastRemovalIsUndone();
    void replacedQueueDoesNotComeBack();

private:
    static void remove(FakeWindow &window, const QString &name)
    {
        window.select(name);
        window.action(QStringLiteral("removeMenuItem"))->trigger();
    }
    static QAction *undo(const FakeWindow &window)
    {
        return window.action(QStringLiteral("undoRemovalMenuItem"));
    }
    static QAction *removeFinished(const FakeWindow &window)
    {
        return window.action(QStringLiteral("removeFinishedMenuItem"));
    }
};

void TestRemovingWindow::finishedRecordingsAreRemoved()
{
    FakeWindow window;
    window.setExtraction(onlyForB("prefix", QStringLiteral("echo '[UNUSABLE] no frame'"),
                                  FakeWindow::extraction(2)));
    window.launch({a, b, c});
    QVERIFY(!removeFinished(window)->isEnabled());
    window.pressStart();
    window.waitForEnd();
    QTRY_COMPARE(window.status(), QStringLiteral("1 of 3 recordings have no whole movie"));
    removeFinished(window)->trigger();
    QCOMPARE(window.queue(), QStringList{b});
    QVERIFY(!removeFinished(window)->isEnabled());
}

void TestRemovingWindow::commandsAreLockedWhileWorking()
{
    FakeWindow window;
    window.launch({a, b, c});
    remove(window, c);
    window.pressStart();
    window.waitForEnd();
    QTRY_VERIFY(removeFinished(window)->isEnabled());
    window.setExtraction(QStringLiteral("sleep 60"));
    window.pressStart();
    QVERIFY(!undo(window)->isEnabled());
    QVERIFY(!removeFinished(window)->isEnabled());
    window.delegate->undoRemoval();
    window.delegate->removeFinishedProjects();
    QCOMPARE(window.queue(), QStringList({a, b}));
    window.pressStart();
    QVERIFY(undo(window)->isEnabled());
}

void TestRemovingWindow::removalIsUndone()
{
    FakeWindow window;
    window.launch({a, b, c, d});
    QVERIFY(!undo(window)->isEnabled());
    window.table()->selectRow(0); // d
    window.table()->selectionModel()->select(window.table()->model()->index(2, 0),
                                             QItemSelectionModel::Select |
                                                 QItemSelectionModel::Rows); // b
    window.action(QStringLiteral("removeMenuItem"))->trigger();
    QCOMPARE(window.queue(), QStringList({a, c}));
    QVERIFY(undo(window)->isEnabled());
    undo(window)->trigger();
    QCOMPARE(window.queue(), QStringList({a, b, c, d}));
    QCOMPARE(window.status(), QStringLiteral("4 recordings in the queue"));
    QVERIFY(!undo(window)->isEnabled());
}

void TestRemovingWindow::whatComesBackIsSelected()
{
    FakeWindow window;
    window.launch({a, b, c});
    remove(window, b);
    window.select(a);
    undo(window)->trigger();
    QCOMPARE(window.table()->selectedRows(), QList<int>{1});
}

void TestRemovingWindow::undoneRecordingIsAsItWas()
{
    FakeWindow window;
    window.launch({a, b});
    window.pressStart();
    window.waitForEnd();
    QTRY_COMPARE(window.status(), QStringLiteral("2 movies written"));
    window.select(a);
    window.action(QStringLiteral("mergeNeighboursMenuItem"))->trigger();
    remove(window, a);
    undo(window)->trigger();
    const auto &projects = window.delegate->projectList();
    QCOMPARE(projects.size(), std::size_t{2});
    QVERIFY(projects.front()->dualISO());
    QCOMPARE(projects.front()->state(), QStringLiteral("Finished"));
    removeFinished(window)->trigger();
    QCOMPARE(window.queue(), QStringList());
}

void TestRemovingWindow::recordingThatWasStillReadIsReadAnew()
{
    FakeWindow window;
    window.setBeforeReport(window.untilReleased());
    window.launch();
    QVERIFY(window.drop(window.makeRecordings({a})));
    remove(window, a);
    QCOMPARE(window.status(), QStringLiteral("The queue is empty"));
    undo(window)->trigger();
    QCOMPARE(window.status(), QStringLiteral("Reading recordings…"));
    window.release();
    window.waitUntilRead();
    QCOMPARE(window.states(), QStringList{QStringLiteral("Ready")});
    QCOMPARE(window.delegate->projectList().front()->videoFrames(), quint64(2));
}

void TestRemovingWindow::recordingThatWasAddedAnewStaysAsItIs()
{
    FakeWindow window;
    window.launch({a, b});
    remove(window, a);
    window.add({a});
    undo(window)->trigger();
    QCOMPARE(window.queue(), QStringList({b, a}));
}

void TestRemovingWindow::onlyTheLastRemovalIsUndone()
{
    FakeWindow window;
    window.launch({a, b, c});
    remove(window, a);
    remove(window, b);
    undo(window)->trigger();
    QCOMPARE(window.queue(), QStringList({b, c}));
    undo(window)->trigger();
    QCOMPARE(window.queue(), QStringList({b, c}));
}

void TestRemovingWindow::replacedQueueDoesNotComeBack()
{
    FakeWindow window;
    window.launch({a, b});
    remove(window, a);
    window.alerts.answers = {0};
    window.add({c});
    QVERIFY(!undo(window)->isEnabled());
    QCOMPARE(window.queue(), QStringList{c});
}

FILMWRIGHT_TEST(TestRemovingWindow, QApplication)
#include "tst_removing_window.moc"
