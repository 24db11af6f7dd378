// SPDX-License-Identifier: MIT
#include "fakewindow.h"

#include "app/progressindicator.h"

#include <QComboBox>

class TestBatchWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void startConvertsEveryRecordingInListOrder();
};

void TestBatchWindow::startConvertsEveryRecordingInListOrder()
{
    FakeWindow window;
    window.launch();
    window.add({QStringLiteral("a.MLV"), QStringLiteral("b.MLV"), QStringLiteral("c.MLV")});
    window.pressStart();
    QCOMPARE(window.action(QStringLiteral("startStopItem"))->text(), QStringLiteral("Stop"));
    window.waitForEnd();
    const QString finished = QStringLiteral("Finished");
    QCOMPARE(window.states(), QStringList({finished, finished, finished}));
    QStringList movies;
    for (const QStringList &call : window.tools.calls(QStringLiteral("ffmpeg")))
        movies << QFileInfo(call.constLast()).fileName();
    QCOMPARE(movies, QStringList({QStringLiteral("a.avi"), QStringLiteral("b.avi"),
                                  QStringLiteral("c.avi")}));
    QCOMPARE(window.alerts.shown, QStringList());
}

QTEST_MAIN(TestBatchWindow)
#include "tst_batch_window.moc"
