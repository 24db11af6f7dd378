// SPDX-License-Identifier: MIT
#include "conversion/dcrawarguments.h"
#include "conversion/dcrawtask.h"
#include "conversion/tiffbitmap.h"
#include "fakedcraw.h"
#include "frames.h"
#include "runner/resources.h"
#include "support/testprogram.h"
#include "support/toolfolder.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <thread>

using namespace filmwright;

namespace {

class Listener : public DCRawTaskProtocol
{
public:
    void dngConversionFinished(DCRawTask &task) override
    {
        tasks << &task;
        threads << QThread::currentThread();
    }
    QList<DCRawTask *> tasks;
    QList<QThread *> threads;
};

QStringList expectedArguments(const QString &brightness, const QString &dngPath)
{
    QStringList arguments = QStringLiteral("-H 3 -q 3 -w -W -T -b").split(QLatin1Char(' '));
    return arguments << brightness << dngPath;
}

} // namespace

class tst_DCRawTask : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void argumentsAtTheDefaultExposure();
    void furtherArgumentsStandInFront();
    void brightnessText_data();
    void brightnessText();
    void tiffPath_data();
    void tiffPath();
    void initialState();

    void convertsAndReportsOnce();
    void existingTiffIsNotConvertedAgain();
    void exposureReachesDcraw();
    void failingDcrawIsReportedAllTheSame();
    void missingDcrawIsReportedAllTheSame();
    void asynchronousRunReportsAtItsEnd();
    void withoutDelegate();
    void cancelRemovesTheHalfWrittenTiff();
    void cancelKeepsAWholeTiff();
    void cancelledBeforehandRunsNothing();
    void convertsAgainAfterTheCancelIsCleared();
    void realDcrawConvertsADng();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    void convertCancelledWhenTheTiffIsThere(qint64 tiffSize);

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<ToolFolder> m_tools;
    std::unique_ptr<DCRawTask> m_task;
    Listener m_listener;
};

void tst_DCRawTask::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_tools.reset();
    m_tools = std::make_unique<ToolFolder>();
    m_tools->addTool(dcrawName, writeFrame);
    QVERIFY(countingBitmap(4, 2).write(m_tools->path() + QStringLiteral("/dcraw.tiff")));
    m_task = DCRawTask::dcRawTask();
    m_listener = Listener();
    m_task->setDelegate(&m_listener);
    m_task->setDngPath(path(QStringLiteral("tmp000012.dng")));
}

void tst_DCRawTask::argumentsAtTheDefaultExposure()
{
    QCOMPARE(dcRawArguments(QStringLiteral("/a b/c.dng"), 1.0F),
             expectedArguments(QStringLiteral("4.000000"), QStringLiteral("/a b/c.dng")));
}

void tst_DCRawTask::furtherArgumentsStandInFront()
{
    m_task->setDevelop({QStringLiteral("-6"), QStringLiteral("-m"), QStringLiteral("2")});
    m_task->convertDNG();
    QCOMPARE(m_tools->calls(dcrawName),
             (QList<QStringList>{m_task->develop() +
                                 expectedArguments(QStringLiteral("4.000000"),
                                                   path(QStringLiteral("tmp000012.dng")))}));
}

void tst_DCRawTask::brightnessText_data()
{
    QTest::addColumn<float>("exposure");
    QTest::addColumn<QString>("text");
    QTest::newRow("default") << 1.0F << QStringLiteral("4.000000");
    QTest::newRow("dual ISO") << 8.0F << QStringLiteral("32.000000");
    QTest::newRow("fraction") << 0.1F << QStringLiteral("0.400000");
    QTest::newRow("a half goes to the even digit") << 0.001953125F << QStringLiteral("0.007812");
    QTest::newRow("single precision") << 123456.789F << QStringLiteral("493827.156250");
}

void tst_DCRawTask::brightnessText()
{
    QFETCH(float, exposure);
    QFETCH(QString, text);
    QCOMPARE(dcRawArguments(QString(), exposure).at(8), text);
}

void tst_DCRawTask::tiffPath_data()
{
    QTest::addColumn<QString>("dng");
    QTest::addColumn<QString>("tiff");
    QTest::newRow("frame") << "/x/tmp000012.dng"
                           << "/x/tmp000012.tiff";
    QTest::newRow("upper case") << "/x/A.DNG"
                                << "/x/A.tiff";
    QTest::newRow("two dots") << "/x/a.b.dng"
                              << "/x/a.b.tiff";
    QTest::newRow("no extension") << "/x/frame"
                                  << "/x/frame.tiff";
    QTest::newRow("dot in the folder only") << "/x.MLV/frame"
                                            << "/x.MLV/frame.tiff";
}

void tst_DCRawTask::tiffPath()
{
    QFETCH(QString, dng);
    QFETCH(QString, tiff);
    QCOMPARE(tiffPathFor(dng), tiff);
}

void tst_DCRawTask::initialState()
{
    const DCRawTask task;
    QCOMPARE(task.exposure(), 1.0F);
    QCOMPARE(task.delegate(), nullptr);
    QCOMPARE(task.launchPath(), m_tools->path() + QStringLiteral("/dcraw"));
    QCOMPARE(task.taskWrapperdelegate(), static_cast<const TaskWrapperDelegate *>(&task));
}

void tst_DCRawTask::convertsAndReportsOnce()
{
    m_task->convertDNG();
    QCOMPARE(m_tools->calls(dcrawName),
             QList<QStringList>{expectedArguments(QStringLiteral("4.000000"),
                                                  path(QStringLiteral("tmp000012.dng")))});
    QVERIFY(QFile::exists(path(QStringLiteral("tmp000012.tiff"))));
    QCOMPARE(m_listener.tasks, QList<DCRawTask *>{m_task.get()});
    QCOMPARE(m_listener.threads, QList<QThread *>{QThread::currentThread()});
}

