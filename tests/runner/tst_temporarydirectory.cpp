// SPDX-License-Identifier: MIT
#include "runner/temporarydirectory.h"
#include "support/ordinaryuser.h"
#include "support/testprogram.h"

#include <QDir>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <limits>
#include <sys/stat.h>
#include <unistd.h>

using namespace filmwright;

class TestTemporaryDirectory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { setBaseTemporaryDirectory(QString()); }

    void closedTmpdirIsTheUserFolder();
    void openTmpdirGivesTheCacheFolder();
    void fastFolderIsInMemoryWhenItIsClosedAndHasRoom();
    void fastFolderIsElseTheUserFolder();
    void withoutBaseTheDirectoryIsInTheUserFolder();
    void withBaseTheDirectoryHasItsOwnName();
    void baseThatEndsWithASeparatorGivesNoDoubledSeparator();
    void missingBaseIsCreatedWithParentsForTheUserAlone();
    void directoryItselfIsNotCreated();
    void fileAsBaseIsRefusedAndThePreviousBaseStays();
    void readOnlyBaseIsRefusedAndThePreviousBaseStays();
    void baseThatCannotBeCreatedIsRefused();
    void clearingTheBaseReturnsToTheUserFolder();
    void preparedDirectoryIsThereForTheUserAlone();
    void preparedDirectoryIsClosedAgain();
    void linksAreRemovedFromAPreparedDirectory();
    void linkInPlaceOfTheDirectoryIsRefused();
    void directoryOfAnotherUserIsRefused();

private:
    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestTemporaryDirectory::init()
{
    qunsetenv("TMPDIR"); // the previous test's folder, where no new one may be made
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    qputenv("TMPDIR", m_folder->path().toUtf8());
}

void TestTemporaryDirectory::closedTmpdirIsTheUserFolder()
{
    QCOMPARE(userTemporaryFolder(), m_folder->path());
}

void TestTemporaryDirectory::openTmpdirGivesTheCacheFolder()
{
    QVERIFY(chmod(QFile::encodeName(m_folder->path()).constData(), 0755) == 0);
    qputenv("XDG_CACHE_HOME", "/somewhere/cache");
    QCOMPARE(userTemporaryFolder(), QStringLiteral("/somewhere/cache"));
}

void TestTemporaryDirectory::fastFolderIsInMemoryWhenItIsClosedAndHasRoom()
{
    const QTemporaryDir inMemory;
    qputenv("XDG_RUNTIME_DIR", inMemory.path().toUtf8());
    QCOMPARE(fastTemporaryFolder(1), inMemory.path());
    QCOMPARE(fastTemporaryFolder(std::numeric_limits<qint64>::max()), m_folder->path());
    QVERIFY(chmod(QFile::encodeName(inMemory.path()).constData(), 0755) == 0);
    QCOMPARE(fastTemporaryFolder(1), m_folder->path());
}

void TestTemporaryDirectory::fastFolderIsElseTheUserFolder()
{
    qunsetenv("XDG_RUNTIME_DIR");
    QCOMPARE(fastTemporaryFolder(1), m_folder->path());
    qputenv("XDG_RUNTIME_DIR", "/there/is/none");
    QCOMPARE(fastTemporaryFolder(1), m_folder->path());
}

void TestTemporaryDirectory::withoutBaseTheDirectoryIsInTheUserFolder()
{
    QVERIFY(baseTemporaryDirectory().isNull());
    QCOMPARE(temporaryDirectory(), m_folder->path() + QStringLiteral("/Filmwright"));
}

void TestTemporaryDirectory::withBaseTheDirectoryHasItsOwnName()
{
    const QString base = m_folder->filePath(QStringLiteral("work"));
    QVERIFY(setBaseTemporaryDirectory(base));
    QCOMPARE(baseTemporaryDirectory(), base);
    QCOMPARE(temporaryDirectory(), base + QStringLiteral("/FilmwrightTmp"));
}

void TestTemporaryDirectory::baseThatEndsWithASeparatorGivesNoDoubledSeparator()
{
    QVERIFY(setBaseTemporaryDirectory(m_folder->path() + QLatin1Char('/')));
    QCOMPARE(temporaryDirectory(), m_folder->path() + QStringLiteral("/FilmwrightTmp"));
}

void TestTemporaryDirectory::missingBaseIsCreatedWithParentsForTheUserAlone()
{
    const QString base = m_folder->filePath(QStringLiteral("a/b/c"));
    QVERIFY(setBaseTemporaryDirectory(base));
    struct stat status = {};
    for (const char *created : {"a", "a/b", "a/b/c"}) {
        const QString path = m_folder->filePath(QString::fromUtf8(created));
        QVERIFY(stat(QFile::encodeName(path).constData(), &status) == 0);
        QCOMPARE(status.st_mode & 0777U, 0700U);
    }
}

void TestTemporaryDirectory::directoryItselfIsNotCreated()
{
    QVERIFY(setBaseTemporaryDirectory(m_folder->path()));
    QVERIFY(!QDir(temporaryDirectory()).exists());
}

