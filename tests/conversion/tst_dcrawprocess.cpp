// SPDX-License-Identifier: MIT
#include "conversion/dcrawprocess.h"
#include "conversion/tiffbitmap.h"
#include "fakedcraw.h"
#include "frames.h"
#include "runner/resources.h"
#include "sluice/slunitprocessmanager.h"
#include "support/events.h"
#include "support/processes.h"
#include "support/testprogram.h"
#include "support/toolfolder.h"

#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

using namespace filmwright;

namespace {

class Viewer : public QObject
{
    Q_OBJECT

public:
    void imageRGBReceived(const QImage &image)
    {
        images << image;
        threads << QThread::currentThread();
    }
    QList<QImage> images;
    QList<QThread *> threads;
};

} // namespace

class tst_DCRawProcess : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void outletsAndThreadMode();
    void everyPathIsConvertedAndDeliveredInOrder();
    void pathsComeOutBehindTheirImages();
    void existingTiffIsDeliveredWithoutDcraw();
    void pathWithoutExtension();
    void failedConversionDeliversANullImage();
    void realFrameKeepsItsSize();

    void dualIsoFrameIsConvertedOnceAtTheDefaultBrightness();
    void dualIsoRaisesTheExposureForGood();

    void stopAndInterruptEndDcraw();
    void interruptEndsCr2hdr();
    void convertsAgainAfterAnInterrupt();
    void destroyedManagerLeavesNoChild();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    QString toolFile(const QString &name) const
    {
        return m_tools->path() + QLatin1Char('/') + name;
    }
    QStringList brightnesses() const;
    qint64 waitForPid(const QString &tool) const;

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<ToolFolder> m_tools;
    std::unique_ptr<Viewer> m_viewer;
    std::shared_ptr<DCRawProcess> m_unit;
    std::unique_ptr<SLUnitProcessManager> m_manager;
};

void tst_DCRawProcess::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_tools = std::make_unique<ToolFolder>();
    m_tools->addTool(dcrawName, writeFrame);
    m_tools->addTool(cr2hdrName, QStringLiteral(":"));
    QVERIFY(countingBitmap(4, 2).write(toolFile(QStringLiteral("dcraw.tiff"))));
    m_viewer = std::make_unique<Viewer>();
    m_unit = std::make_shared<DCRawProcess>();
    SLOutlet *image = m_unit->outputForKey(QStringLiteral("Image"));
    image->setTarget(m_viewer.get());
    image->setSelector(&Viewer::imageRGBReceived);
    m_manager = std::make_unique<SLUnitProcessManager>();
    m_manager->addUnitProcess(m_unit);
}

void tst_DCRawProcess::cleanup()
{
    m_manager.reset();
    m_unit.reset();
    m_viewer.reset();
    m_tools.reset();
}

QStringList tst_DCRawProcess::brightnesses() const
{
    QStringList texts;
    for (const QStringList &call : m_tools->calls(dcrawName))
        texts << call.value(8);
    return texts;
}

qint64 tst_DCRawProcess::waitForPid(const QString &tool) const
{
    QFile file(toolFile(tool + QStringLiteral(".pid")));
    [&file] { QTRY_VERIFY(file.size() > 0); }();
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed().toLongLong() : 0;
}

void tst_DCRawProcess::outletsAndThreadMode()
{
    QCOMPARE(m_unit->inputs().size(), std::size_t(1));
    const SLOutlet &input = *m_unit->inputs().front();
    QCOMPARE(input.name(), QStringLiteral("FilePath"));
    QCOMPARE(int(input.mode()), 1);
    QCOMPARE(input.dataType(), QMetaType::fromType<QString>());
    QCOMPARE(m_unit->outputs().size(), std::size_t(1));
    const SLOutlet &output = *m_unit->outputs().front();
    QCOMPARE(output.name(), QStringLiteral("Image"));
    QCOMPARE(int(output.mode()), 4);
    QCOMPARE(output.dataType(), QMetaType::fromType<QImage>());
    QCOMPARE(int(m_unit->threadMode()), 3);
    QVERIFY(!m_unit->dualIso());
}