void tst_DCRawTask::existingTiffIsNotConvertedAgain()
{
    QFile tiff(path(QStringLiteral("tmp000012.tiff")));
    QVERIFY(tiff.open(QIODevice::WriteOnly)); // whatever it holds
    m_task->convertDNG();
    QVERIFY(m_tools->calls(dcrawName).isEmpty());
    QCOMPARE(m_listener.tasks.size(), 1);
    QCOMPARE(tiff.size(), 0);
}

void tst_DCRawTask::exposureReachesDcraw()
{
    m_task->setExposure(8.0F);
    m_task->convertDNG();
    QCOMPARE(m_tools->calls(dcrawName),
             QList<QStringList>{expectedArguments(QStringLiteral("32.000000"),
                                                  path(QStringLiteral("tmp000012.dng")))});
}

void tst_DCRawTask::failingDcrawIsReportedAllTheSame()
{
    m_tools->addTool(dcrawName, QStringLiteral("echo no; exit 1"));
    m_task->convertDNG();
    QCOMPARE(m_listener.tasks.size(), 1);
    QVERIFY(!QFile::exists(path(QStringLiteral("tmp000012.tiff"))));
}

void tst_DCRawTask::missingDcrawIsReportedAllTheSame()
{
    m_task->setLaunchPath(path(QStringLiteral("nothing")));
    m_task->convertDNG();
    m_task->setLaunchPath(QString());
    m_task->convertDNG();
    QCOMPARE(m_listener.tasks.size(), 2);
}

void tst_DCRawTask::asynchronousRunReportsAtItsEnd()
{
    m_tools->addTool(dcrawName, QStringLiteral("sleep 0.2"));
    m_task->setArguments({});
    QVERIFY(m_task->startAndWaitUntilExit(false));
    QVERIFY(m_listener.tasks.isEmpty());
    QTRY_COMPARE(m_listener.tasks.size(), 1);
}

void tst_DCRawTask::withoutDelegate()
{
    m_task->setDelegate(nullptr);
    m_task->convertDNG();
    QCOMPARE(m_tools->calls(dcrawName).size(), 1);
}

void tst_DCRawTask::convertCancelledWhenTheTiffIsThere(qint64 tiffSize)
{
    std::thread canceller([this, tiffSize] {
        while (QFile(path(QStringLiteral("tmp000012.tiff"))).size() < tiffSize)
            QThread::msleep(5);
        m_task->requestCancel();
    });
    m_task->convertDNG();
    canceller.join();
}

void tst_DCRawTask::cancelRemovesTheHalfWrittenTiff()
{
    m_tools->addTool(dcrawName, writeHalf);
    convertCancelledWhenTheTiffIsThere(20);
    QVERIFY(!QFile::exists(path(QStringLiteral("tmp000012.tiff"))));
    QCOMPARE(m_listener.tasks.size(), 1);
}

void tst_DCRawTask::cancelKeepsAWholeTiff()
{
    m_tools->addTool(dcrawName, writeFrame + QStringLiteral("; exec sleep 600"));
    convertCancelledWhenTheTiffIsThere(
        QFile(m_tools->path() + QStringLiteral("/dcraw.tiff")).size());
    QVERIFY(TiffBitmap::isWhole(path(QStringLiteral("tmp000012.tiff"))));
}

void tst_DCRawTask::cancelledBeforehandRunsNothing()
{
    m_task->requestCancel();
    m_task->convertDNG();
    QVERIFY(m_tools->calls(dcrawName).isEmpty());
    QCOMPARE(m_listener.tasks.size(), 1);
}

void tst_DCRawTask::convertsAgainAfterTheCancelIsCleared()
{
    m_task->requestCancel();
    m_task->convertDNG();
    m_task->clearCancelRequest();
    m_task->convertDNG();
    QVERIFY(QFile::exists(path(QStringLiteral("tmp000012.tiff"))));
}

void tst_DCRawTask::realDcrawConvertsADng()
{
    m_tools.reset();
    m_task = DCRawTask::dcRawTask();
    QVERIFY2(!m_task->launchPath().isNull(), "dcraw is not installed");
    const QString dng = path(QStringLiteral("ramp.dng"));
    QVERIFY(writeRampDng(dng, 64, 48));
    m_task->setDngPath(dng);
    m_task->convertDNG();
    const QString tiff = path(QStringLiteral("ramp.tiff"));
    QVERIFY(TiffBitmap::isWhole(tiff));
    const TiffBitmap bitmap = TiffBitmap::read(tiff);
    QCOMPARE(bitmap.width(), 64);
    QCOMPARE(bitmap.height(), 48);
    QCOMPARE(bitmap.samplesPerPixel(), 3);
    QCOMPARE(bitmap.bitsPerSample(), 8);
    const QImage image = bitmap.toImage();
    QVERIFY(image.pixelColor(2, 24).green() < image.pixelColor(32, 24).green());
    QVERIFY(image.pixelColor(32, 24).green() < image.pixelColor(61, 24).green());
    // What a killed run leaves is shorter, wherever it was.
    QFile file(tiff);
    QVERIFY(file.resize(file.size() - 1));
    QVERIFY(!TiffBitmap::isWhole(tiff));
}

FILMWRIGHT_TEST(tst_DCRawTask, QCoreApplication)
#include "tst_dcrawtask.moc"
