// SPDX-License-Identifier: MIT
#include "cli/calibration.h"
#include "runner/temporarydirectory.h"
#include "support/events.h"
#include "support/processes.h"
#include "support/testprogram.h"
#include "support/toolfolder.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace filmwright;

namespace {

const QString mlvDump = QStringLiteral("mlv_dump");
const QString dark = QStringLiteral("/c/dark.MLV");
const QString flat = QStringLiteral("/c/flat.MLV");
const QString flatDark = QStringLiteral("/c/flatdark.MLV");

QString average(const char *name)
{
    return temporaryDirectory() + QLatin1Char('/') + QString::fromUtf8(name);
}

} // namespace

class TestCalibration : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { m_tools.reset(); }

    void withoutRecordingsItEndsAtOnce();
    void everythingIsAveragedInOrder();
    void darkOfTheFlatWithoutAFlatIsNotUsed();
    void errorLineEndsIt();
    void toolThatGoesOnAfterAnErrorIsStopped();
    void averageThatWasNotWrittenEndsIt();
    void toolThatEndsWithoutAWordEndsIt();
    void stoppedCalibrationTellsNothing();

private:
    QStringList run(Calibration &calibration)
    {
        QStringList endings;
        connect(&calibration, &Calibration::ended, this,
                [&endings](const QString &reason) { endings << reason; });
        calibration.start();
        [&] { QTRY_VERIFY(!endings.isEmpty()); }();
        settle();
        return endings;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<ToolFolder> m_tools;
};

void TestCalibration::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(setBaseTemporaryDirectory(m_folder->path()));
    m_tools = std::make_unique<ToolFolder>();
    // The output follows "-o", the fourth argument of every run.
    m_tools->addTool(mlvDump,
                     QStringLiteral("echo average > \"$4\"; "
                                    "echo 'Processed 8 video frames at 25 FPS'; echo Done"));
}

void TestCalibration::withoutRecordingsItEndsAtOnce()
{
    Calibration calibration({{}, {}, {}});
    QCOMPARE(run(calibration), QStringList{QString()});
    QCOMPARE((CalibrationChoice{}.darkAverage()), QString());
    QCOMPARE((CalibrationChoice{}.flatAverage()), QString());
    QCOMPARE(m_tools->calls(mlvDump), QList<QStringList>());
}

void TestCalibration::everythingIsAveragedInOrder()
{
    Calibration calibration({dark, flat, flatDark});
    QCOMPARE(run(calibration), QStringList{QString()});
    const QString a = QStringLiteral("-a");
    const QString o = QStringLiteral("-o");
    QCOMPARE(m_tools->calls(mlvDump),
             (QList<QStringList>{{a, dark, o, average("dark.mlv")},
                                 {a, flat, o, average("flat.mlv")},
                                 {a, flatDark, o, average("flat_dark.mlv")},
                                 {QStringLiteral("-s"), average("flat_dark.mlv"), o,
                                  average("flat-flat_dark.mlv"), average("flat.mlv")}}));
    QCOMPARE((CalibrationChoice{dark, flat, flatDark}.darkAverage()), average("dark.mlv"));
    QCOMPARE((CalibrationChoice{dark, flat, flatDark}.flatAverage()),
             average("flat-flat_dark.mlv"));
}

void TestCalibration::darkOfTheFlatWithoutAFlatIsNotUsed()
{
    Calibration calibration({dark, {}, flatDark});
    QCOMPARE(run(calibration), QStringList{QString()});
    QCOMPARE(m_tools->calls(mlvDump).size(), 1);
    QCOMPARE((CalibrationChoice{dark, {}, flatDark}.flatAverage()), QString());
}

void TestCalibration::errorLineEndsIt()
{
    m_tools->addTool(mlvDump, QStringLiteral("echo '[ERROR] not a recording'; "
                                             "printf 'Processed 0 video frames\\nDone\\n'"));
    Calibration calibration({dark, flat, {}});
    QCOMPARE(run(calibration), QStringList{QStringLiteral("dark.MLV: not a recording")});
    QCOMPARE(m_tools->calls(mlvDump).size(), 1);
}

void TestCalibration::toolThatGoesOnAfterAnErrorIsStopped()
{
    m_tools->addTool(mlvDump,
                     QStringLiteral("echo $$ > \"$0.pid\"; echo '[ERROR] not a recording'; "
                                    "exec sleep 1000"));
    Calibration calibration({dark, {}, {}});
    QCOMPARE(run(calibration), QStringList{QStringLiteral("dark.MLV: not a recording")});
    QFile id(m_tools->path() + QStringLiteral("/mlv_dump.pid"));
    QVERIFY(id.open(QIODevice::ReadOnly));
    QVERIFY(!processRuns(id.readAll().trimmed().toLongLong()));
}

void TestCalibration::averageThatWasNotWrittenEndsIt()
{
    m_tools->addTool(mlvDump, QStringLiteral("printf 'Processed 8 video frames\\nDone\\n'"));
    Calibration calibration({{}, flat, {}});
    QCOMPARE(run(calibration), QStringList{QStringLiteral("flat.MLV could not be averaged")});
}

void TestCalibration::toolThatEndsWithoutAWordEndsIt()
{
    m_tools->addTool(mlvDump, QStringLiteral("kill -SEGV $$"));
    Calibration calibration({{}, flat, {}});
    QCOMPARE(run(calibration),
             QStringList{QStringLiteral("mlv_dump ended before it had averaged flat.MLV")});
}

void TestCalibration::stoppedCalibrationTellsNothing()
{
    m_tools->addTool(mlvDump, QStringLiteral("exec sleep 1000"));
    Calibration calibration({dark, {}, {}});
    int endings = 0;
    connect(&calibration, &Calibration::ended, this, [&endings] { ++endings; });
    calibration.start();
    QTRY_COMPARE(m_tools->calls(mlvDump).size(), 1);
    calibration.stop();
    settle();
    QCOMPARE(endings, 0);
}

FILMWRIGHT_TEST(TestCalibration, QCoreApplication)
#include "tst_calibration.moc"
