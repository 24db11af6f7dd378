// SPDX-License-Identifier: MIT
#include "runner/temporarydirectory.h"

#include <QDir>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

using namespace filmwright;

namespace {

/// Root may write anywhere; while one lives, the process acts as an ordinary user.
class OrdinaryUser
{
public:
    OrdinaryUser()
    {
        if (m_wasRoot)
            QVERIFY2(setresuid(nobody, nobody, 0) == 0, "can't act as an ordinary user");
    }
    ~OrdinaryUser()
    {
        if (m_wasRoot && setresuid(0, 0, 0) != 0)
            qFatal("can't act as root again");
    }
    OrdinaryUser(const OrdinaryUser &) = delete;
    OrdinaryUser &operator=(const OrdinaryUser &) = delete;

private:
    static constexpr uid_t nobody = 65534;
    const bool m_wasRoot = geteuid() == 0;
};

} // namespace

class TestTemporaryDirectory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { setBaseTemporaryDirectory(QString()); }

    void closedTmpdirIsTheUserFolder();
    void openTmpdirGivesTheCacheFolder();
    void withoutBaseTheDirectoryIsInTheUserFolder();
    void withBaseTheDirectoryHasItsOwnName();
    void baseThatEndsWithASeparatorGivesNoDoubledSeparator();
    void missingBaseIsCreatedWithParentsForTheUserAlone();
    void directoryItselfIsNotCreated();
    void fileAsBaseIsRefusedAndThePreviousBaseStays();
    void readOnlyBaseIsRefusedAndThePreviousBaseStays();
    void baseThatCannotBeCreatedIsRefused();
    void clearingTheBaseReturnsToTheUserFolder();

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

QTEST_GUILESS_MAIN(TestTemporaryDirectory)
#include "tst_temporarydirectory.moc"
