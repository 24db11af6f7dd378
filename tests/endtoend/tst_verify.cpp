// SPDX-License-Identifier: MIT
// What "verify" tells of recordings before the card is wiped.

#include "commandline.h"
#include "sample.h"
#include "support/testprogram.h"
#include "support/toolfolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <csignal>

namespace {

const QString verify = QStringLiteral("verify");

} // namespace

class TestVerify : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(writeSample(path("whole.MLV"), QStringLiteral("--size 64x32 --frames 5")));
        QVERIFY(
            writeSample(path("gap.MLV"), QStringLiteral("--size 64x32 --frames 9 --drop 3,5-6")));
    }

    void wholeRecordingsHaveStatusZero()
    {
        CommandLine cli;
        QVERIFY(cli.run({verify, path("whole.MLV")}));
        QCOMPARE(cli.status(), 0);
        QCOMPARE(cli.output(), (QStringList{QStringLiteral("recording  result  frames  findings"),
                                            QStringLiteral("whole.MLV  whole        5")}));
        QCOMPARE(cli.messages(), QStringList{QStringLiteral("whole.MLV: verifying")});
    }

    void everythingThatIsLostIsTold()
    {
        QFile letter(path("letter.MLV"));
        QVERIFY(letter.open(QIODevice::WriteOnly));
        letter.write("this is a letter, not a recording");
        letter.close();
        CommandLine cli;
        QVERIFY(cli.run({verify, QStringLiteral("--quiet"), m_folder->path()}));
        QCOMPARE(cli.status(), 2);
        QCOMPARE(cli.output(),
                 (QStringList{QStringLiteral("recording   result      frames  findings"),
                              QStringLiteral("gap.MLV     not whole        6  3 frames are "
                                             "missing: 3, 5-6"),
                              QStringLiteral("letter.MLV  unreadable       0  The recording does "
                                             "not begin with an MLV file header"),
                              QStringLiteral("whole.MLV   whole            5")}));
        QCOMPARE(cli.messages(), QStringList());
        QVERIFY(letter.remove());
        QVERIFY(cli.run({verify, m_folder->path()}));
        QCOMPARE(cli.status(), 1);
    }

    void resultsForPrograms()
    {
        CommandLine cli;
        QVERIFY(cli.run({verify, asJson, path("gap.MLV"), QStringLiteral("/no/such.MLV")}));
        QCOMPARE(cli.status(), 2);
        const auto results =
            QJsonDocument::fromJson(cli.output().join(QLatin1Char('\n')).toUtf8()).array();
        QCOMPARE(results.size(), 2);
        QCOMPARE(results[0].toObject(),
                 (QJsonObject{
                     {QStringLiteral("path"), path("gap.MLV")},
                     {QStringLiteral("result"), QStringLiteral("not whole")},
                     {QStringLiteral("frames"), 6},
                     {QStringLiteral("losses"),
                      QJsonArray{QStringLiteral("3 frames are missing: 3, 5-6")}},
                     {QStringLiteral("warnings"), QJsonArray()},
                     {QStringLiteral("reason"), QJsonValue()},
                 }));
        QCOMPARE(results[1][QStringLiteral("result")].toString(), QStringLiteral("unreadable"));
    }

    void recordingsAreOnlyRead()
    {
        const QStringList before = QDir(m_folder->path()).entryList(QDir::Files);
        QFile recording(path("gap.MLV"));
        QVERIFY(recording.open(QIODevice::ReadOnly));
        const QByteArray bytes = recording.readAll();
        CommandLine cli;
        QVERIFY(cli.run({verify, m_folder->path()}));
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), before);
        QVERIFY(recording.seek(0));
        QCOMPARE(recording.readAll(), bytes);
    }

    void interruptionEndsTheTool()
    {
        ToolFolder tools;
        tools.addTool(QStringLiteral("mlv_dump"),
                      QStringLiteral("echo Checked 1 of 9 bytes; exec sleep 600"));
        CommandLine cli;
        cli.start({verify, path("whole.MLV")});
        QVERIFY(cli.waitForMessage(QStringLiteral("whole.MLV: verifying")));
        QTRY_COMPARE(tools.calls(QStringLiteral("mlv_dump")).size(), 1);
        cli.sendSignal(SIGINT);
        QVERIFY(cli.waitForEnd());
        QCOMPARE(cli.status(), 130);
    }

    void toolThatDiesIsNotTakenForAWholeRecording()
    {
        ToolFolder tools;
        tools.addTool(QStringLiteral("mlv_dump"), QStringLiteral("kill -9 $$"));
        CommandLine cli;
        QVERIFY(cli.run({verify, path("whole.MLV")}));
        QCOMPARE(cli.status(), 2);
        QVERIFY(cli.output().value(1).endsWith(
            QStringLiteral("mlv_dump ended before it had read the recording")));
    }

    void nothingToVerifyIsWrongUsage()
    {
        CommandLine cli;
        QVERIFY(cli.run({verify}));
        QCOMPARE(cli.status(), 2);
        const QTemporaryDir empty;
        QVERIFY(cli.run({verify, empty.path()}));
        QCOMPARE(cli.status(), 2);
        QCOMPARE(cli.messages(),
                 QStringList{QStringLiteral("filmwright-cli: no recordings found")});
    }

private:
    QString path(const char *name) const { return m_folder->filePath(QLatin1String(name)); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

FILMWRIGHT_TEST(TestVerify, QCoreApplication)
#include "tst_verify.moc"
