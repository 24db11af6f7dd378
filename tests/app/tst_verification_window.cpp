// SPDX-License-Identifier: MIT
#include "fakewindow.h"

#include "app/progresstablecellview.h"
#include "app/queuetableview.h"
#include "support/testprogram.h"

#include <QAction>
#include <QTest>

namespace {

const QString verify = QStringLiteral("verifyMenuItem");
const QString stopVerifying = QStringLiteral("stopVerifyingMenuItem");

/// Prints progress and goes on when the test says so.
const QString waiting = QStringLiteral("echo 'Checked 43 of 100 bytes'\n"
                                       "while [ ! -e \"$recording.go\" ]; do sleep 0.05; done\n"
                                       "echo Processed 1 video frames; echo Done");

} // namespace

/// Recording > Verify.
class TestVerificationWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void selectedRowsAreVerifiedOneAfterTheOther();
    void progressIsShown();
    void lossesAreShownInTheRow();
    void notesOfAWholeRecordingAreShown();
    void toolThatDiesIsShown();
    void stopForgetsThoseThatWait();
    void removedRecordingDoesNoHarm();
    void quittingEndsTheTool();
    void notesOfAMovieAreNoFailure();
};

void TestVerificationWindow::selectedRowsAreVerifiedOneAfterTheOther()
{
    FakeWindow window;
    window.launch();
    QVERIFY(!window.action(verify)->isEnabled());
    window.add({a, b});
    window.table()->selectAll();
    window.action(verify)->trigger();
    QTRY_COMPARE(window.status(), QStringLiteral("Verification ended"));
    QStringList verified;
    for (const QStringList &call : window.tools.calls(QStringLiteral("mlv_dump")))
        if (call.constFirst() == QLatin1String("--verify"))
            verified << call.at(1);
    verified.sort();
    QCOMPARE(verified, (QStringList{window.recordings() + QLatin1Char('/') + a,
                                    window.recordings() + QLatin1Char('/') + b}));
    for (const int row : {0, 1}) {
        QTRY_COMPARE(window.stateView(row)->textField()->text(), QStringLiteral("Verified: whole"));
        QVERIFY(window.stateView(row)->error().isEmpty());
    }
}

void TestVerificationWindow::progressIsShown()
{
    FakeWindow window;
    window.setVerification(waiting);
    window.launch({a});
    window.select(a);
    window.action(verify)->trigger();
    QTRY_COMPARE(window.status(), QStringLiteral("Verifying a.MLV, 43 %"));
    QCOMPARE(window.stateView(0)->textField()->text(), QStringLiteral("Verifying, 43 %"));
    QVERIFY(QFile(window.recordings() + QStringLiteral("/a.MLV.go")).open(QIODevice::WriteOnly));
    QTRY_COMPARE(window.status(), QStringLiteral("Verification ended"));
}

void TestVerificationWindow::lossesAreShownInTheRow()
{
    FakeWindow window;
    window.setVerification(QStringLiteral("echo '[LOST] 2 frames are missing: 3-4'\n"
                                          "echo '[NOTE] the white level is wrong'\n"
                                          "echo Processed 1 video frames; echo Done; exit 1"));
    window.launch({a});
    window.select(a);
    window.action(verify)->trigger();
    QTRY_COMPARE(window.stateView(0)->textField()->text(), QStringLiteral("Verified: not whole"));
    QCOMPARE(window.stateView(0)->error(), QStringLiteral("2 frames are missing: 3-4"));
    const QString toolTip = window.delegate->toolTipForTableColumn(QStringLiteral("State"), 0);
    QVERIFY(toolTip.contains(QLatin1String("2 frames are missing: 3-4")));
    QVERIFY(toolTip.contains(QLatin1String("the white level is wrong")));
}

void TestVerificationWindow::notesOfAWholeRecordingAreShown()
{
    FakeWindow window;
    window.setVerification(QStringLiteral("echo '[NOTE] the white level is wrong'\n"
                                          "echo Processed 1 video frames; echo Done"));
    window.launch({a});
    window.select(a);
    window.action(verify)->trigger();
    QTRY_COMPARE(window.stateView(0)->textField()->text(), QStringLiteral("Verified: whole"));
    QVERIFY(window.stateView(0)->error().isEmpty());
    QVERIFY(window.stateView(0)->toolTip().contains(QLatin1String("the white level is wrong")));
}