void tst_DCRawProcess::everyPathIsConvertedAndDeliveredInOrder()
{
    QStringList paths;
    for (const char *name : {"tmp000000.dng", "tmp000001.dng", "tmp000002.dng", "tmp000003.dng"})
        paths << path(QString::fromUtf8(name));
    for (const QString &dng : std::as_const(paths))
        m_unit->addFilePath(dng);
    m_manager->execute();
    QTRY_COMPARE(m_viewer->images.size(), 4);
    QStringList converted;
    for (const QStringList &call : m_tools->calls(dcrawName))
        converted << call.last();
    QCOMPARE(converted, paths);
    QCOMPARE(brightnesses(), QStringList(4, QStringLiteral("4.000000")));
    for (const QImage &image : std::as_const(m_viewer->images))
        QCOMPARE(image, countingBitmap(4, 2).toImage());
    for (const QThread *thread : std::as_const(m_viewer->threads))
        QCOMPARE(thread, QCoreApplication::instance()->thread());
}

void tst_DCRawProcess::pathsComeOutBehindTheirImages()
{
    struct Listener : QObject
    {
        void told(const QString &told) { paths << told; }
        QStringList paths;
    } listener;
    SLOutlet *output = m_unit->addPathOutput();
    QCOMPARE(output->name(), QStringLiteral("ConvertedPath"));
    output->setTarget(&listener);
    output->setSelector(&Listener::told);
    QStringList paths;
    for (const char *name : {"tmp000000.dng", "tmp000001.dng", "tmp000002.dng"})
        paths << path(QString::fromUtf8(name));
    for (const QString &dng : std::as_const(paths))
        m_unit->addFilePath(dng);
    m_manager->execute();
    QTRY_COMPARE(listener.paths, paths);
    QCOMPARE(m_viewer->images.size(), 3);
}

void tst_DCRawProcess::existingTiffIsDeliveredWithoutDcraw()
{
    QVERIFY(countingBitmap(3, 5, 7).write(path(QStringLiteral("tmp000000.tiff"))));
    m_unit->addFilePath(path(QStringLiteral("tmp000000.dng")));
    m_manager->execute();
    QTRY_COMPARE(m_viewer->images.size(), 1);
    QCOMPARE(m_viewer->images.first(), countingBitmap(3, 5, 7).toImage());
    QVERIFY(m_tools->calls(dcrawName).isEmpty());
}

void tst_DCRawProcess::pathWithoutExtension()
{
    QVERIFY(countingBitmap(3, 5).write(path(QStringLiteral("frame.tiff"))));
    m_unit->addFilePath(path(QStringLiteral("frame")));
    m_manager->execute();
    QTRY_COMPARE(m_viewer->images.size(), 1);
    QCOMPARE(m_viewer->images.first().size(), QSize(3, 5));
}

void tst_DCRawProcess::failedConversionDeliversANullImage()
{
    m_tools->addTool(dcrawName, QStringLiteral("exit 1"));
    m_unit->addFilePath(path(QStringLiteral("a.dng")));
    m_unit->addFilePath(path(QStringLiteral("b.dng")));
    m_manager->execute();
    QTRY_COMPARE(m_viewer->images.size(), 2); // so that a count of frames still reaches zero
    QCOMPARE(m_viewer->images.first().size(), QSize(0, 0));
}

void tst_DCRawProcess::realFrameKeepsItsSize()
{
    cleanup();
    m_tools.reset();
    m_viewer = std::make_unique<Viewer>();
    m_unit = std::make_shared<DCRawProcess>();
    m_unit->outputForKey(QStringLiteral("Image"))->setTarget(m_viewer.get());
    m_unit->outputForKey(QStringLiteral("Image"))->setSelector(&Viewer::imageRGBReceived);
    SLUnitProcessManager manager;
    manager.addUnitProcess(m_unit);
    QVERIFY(writeRampDng(path(QStringLiteral("ramp.dng")), 64, 48));
    m_unit->addFilePath(path(QStringLiteral("ramp.dng")));
    manager.execute();
    QTRY_COMPARE_WITH_TIMEOUT(m_viewer->images.size(), 1, 60000);
    QCOMPARE(m_viewer->images.first().size(), QSize(64, 48));
}

