// SPDX-License-Identifier: MIT
#include "cli/conversionreport.h"

#include "support/fulldisk.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

using namespace filmwright;
using namespace std::chrono_literals;

namespace {

RecordingOutcome finished(const char *recording)
{
    RecordingOutcome outcome;
    outcome.recording = QString::fromUtf8(recording);
    outcome.result = RecordingOutcome::Finished;
    outcome.movie = QStringLiteral("/card/a.mov");
    outcome.frames = 1200;
    outcome.duration = 61250ms;
    outcome.warnings = QStringList{QStringLiteral("the sound is left out")};
    outcome.notes = QStringList{QStringLiteral("a gap is filled")};
    return outcome;
}

RecordingOutcome failed(const char *recording)
{
    RecordingOutcome outcome;
    outcome.recording = QString::fromUtf8(recording);
    outcome.result = RecordingOutcome::Failed;
    outcome.duration = 300ms;
    outcome.failure.error = QStringLiteral("ffmpeg wrote no movie");
    outcome.failure.tool = QStringLiteral("ffmpeg");
    outcome.toolLines = {{QStringLiteral("ffmpeg"), {QStringLiteral("no"), QStringLiteral("way")}}};
    return outcome;
}

RecordingOutcome notBegun(const char *recording)
{
    RecordingOutcome outcome;
    outcome.recording = QString::fromUtf8(recording);
    return outcome;
}

QJsonObject parsed(const QByteArray &report)
{
    return QJsonDocument::fromJson(report).object();
}

} // namespace

class TestConversionReport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tableIsAligned();
    void recordingsAreNamedFromTheirCommonFolderOn_data();
    void recordingsAreNamedFromTheirCommonFolderOn();
    void nothingInTheTableIsACommandToTheTerminal();
    void reportOfAFinishedRecording();
    void reportOfAFailedRecording();
    void reportOfRecordingsWithoutAnEnd();
    void reportIsWrittenWhole();
    void unwritableReport_data();
    void unwritableReport();
    void fullDiskKeepsTheOldReport();
    void checkingAReportLeavesNoTrace();
};

void TestConversionReport::tableIsAligned()
{
    RecordingOutcome interrupted = notBegun("/card/c.MLV");
    interrupted.result = RecordingOutcome::Interrupted;
    interrupted.duration = 2s;
    QCOMPARE(outcomeTable({finished("/card/long name.MLV"), failed("/card/b.MLV"), interrupted,
                           notBegun("/card/d.MLV")})
                 .join(QLatin1Char('\n')),
             QStringLiteral("recording      result       frames  seconds  reason\n"
                            "long name.MLV  finished       1200     61.2  the sound is left out; "
                            "a gap is filled\n"
                            "b.MLV          failed                   0.3  ffmpeg wrote no movie\n"
                            "c.MLV          interrupted              2.0\n"
                            "d.MLV          not begun"));
}

void TestConversionReport::recordingsAreNamedFromTheirCommonFolderOn_data()
{
    QTest::addColumn<QByteArray>("first");
    QTest::addColumn<QByteArray>("second");
    QTest::addColumn<QStringList>("names");
    const auto names = [](const char *one, const char *other) {
        return QStringList{QString::fromUtf8(one), QString::fromUtf8(other)};
    };
    QTest::newRow("same folder") << QByteArray("/card/a.MLV") << QByteArray("/card/b.MLV")
                                 << names("a.MLV", "b.MLV");
    QTest::newRow("namesakes") << QByteArray("/card/1/a.MLV") << QByteArray("/card/12/a.MLV")
                               << names("1/a.MLV", "12/a.MLV");
    QTest::newRow("one below the other")
        << QByteArray("/card/a.MLV") << QByteArray("/card/1/a.MLV") << names("a.MLV", "1/a.MLV");
    QTest::newRow("nothing in common")
        << QByteArray("/a.MLV") << QByteArray("/card/a.MLV") << names("a.MLV", "card/a.MLV");
}

void TestConversionReport::recordingsAreNamedFromTheirCommonFolderOn()
{
    QFETCH(QByteArray, first);
    QFETCH(QByteArray, second);
    QFETCH(QStringList, names);
    const QStringList table =
        outcomeTable({notBegun(first.constData()), notBegun(second.constData())});
    QCOMPARE(table.at(1).section(QLatin1String("  "), 0, 0), names.at(0));
    QCOMPARE(table.at(2).section(QLatin1String("  "), 0, 0), names.at(1));
}

void TestConversionReport::nothingInTheTableIsACommandToTheTerminal()
{
    RecordingOutcome outcome = failed("/card/two\nlines\x1b[2J.MLV");
    outcome.failure.error = QStringLiteral("red \x1b[31m");
    const QString table = outcomeTable({outcome}).join(QString());
    QVERIFY(!table.contains(QChar(0x1b)));
    QVERIFY(!table.contains(QLatin1Char('\n')));
}

