// SPDX-License-Identifier: MIT
#include "runner/files.h"
#include "runner/systemlog.h"
#include "support/logcapture.h"
#include "support/testprogram.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace filmwright;

class TestFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void entriesComeInAscendingOrderOfTheirNames()
    {
        const QTemporaryDir folder;
        for (const char *name : {"tmp000010.dng", "tmp000002.dng", "Tmp.wav", ".hidden", "hdr"})
            QVERIFY(QDir(folder.path()).mkdir(QString::fromUtf8(name)));
        QCOMPARE(folderEntries(folder.path()),
                 (QStringList{QStringLiteral(".hidden"), QStringLiteral("Tmp.wav"),
                              QStringLiteral("hdr"), QStringLiteral("tmp000002.dng"),
                              QStringLiteral("tmp000010.dng")}));
    }

    void removingAFolderFollowsNoLink()
    {
        const QTemporaryDir folder;
        const QString precious = folder.filePath(QStringLiteral("precious"));
        const QString photo = precious + QStringLiteral("/photo");
        QVERIFY(QDir().mkdir(precious));
        QVERIFY(QFile(photo).open(QIODevice::WriteOnly));
        const QString work = folder.filePath(QStringLiteral("work"));
        QVERIFY(QDir().mkdir(work));
        QVERIFY(QFile::link(precious, work + QStringLiteral("/inside")));
        QVERIFY(QFile::link(precious, folder.filePath(QStringLiteral("instead"))));
        removeFolder(work + QLatin1Char('/'));
        removeFolder(folder.filePath(QStringLiteral("instead/")));
        removeFolder(photo);
        QCOMPARE(folderEntries(folder.path()), QStringList{QStringLiteral("precious")});
        QVERIFY(QFile::exists(photo));
    }

    void missingFolderHasNoEntries()
    {
        QCOMPARE(folderEntries(QStringLiteral("/no/such/folder")), QStringList());
    }

    void onlyTheLastExtensionIsReplaced_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("replaced");
        QTest::newRow("usual") << "/clips/M12-1530.MLV"
                               << "/clips/M12-1530.mov";
        QTest::newRow("two dots") << "/clips/a.b.MLV"
                                  << "/clips/a.b.mov";
        QTest::newRow("none") << "/clips/frame"
                              << "/clips/frame.mov";
        QTest::newRow("dot in the folder") << "/cl.ips/frame"
                                           << "/cl.ips/frame.mov";
    }

    void onlyTheLastExtensionIsReplaced()
    {
        QFETCH(QString, path);
        QTEST(pathWithExtension(path, QStringLiteral("mov")), "replaced");
    }

    void privateFolderInsideAFileIsNotCreated()
    {
        QVERIFY(!createPrivateFolder(QStringLiteral("/etc/passwd/folder")));
    }

    void freeSpaceOfAMissingFolderIsThatAboveIt()
    {
        const QTemporaryDir folder;
        QVERIFY(qIsFinite(freeSpace(folder.filePath(QStringLiteral("not/yet")))));
    }

    void logLineIsTheMessageAlone()
    {
        const LogCapture log;
        systemLog(QStringLiteral("50 % of \"it\""));
        QCOMPARE(LogCapture::lines(), QStringList{QStringLiteral("50 % of \"it\"")});
    }

    void toolTextIsNeverAFormat()
    {
        const LogCapture log;
        systemLogFormat(QStringLiteral("%s 100%% %n %@"));
        QCOMPARE(LogCapture::lines(), QStringList{QStringLiteral("%s 100% %n %@")});
    }
};

FILMWRIGHT_TEST(TestFiles, QCoreApplication)
#include "tst_files.moc"
