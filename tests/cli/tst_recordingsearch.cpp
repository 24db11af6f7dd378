// SPDX-License-Identifier: MIT
#include "cli/recordingsearch.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

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

QTEST_GUILESS_MAIN(TestRecordingSearch)
#include "tst_recordingsearch.moc"