void tst_DCRawProcess::dualIsoFrameIsConvertedOnceAtTheDefaultBrightness()
{
    m_unit->setDualIso(true);
    m_unit->addFilePath(path(QStringLiteral("a.dng")));
    m_unit->addFilePath(path(QStringLiteral("b.dng")));
    m_manager->execute();
    QTRY_COMPARE(m_viewer->images.size(), 2);
    // The blend makes the TIFF first; the conversion at the higher exposure finds it there.
    QCOMPARE(brightnesses(), QStringList(2, QStringLiteral("4.000000")));
    QCOMPARE(m_tools->calls(cr2hdrName), QList<QStringList>({{path(QStringLiteral("a.dng"))},
                                                             {path(QStringLiteral("b.dng"))}}));
    QCOMPARE(m_viewer->images.last().size(), QSize(4, 2));
}

void tst_DCRawProcess::dualIsoRaisesTheExposureForGood()
{
    m_unit->setDualIso(true);
    m_unit->addFilePath(path(QStringLiteral("a.dng")));
    m_manager->execute();
    QTRY_COMPARE(m_viewer->images.size(), 1);
    m_unit->setDualIso(false);
    m_unit->addFilePath(path(QStringLiteral("b.dng")));
    QTRY_COMPARE(m_viewer->images.size(), 2);
    QCOMPARE(brightnesses(),
             QStringList({QStringLiteral("4.000000"), QStringLiteral("32.000000")}));
}

void tst_DCRawProcess::stopAndInterruptEndDcraw()
{
    m_tools->addTool(dcrawName, writeHalf);
    m_unit->addFilePath(path(QStringLiteral("a.dng")));
    m_unit->addFilePath(path(QStringLiteral("b.dng")));
    m_manager->execute();
    const qint64 pid = waitForPid(dcrawName);
    m_manager->stop();
    m_unit->interrupt();
    QTRY_VERIFY(!processRuns(pid));
    QTRY_VERIFY(!QFile::exists(path(QStringLiteral("a.tiff"))));
    m_manager.reset(); // waits for the worker
    deliverEvents();
    QVERIFY(m_viewer->images.isEmpty());
    QCOMPARE(m_tools->calls(dcrawName).size(), 1);
}

void tst_DCRawProcess::interruptEndsCr2hdr()
{
    m_tools->addTool(cr2hdrName, QStringLiteral("echo $$ > \"$0.pid\"; exec /bin/sleep 600"));
    m_unit->setDualIso(true);
    m_unit->addFilePath(path(QStringLiteral("a.dng")));
    m_manager->execute();
    const qint64 pid = waitForPid(cr2hdrName);
    m_manager->stop();
    m_unit->interrupt();
    QTRY_VERIFY(!processRuns(pid));
}

void tst_DCRawProcess::convertsAgainAfterAnInterrupt()
{
    m_tools->addTool(dcrawName, writeHalf);
    m_unit->addFilePath(path(QStringLiteral("a.dng")));
    m_manager->execute();
    waitForPid(dcrawName);
    m_manager->stop();
    m_unit->interrupt();
    m_tools->addTool(dcrawName, writeFrame);
    m_unit->addFilePath(path(QStringLiteral("a.dng")));
    m_manager->execute();
    QTRY_COMPARE(m_viewer->images.size(), 1);
    QCOMPARE(m_viewer->images.first().size(), QSize(4, 2));
    QVERIFY(TiffBitmap::isWhole(path(QStringLiteral("a.tiff"))));
}

void tst_DCRawProcess::destroyedManagerLeavesNoChild()
{
    m_tools->addTool(dcrawName, writeHalf);
    m_unit->addFilePath(path(QStringLiteral("a.dng")));
    m_manager->execute();
    const qint64 pid = waitForPid(dcrawName);
    m_manager.reset();
    QVERIFY(!processRuns(pid));
    QVERIFY(!QFile::exists(path(QStringLiteral("a.tiff"))));
}

FILMWRIGHT_TEST(tst_DCRawProcess, QCoreApplication)
#include "tst_dcrawprocess.moc"