void TestConversionReport::reportOfAFinishedRecording()
{
    const QJsonObject report = parsed(outcomeReport({finished("/card/a.MLV")}, 0));
    QCOMPARE(report.value(QStringLiteral("status")).toInt(-1), 0);
    const QJsonObject expected{
        {QStringLiteral("recording"), QStringLiteral("/card/a.MLV")},
        {QStringLiteral("result"), QStringLiteral("finished")},
        {QStringLiteral("movie"), QStringLiteral("/card/a.mov")},
        {QStringLiteral("frames"), 1200},
        {QStringLiteral("seconds"), 61.25},
        {QStringLiteral("reason"), QJsonValue::Null},
        {QStringLiteral("warnings"),
         QJsonArray{QStringLiteral("the sound is left out"), QStringLiteral("a gap is filled")}},
        {QStringLiteral("tool"), QJsonValue::Null},
        {QStringLiteral("tools"), QJsonObject()}};
    QCOMPARE(report.value(QStringLiteral("recordings")).toArray(), QJsonArray{expected});
}

void TestConversionReport::reportOfAFailedRecording()
{
    const QJsonObject report = parsed(outcomeReport({failed("/card/\xc3\xbc\n.MLV")}, 1));
    QCOMPARE(report.value(QStringLiteral("status")).toInt(-1), 1);
    const QJsonObject expected{
        {QStringLiteral("recording"), QString::fromUtf8("/card/\xc3\xbc\n.MLV")},
        {QStringLiteral("result"), QStringLiteral("failed")},
        {QStringLiteral("movie"), QJsonValue::Null},
        {QStringLiteral("frames"), 0},
        {QStringLiteral("seconds"), 0.3},
        {QStringLiteral("reason"), QStringLiteral("ffmpeg wrote no movie")},
        {QStringLiteral("warnings"), QJsonArray()},
        {QStringLiteral("tool"), QStringLiteral("ffmpeg")},
        {QStringLiteral("tools"),
         QJsonObject{
             {QStringLiteral("ffmpeg"), QJsonArray{QStringLiteral("no"), QStringLiteral("way")}}}}};
    QCOMPARE(report.value(QStringLiteral("recordings")).toArray(), QJsonArray{expected});
}

void TestConversionReport::reportOfRecordingsWithoutAnEnd()
{
    RecordingOutcome interrupted = notBegun("/card/a.MLV");
    interrupted.result = RecordingOutcome::Interrupted;
    const QJsonArray recordings = parsed(outcomeReport({interrupted, notBegun("/card/b.MLV")}, 130))
                                      .value(QStringLiteral("recordings"))
                                      .toArray();
    QCOMPARE(recordings.at(0)[QStringLiteral("result")].toString(), QStringLiteral("interrupted"));
    QCOMPARE(recordings.at(1)[QStringLiteral("result")].toString(), QStringLiteral("not begun"));
}

void TestConversionReport::reportIsWrittenWhole()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("report.json"));
    QCOMPARE(writeReport(path, QByteArray(1000, 'x')), QString());
    QCOMPARE(writeReport(path, "{}"), QString());
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("{}"));
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden).size(), 1);
}

void TestConversionReport::unwritableReport_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("no such folder") << QStringLiteral("/no/such/report.json");
    QTest::newRow("folder") << QStringLiteral("/tmp");
    QTest::newRow("endless name") << QStringLiteral("/tmp/%1").arg(QString(300, QLatin1Char('a')));
}

void TestConversionReport::unwritableReport()
{
    QFETCH(QString, path);
    const QString start = QStringLiteral("the report %1 can't be written: ").arg(path);
    for (const QString &error : {reportFileError(path), writeReport(path, "{}")}) {
        QVERIFY2(error.startsWith(start), qPrintable(error));
        QVERIFY(error.size() > start.size());
    }
}

void TestConversionReport::fullDiskKeepsTheOldReport()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("report.json"));
    QCOMPARE(writeReport(path, "old"), QString());
    QString error;
    {
        const FullDisk full(100);
        error = writeReport(path, QByteArray(1000, 'x'));
    }
    QVERIFY(!error.isEmpty());
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("old"));
}

void TestConversionReport::checkingAReportLeavesNoTrace()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("report.json"));
    QCOMPARE(reportFileError(path), QString());
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList());
    QCOMPARE(writeReport(path, "old"), QString());
    QCOMPARE(reportFileError(path), QString());
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("old"));
}

FILMWRIGHT_TEST(TestConversionReport, QCoreApplication)
#include "tst_conversionreport.moc"
