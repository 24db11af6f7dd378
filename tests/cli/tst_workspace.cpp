// SPDX-License-Identifier: MIT
#include "cli/workspace.h"
#include "runner/temporarydirectory.h"

#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace filmwright;

class TestWorkspace : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void privateDirectoryIsGoneAtTheEnd();
    void twoPrivateDirectoriesGoSideBySide();
    void keptPrivateDirectoryStays();
    void leftoversOfAKilledRunAreRemoved();
    void unfinishedWorkInAChosenFolderStays();
    void emptyWorkInAChosenFolderIsRemovedWithItsAverages();
    void oneRunAtATimeInAChosenFolder();
    void chosenFolderThatIsAFileIsRefused();
    void linkInTheChosenFolderIsRefusedAndLeftAlone();
    void averagesOfAKilledRunAreRemoved();

private:
    QStringList entries() const
    {
        return QDir(m_folder->path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    static void create(const QString &path)
    {
        QVERIFY(QDir().mkpath(QFileInfo(path).path()));
        QVERIFY(QFile(path).open(QIODevice::WriteOnly));
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestWorkspace::init()
{
    qunsetenv("TMPDIR"); // the previous test's folder, where no new one may be made
    m_folder = std::make_unique<QTemporaryDir>();
    qputenv("TMPDIR", m_folder->path().toUtf8());
}

void TestWorkspace::privateDirectoryIsGoneAtTheEnd()
{
    {
        Workspace workspace;
        QCOMPARE(workspace.open(QString(), false), QString());
        QVERIFY(!workspace.keepsUnfinishedWork());
        QVERIFY(
            temporaryDirectory().startsWith(m_folder->path() + QStringLiteral("/filmwright-cli-")));
        QVERIFY(temporaryDirectory().endsWith(QStringLiteral("/FilmwrightTmp")));
        create(temporaryDirectory() + QStringLiteral("/clip.MLV/tmp000000.dng"));
    }
    QCOMPARE(entries(), QStringList());
    QVERIFY(baseTemporaryDirectory().isNull());
}

void TestWorkspace::twoPrivateDirectoriesGoSideBySide()
{
    Workspace first;
    QCOMPARE(first.open(QString(), false), QString());
    const QString frame = temporaryDirectory() + QStringLiteral("/clip.MLV/tmp000000.dng");
    create(frame);
    Workspace second;
    QCOMPARE(second.open(QString(), false), QString());
    QVERIFY(!frame.startsWith(temporaryDirectory()));
    QVERIFY(QFile::exists(frame));
}

void TestWorkspace::keptPrivateDirectoryStays()
{
    QString frame;
    {
        Workspace workspace;
        QCOMPARE(workspace.open(QString(), true), QString());
        QVERIFY(workspace.keepsUnfinishedWork());
        frame = temporaryDirectory() + QStringLiteral("/clip.MLV/tmp000000.dng");
        create(frame);
    }
    QVERIFY(QFile::exists(frame));
}

void TestWorkspace::leftoversOfAKilledRunAreRemoved()
{
    create(m_folder->filePath(
        QStringLiteral("filmwright-cli-dead/FilmwrightTmp/clip.MLV/tmp000000.dng")));
    create(m_folder->filePath(
        QStringLiteral("filmwright-cli-kept/FilmwrightTmp/clip.MLV/tmp000000.dng")));
    // A lock that no living process holds: the run was killed. One without a lock was kept on
    // purpose.
    QFile lock(m_folder->filePath(QStringLiteral("filmwright-cli-dead.lock")));
    QVERIFY(lock.open(QIODevice::WriteOnly));
    lock.write("4194305\nfilmwright-cli\n" + QSysInfo::machineHostName().toUtf8() + "\n\n\n");
    lock.close();
    {
        Workspace workspace;
        QCOMPARE(workspace.open(QString(), false), QString());
    }
    QCOMPARE(entries(), QStringList{QStringLiteral("filmwright-cli-kept")});
}

void TestWorkspace::unfinishedWorkInAChosenFolderStays()
{
    const QString base = m_folder->filePath(QStringLiteral("base"));
    {
        Workspace workspace;
        QCOMPARE(workspace.open(base, false), QString());
        QVERIFY(workspace.keepsUnfinishedWork());
        QCOMPARE(temporaryDirectory(), base + QStringLiteral("/FilmwrightTmp"));
        create(temporaryDirectory() + QStringLiteral("/clip.MLV/tmp000000.dng"));
        create(temporaryDirectory() + QStringLiteral("/dark.mlv"));
    }
    QCOMPARE(QDir(base).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList{QStringLiteral("FilmwrightTmp")});
    QVERIFY(QFile::exists(base + QStringLiteral("/FilmwrightTmp/clip.MLV/tmp000000.dng")));
    QVERIFY(!QFile::exists(base + QStringLiteral("/FilmwrightTmp/dark.mlv")));
}

void TestWorkspace::emptyWorkInAChosenFolderIsRemovedWithItsAverages()
{
    const QString base = m_folder->filePath(QStringLiteral("base"));
    {
        Workspace workspace;
        QCOMPARE(workspace.open(base, false), QString());
        for (const char *average : {"dark.mlv", "flat.mlv", "flat_dark.mlv", "flat-flat_dark.mlv"})
            create(temporaryDirectory() + QLatin1Char('/') + QString::fromUtf8(average));
    }
    QCOMPARE(QDir(base).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
}

void TestWorkspace::oneRunAtATimeInAChosenFolder()
{
    Workspace first;
    QCOMPARE(first.open(m_folder->path(), false), QString());
    Workspace second;
    QCOMPARE(second.open(m_folder->path(), false),
             QStringLiteral("another run of Filmwright works in ") + m_folder->path() +
                 QStringLiteral("/FilmwrightTmp"));
}

void TestWorkspace::chosenFolderThatIsAFileIsRefused()
{
    const QString file = m_folder->filePath(QStringLiteral("file"));
    create(file);
    Workspace workspace;
    QCOMPARE(workspace.open(file, false),
             QStringLiteral("the temporary folder %1 can't be written").arg(file));
}

void TestWorkspace::linkInTheChosenFolderIsRefusedAndLeftAlone()
{
    const QString average = m_folder->filePath(QStringLiteral("precious/dark.mlv"));
    create(average);
    const QString base = m_folder->filePath(QStringLiteral("base"));
    QVERIFY(QDir().mkdir(base));
    const QString link = base + QStringLiteral("/FilmwrightTmp");
    QVERIFY(QFile::link(QFileInfo(average).path(), link));
    {
        Workspace workspace;
        QCOMPARE(workspace.open(base, false),
                 QStringLiteral("the temporary directory %1 is a link or a file").arg(link));
    }
    QVERIFY(QFile::exists(average));
    QVERIFY(QFileInfo(link).isSymLink());
}

void TestWorkspace::averagesOfAKilledRunAreRemoved()
{
    const QString average = m_folder->filePath(QStringLiteral("FilmwrightTmp/dark.mlv"));
    create(average);
    Workspace workspace;
    QCOMPARE(workspace.open(m_folder->path(), false), QString());
    QVERIFY(!QFile::exists(average));
}

FILMWRIGHT_TEST(TestWorkspace, QCoreApplication)
#include "tst_workspace.moc"
