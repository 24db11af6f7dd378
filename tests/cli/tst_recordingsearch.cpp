// SPDX-License-Identifier: MIT
#include "cli/recordingsearch.h"
#include "project/recordingfiles.h"
#include "support/ordinaryuser.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace filmwright;

class TestRecordingSearch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void extensionCountsInAnyCase_data();
    void extensionCountsInAnyCase();
    void foldersAreSearchedAtAnyDepthInAscendingOrder();
    void pathGivenTwiceIsTakenOnce();
    void orderOfTheArgumentsIsKept();
    void fileIsTakenWhateverItsName();
    void linkBackToAFolderEndsTheSearchThere();
    void partsOfASplitRecordingAreNotTakenAlone();
    void linksThatLeadInCirclesEndTheSearch();
    void skippedFolderIsNotSearched();
    void hundredThousandFiles();
    void nameThatIsNoTextIsTold();
    void folderThatCannotBeReadIsTold();

private:
    QString create(const char *name) const
    {
        const QString path = m_folder->filePath(QString::fromUtf8(name));
        QDir().mkpath(QFileInfo(path).path());
        [[maybe_unused]] const bool created = QFile(path).open(QIODevice::WriteOnly);
        return path;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestRecordingSearch::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

void TestRecordingSearch::extensionCountsInAnyCase_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isRecording");
    QTest::newRow("upper case") << "a.MLV" << true;
    QTest::newRow("lower case") << "a.mlv" << true;
    QTest::newRow("mixed") << "a.b.Mlv" << true;
    QTest::newRow("part") << "a.M00" << false;
    QTest::newRow("none") << "mlv" << false;
    QTest::newRow("other") << "a.mlv.txt" << false;
}

void TestRecordingSearch::extensionCountsInAnyCase()
{
    QFETCH(QString, name);
    QTEST(isRecordingName(name), "isRecording");
}

void TestRecordingSearch::foldersAreSearchedAtAnyDepthInAscendingOrder()
{
    const QStringList expected{create("a/deep/er/2.mlv"), create("a/z.MLV"), create("b.MLV")};
    create("a/notes.txt");
    QCOMPARE(findRecordings({m_folder->path()}), expected);
}

void TestRecordingSearch::pathGivenTwiceIsTakenOnce()
{
    const QString clip = create("clip.MLV");
    QCOMPARE(
        findRecordings({clip, m_folder->path(), m_folder->path() + QStringLiteral("/./clip.MLV")}),
        QStringList{clip});
}

void TestRecordingSearch::orderOfTheArgumentsIsKept()
{
    const QString second = create("2.MLV");
    const QString first = create("1.MLV");
    QCOMPARE(findRecordings({second, first}), (QStringList{second, first}));
}

void TestRecordingSearch::fileIsTakenWhateverItsName()
{
    const QString notes = create("notes.txt");
    QCOMPARE(findRecordings({notes}), QStringList{notes});
}

void TestRecordingSearch::linkBackToAFolderEndsTheSearchThere()
{
    const QString clip = create("a/clip.MLV");
    QVERIFY(QFile::link(m_folder->path(), m_folder->filePath(QStringLiteral("a/again"))));
    QVERIFY(QFile::link(m_folder->filePath(QStringLiteral("nowhere")),
                        m_folder->filePath(QStringLiteral("broken"))));
    QCOMPARE(findRecordings({m_folder->path()}), QStringList{clip});
}

void TestRecordingSearch::partsOfASplitRecordingAreNotTakenAlone()
{
    const QString clip = create("clip.MLV");
    create("clip.M00");
    QCOMPARE(findRecordings({m_folder->path()}), QStringList{clip});
}

void TestRecordingSearch::linksThatLeadInCirclesEndTheSearch()
{
    const QString clip = create("a/clip.MLV");
    create("b/notes.txt");
    QVERIFY(QFile::link(m_folder->filePath(QStringLiteral("b")),
                        m_folder->filePath(QStringLiteral("a/b"))));
    QVERIFY(QFile::link(m_folder->filePath(QStringLiteral("a")),
                        m_folder->filePath(QStringLiteral("b/a"))));
    QVERIFY(QFile::link(m_folder->filePath(QStringLiteral("self")),
                        m_folder->filePath(QStringLiteral("self"))));
    QCOMPARE(findRecordings({m_folder->path()}), QStringList{clip});
}