void TestTemporaryDirectory::fileAsBaseIsRefusedAndThePreviousBaseStays()
{
    QVERIFY(setBaseTemporaryDirectory(m_folder->path()));
    QFile file(m_folder->filePath(QStringLiteral("file")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(!setBaseTemporaryDirectory(file.fileName()));
    QCOMPARE(baseTemporaryDirectory(), m_folder->path());
}

void TestTemporaryDirectory::readOnlyBaseIsRefusedAndThePreviousBaseStays()
{
    QVERIFY(setBaseTemporaryDirectory(m_folder->path()));
    const OrdinaryUser user;
    QVERIFY(!setBaseTemporaryDirectory(QStringLiteral("/usr")));
    QCOMPARE(baseTemporaryDirectory(), m_folder->path());
}

void TestTemporaryDirectory::baseThatCannotBeCreatedIsRefused()
{
    QVERIFY(!setBaseTemporaryDirectory(QStringLiteral("/proc/no/such/place")));
    QVERIFY(baseTemporaryDirectory().isNull());
}

void TestTemporaryDirectory::clearingTheBaseReturnsToTheUserFolder()
{
    QVERIFY(setBaseTemporaryDirectory(m_folder->filePath(QStringLiteral("work"))));
    QVERIFY(setBaseTemporaryDirectory(QString()));
    QCOMPARE(temporaryDirectory(), m_folder->path() + QStringLiteral("/Filmwright"));
}

void TestTemporaryDirectory::preparedDirectoryIsThereForTheUserAlone()
{
    const QTemporaryDir base;
    QVERIFY(setBaseTemporaryDirectory(base.path()));
    QCOMPARE(prepareTemporaryDirectory(), QString());
    QCOMPARE(QFile::permissions(temporaryDirectory()) & 0x0077, QFile::Permissions());
    QVERIFY(QFileInfo(temporaryDirectory()).isWritable());
}

void TestTemporaryDirectory::preparedDirectoryIsClosedAgain()
{
    const QTemporaryDir base;
    QVERIFY(setBaseTemporaryDirectory(base.path()));
    QCOMPARE(prepareTemporaryDirectory(), QString());
    QVERIFY(QFile::setPermissions(temporaryDirectory(), QFile::Permissions(0x7777)));
    QCOMPARE(prepareTemporaryDirectory(), QString());
    QCOMPARE(QFile::permissions(temporaryDirectory()) & 0x0077, QFile::Permissions());
}

void TestTemporaryDirectory::linksAreRemovedFromAPreparedDirectory()
{
    const QTemporaryDir base;
    const QTemporaryDir precious;
    const QString frame = precious.filePath(QStringLiteral("tmp000000.dng"));
    QVERIFY(QFile(frame).open(QIODevice::WriteOnly));
    QVERIFY(setBaseTemporaryDirectory(base.path()));
    const QDir directory(temporaryDirectory());
    QVERIFY(directory.mkpath(QStringLiteral("b.MLV/hdr")));
    const QString kept = directory.filePath(QStringLiteral("b.MLV/tmp.wav"));
    QVERIFY(QFile(kept).open(QIODevice::WriteOnly));
    QVERIFY(QFile::link(precious.path(), directory.filePath(QStringLiteral("a.MLV"))));
    QVERIFY(QFile::link(frame, directory.filePath(QStringLiteral("b.MLV/hdr/tmp000000.tiff"))));
    QVERIFY(
        QFile::link(QStringLiteral("/nowhere"), directory.filePath(QStringLiteral("dark.mlv"))));
    QCOMPARE(prepareTemporaryDirectory(), QString());
    QCOMPARE(directory.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot),
             QStringList{QStringLiteral("b.MLV")});
    QVERIFY(QDir(directory.filePath(QStringLiteral("b.MLV/hdr"))).isEmpty());
    QVERIFY(QFile::exists(kept));
    QVERIFY(QFile::exists(frame));
}

void TestTemporaryDirectory::linkInPlaceOfTheDirectoryIsRefused()
{
    const QTemporaryDir base;
    const QTemporaryDir precious;
    QVERIFY(setBaseTemporaryDirectory(base.path()));
    QVERIFY(QFile::link(precious.path(), temporaryDirectory()));
    QCOMPARE(
        prepareTemporaryDirectory(),
        QStringLiteral("the temporary directory %1 is a link or a file").arg(temporaryDirectory()));
}

void TestTemporaryDirectory::directoryOfAnotherUserIsRefused()
{
    const QTemporaryDir base;
    QVERIFY(setBaseTemporaryDirectory(base.path()));
    QVERIFY(QDir().mkdir(temporaryDirectory()));
    if (chown(QFile::encodeName(temporaryDirectory()).constData(), OrdinaryUser::nobody,
              OrdinaryUser::nobody) != 0)
        QSKIP("no folder can be given to another user here");
    QCOMPARE(prepareTemporaryDirectory(),
             QStringLiteral("the temporary directory %1 belongs to another user")
                 .arg(temporaryDirectory()));
}

FILMWRIGHT_TEST(TestTemporaryDirectory, QCoreApplication)
#include "tst_temporarydirectory.moc"