void TestVerificationWindow::toolThatDiesIsShown()
{
    FakeWindow window;
    window.setVerification(QStringLiteral("kill -9 $$"));
    window.launch({a});
    window.select(a);
    window.action(verify)->trigger();
    QTRY_COMPARE(window.stateView(0)->textField()->text(), QStringLiteral("Verified: unreadable"));
    QCOMPARE(window.stateView(0)->error(),
             QStringLiteral("mlv_dump ended before it had read the recording"));
}

void TestVerificationWindow::stopForgetsThoseThatWait()
{
    FakeWindow window;
    window.setVerification(waiting);
    window.launch({a, b});
    window.table()->selectAll();
    QVERIFY(!window.action(stopVerifying)->isEnabled());
    window.action(verify)->trigger();
    QTRY_VERIFY(window.status().endsWith(QLatin1String(", 43 %, 1 more")));
    window.action(stopVerifying)->trigger();
    QCOMPARE(window.status(), QStringLiteral("Verification ended"));
    QVERIFY(!window.action(stopVerifying)->isEnabled());
    for (const int row : {0, 1})
        QTRY_COMPARE(window.stateView(row)->textField()->text(), QStringLiteral("Ready"));
    // It can begin again.
    window.setVerification(QStringLiteral("echo Processed 1 video frames; echo Done"));
    window.action(verify)->trigger();
    QTRY_COMPARE(window.stateView(1)->textField()->text(), QStringLiteral("Verified: whole"));
}

void TestVerificationWindow::removedRecordingDoesNoHarm()
{
    FakeWindow window;
    window.setVerification(waiting);
    window.launch({a, b});
    window.select(a);
    window.action(verify)->trigger();
    QTRY_COMPARE(window.status(), QStringLiteral("Verifying a.MLV, 43 %"));
    window.action(QStringLiteral("removeMenuItem"))->trigger();
    QCOMPARE(window.queue(), QStringList{b});
    QVERIFY(QFile(window.recordings() + QStringLiteral("/a.MLV.go")).open(QIODevice::WriteOnly));
    QTRY_VERIFY(!window.action(stopVerifying)->isEnabled());
    QCOMPARE(window.stateView(0)->textField()->text(), QStringLiteral("Ready"));
}

void TestVerificationWindow::quittingEndsTheTool()
{
    FakeWindow window;
    window.setVerification(QStringLiteral("echo $$ > \"$recording.pid\"; exec sleep 600"));
    window.launch({a});
    window.select(a);
    window.action(verify)->trigger();
    QFile pid(window.recordings() + QStringLiteral("/a.MLV.pid"));
    QTRY_VERIFY(pid.size() > 0);
    QVERIFY(pid.open(QIODevice::ReadOnly));
    const QString process = QStringLiteral("/proc/") + QString::fromLatin1(pid.readAll().trimmed());
    QVERIFY(QFile::exists(process));
    window.quit();
    QTRY_VERIFY(!QFile::exists(process));
}

void TestVerificationWindow::notesOfAMovieAreNoFailure()
{
    FakeWindow window;
    window.setExtraction(QStringLiteral("echo '[NOTE] the white level is wrong'\n") +
                         FakeTools::extraction(2));
    window.launch({a});
    window.pressStart();
    window.waitForEnd();
    QTRY_COMPARE(window.status(), QStringLiteral("1 movie written"));
    QVERIFY(window.stateView(0)->isMovieWritten());
    QVERIFY(window.stateView(0)->error().isEmpty());
    QVERIFY(window.stateView(0)->toolTip().contains(QLatin1String("the white level is wrong")));
    QVERIFY(window.delegate->toolTipForTableColumn(QStringLiteral("State"), 0)
                .contains(QLatin1String("the white level is wrong")));
}

FILMWRIGHT_TEST(TestVerificationWindow, QApplication)
#include "tst_verification_window.moc"