void TestRecordingSearch::skippedFolderIsNotSearched()
{
    const QString clip = create("clip.MLV");
    const QString average = create("FilmwrightTmp/dark.mlv");
    const QString skipped = m_folder->filePath(QStringLiteral("FilmwrightTmp"));
    QCOMPARE(findRecordings({m_folder->path()}, nullptr, skipped), QStringList{clip});
    QCOMPARE(findRecordings({m_folder->path()}), (QStringList{average, clip}));
}

void TestRecordingSearch::hundredThousandFiles()
{
    const QByteArray folder = QFile::encodeName(m_folder->path());
    const int descriptor = ::open(folder.constData(), O_RDONLY | O_DIRECTORY);
    for (int number = 0; number < 100000; ++number)
        mknodat(descriptor, QByteArray::number(number).constData(), S_IFREG | S_IRUSR, 0);
    close(descriptor);
    const QString clip = create("clip.MLV");
    QCOMPARE(findRecordings({m_folder->path()}), QStringList{clip});
}

void TestRecordingSearch::nameThatIsNoTextIsTold()
{
    const QString clip = create("z.MLV");
    const QByteArray folder = QFile::encodeName(m_folder->path());
    for (const char *name : {"/na\xefve.MLV", "/na\xefve.txt", "/caf\xe9"}) {
        const mode_t kind = QByteArray(name).endsWith('\xe9') ? S_IFDIR : S_IFREG;
        const QByteArray path = folder + name;
        QCOMPARE(kind == S_IFDIR ? mkdir(path.constData(), S_IRWXU)
                                 : mknod(path.constData(), S_IFREG | S_IRUSR, 0),
                 0);
    }
    QCOMPARE(mknod((folder + "/caf\xe9/a.mlv").constData(), S_IFREG | S_IRUSR, 0), 0);
    QList<Unreachable> unreachable;
    QCOMPARE(findRecordings({m_folder->path()}, &unreachable), QStringList{clip});
    QCOMPARE(unreachable.size(), 2);
    QCOMPARE(unreachable.at(0).path, m_folder->filePath(QStringLiteral("caf\uFFFD/a.mlv")));
    QCOMPARE(unreachable.at(1).path, m_folder->filePath(QStringLiteral("na\uFFFDve.MLV")));
    QCOMPARE(unreachable.at(1).error, QStringLiteral("its name is no UTF-8 text; rename it"));
    // Qt can't remove what it can't name.
    for (const char *name : {"/na\xefve.MLV", "/na\xefve.txt", "/caf\xe9/a.mlv", "/caf\xe9"})
        QCOMPARE(remove((folder + name).constData()), 0);
}

void TestRecordingSearch::folderThatCannotBeReadIsTold()
{
    const QString clip = create("clip.MLV");
    const QString closed = m_folder->filePath(QStringLiteral("closed"));
    QVERIFY(QDir().mkdir(closed));
    QVERIFY(QFile::setPermissions(closed, QFile::Permissions()));
    QVERIFY(QFile::setPermissions(m_folder->path(), QFile::permissions(m_folder->path()) |
                                                        QFile::ReadOther | QFile::ExeOther |
                                                        QFile::ReadGroup | QFile::ExeGroup));
    QList<Unreachable> unreachable;
    {
        const OrdinaryUser user;
        QCOMPARE(findRecordings({m_folder->path()}, &unreachable), QStringList{clip});
    }
    QCOMPARE(unreachable.size(), 1);
    QCOMPARE(unreachable.first().path, closed);
    QCOMPARE(unreachable.first().error,
             QStringLiteral("the folder can't be read: Permission denied"));
}

FILMWRIGHT_TEST(TestRecordingSearch, QCoreApplication)
#include "tst_recordingsearch.moc"
