// SPDX-License-Identifier: MIT
#include "conversion/hdrinterleavedimagemerge.h"
#include "frames.h"
#include "runner/resources.h"
#include "support/logcapture.h"
#include "support/testprogram.h"
#include "support/toolfolder.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

using namespace filmwright;

class tst_HDRInterleavedImageMerge : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void convertsAtTheDefaultBrightnessAndThenBlends();
    void existingTiffIsKept();
    void environmentIsThePathOfItsFolderOnly();
    void linesAreLogged();
    void percentSignsAreReadAsAFormat();
    void unfinishedLineOfOneFrameIsNotPutBeforeTheNext();
    void missingToolIsPassedOver();
    void cancelledRunsNothing();
    void cancelEndsARunningTool();

private:
    QString toolFile(const QString &name) const
    {
        return m_tools->path() + QLatin1Char('/') + name;
    }
    QByteArray contents(const QString &path) const
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<ToolFolder> m_tools;
    QString m_dng;
};

void tst_HDRInterleavedImageMerge::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_tools.reset();
    m_tools = std::make_unique<ToolFolder>();
    m_tools->addTool(dcrawName,
                     QStringLiteral("for last; do :; done; echo tiff > \"${last%.*}.tiff\"; "
                                    "echo dcraw >> \"${0%/*}/order\""));
    m_tools->addTool(cr2hdrName, QStringLiteral("echo cr2hdr >> \"${0%/*}/order\""));
    m_dng = m_folder->filePath(QStringLiteral("tmp000000.dng"));
}

void tst_HDRInterleavedImageMerge::convertsAtTheDefaultBrightnessAndThenBlends()
{
    HDRInterleavedImageMerge merge;
    merge.setImagePath(m_dng);
    merge.hdrMerge();
    QCOMPARE(contents(toolFile(QStringLiteral("order"))), QByteArray("dcraw\ncr2hdr\n"));
    QCOMPARE(m_tools->calls(dcrawName).size(), 1);
    QCOMPARE(m_tools->calls(dcrawName).first().value(8), QStringLiteral("4.000000"));
    QCOMPARE(m_tools->calls(cr2hdrName), QList<QStringList>{{m_dng}});
    QCOMPARE(contents(m_folder->filePath(QStringLiteral("tmp000000.tiff"))), QByteArray("tiff\n"));
}

void tst_HDRInterleavedImageMerge::existingTiffIsKept()
{
    QFile tiff(m_folder->filePath(QStringLiteral("tmp000000.tiff")));
    QVERIFY(tiff.open(QIODevice::WriteOnly));
    HDRInterleavedImageMerge merge;
    merge.setImagePath(m_dng);
    merge.hdrMerge();
    QCOMPARE(contents(toolFile(QStringLiteral("order"))), QByteArray("cr2hdr\n"));
}

void tst_HDRInterleavedImageMerge::environmentIsThePathOfItsFolderOnly()
{
    m_tools->addTool(cr2hdrName, QStringLiteral("/bin/cat /proc/$$/environ > \"$0.env\""));
    HDRInterleavedImageMerge merge;
    merge.setImagePath(m_dng);
    merge.hdrMerge();
    QCOMPARE(contents(toolFile(QStringLiteral("cr2hdr.env"))),
             QByteArray("PATH=") + m_tools->path().toUtf8() + '\0');
}

void tst_HDRInterleavedImageMerge::linesAreLogged()
{
    m_tools->addTool(cr2hdrName, QStringLiteral("echo 'one : 1'; echo 'two : 2' >&2"));
    HDRInterleavedImageMerge merge;
    merge.setImagePath(m_dng);
    const LogCapture log;
    merge.hdrMerge();
    QCOMPARE(LogCapture::lines(),
             QStringList({QStringLiteral("one : 1"), QStringLiteral("two : 2")}));
}

void tst_HDRInterleavedImageMerge::percentSignsAreReadAsAFormat()
{
    m_tools->addTool(cr2hdrName, QStringLiteral("echo '50%% of %s'"));
    HDRInterleavedImageMerge merge;
    merge.setImagePath(m_dng);
    const LogCapture log;
    merge.hdrMerge();
    QCOMPARE(LogCapture::lines(), QStringList(QStringLiteral("50% of %s")));
}

void tst_HDRInterleavedImageMerge::unfinishedLineOfOneFrameIsNotPutBeforeTheNext()
{
    m_tools->addTool(cr2hdrName,
                     QStringLiteral("if test -e \"$0.second\"; then echo whole; else : > "
                                    "\"$0.second\"; printf half; fi"));
    HDRInterleavedImageMerge merge;
    merge.setImagePath(m_dng);
    const LogCapture log;
    merge.hdrMerge();
    merge.hdrMerge();
    QCOMPARE(LogCapture::lines(), QStringList{QStringLiteral("whole")});
}

void tst_HDRInterleavedImageMerge::missingToolIsPassedOver()
{
    QVERIFY(QFile::remove(toolFile(cr2hdrName)));
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", m_tools->path().toUtf8()); // in case one is installed
    HDRInterleavedImageMerge merge;
    merge.setImagePath(m_dng);
    merge.hdrMerge();
    qputenv("PATH", path);
    QCOMPARE(contents(toolFile(QStringLiteral("order"))), QByteArray("dcraw\n"));
}

void tst_HDRInterleavedImageMerge::cancelledRunsNothing()
{
    HDRInterleavedImageMerge merge;
    merge.setImagePath(m_dng);
    merge.requestCancel();
    merge.hdrMerge();
    QVERIFY(m_tools->calls(dcrawName).isEmpty());
    QVERIFY(m_tools->calls(cr2hdrName).isEmpty());
    merge.clearCancelRequest();
    merge.hdrMerge();
    QCOMPARE(m_tools->calls(cr2hdrName).size(), 1);
}

void tst_HDRInterleavedImageMerge::cancelEndsARunningTool()
{
    const QString running = toolFile(QStringLiteral("running"));
    m_tools->addTool(cr2hdrName, QStringLiteral(": > '%1'; exec /bin/sleep 1000").arg(running));
    HDRInterleavedImageMerge merge;
    merge.setImagePath(m_dng);
    const std::unique_ptr<QThread> canceller(QThread::create([&] {
        while (!QFile::exists(running))
            QThread::msleep(1);
        merge.requestCancel();
    }));
    canceller->start();
    merge.hdrMerge();
    canceller->wait();
    QVERIFY(QFile::exists(running));
}

FILMWRIGHT_TEST(tst_HDRInterleavedImageMerge, QCoreApplication)
#include "tst_hdrinterleavedimagemerge.moc"
