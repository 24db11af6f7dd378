// SPDX-License-Identifier: MIT
#include "project/framefolder.h"

#include "project/movieorigin.h"
#include "support/programrun.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace filmwright;

class TestFrameFolder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void framesGetTheMoviesName();
    void framesAreCountedFrom0();
    void olderFolderIsReplaced();
    void folderWithOtherFilesStays_data();
    void folderWithOtherFilesStays();
    void otherFilesThatCameMeanwhileStay();
    void leftoverIsTidied();
    void leftoverWithOtherFilesStays();
    void abortedFolderIsRemoved();
    void linkIsNotFollowed();
    void namesThatMakeNoFolder_data();
    void namesThatMakeNoFolder();
    void folderIsFinishedWhileItIsWhole();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    static void write(const QString &path, const QByteArray &content = "Filmwright mlv_dump 1")
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    /// What mlv_dump leaves in the unfinished folder.
    void extract(int frames, int first = 0) const
    {
        QCOMPARE(makeUnfinishedFolder(m_movie), QString());
        for (int number = first; number < first + frames; ++number)
            write(unfinishedFolder(m_movie) +
                  QStringLiteral("tmp%1.dng").arg(number, 6, 10, QLatin1Char('0')));
        write(unfinishedFolder(m_movie) + QStringLiteral("tmp.wav"));
    }
    QStringList entries(const QString &folder = {}) const
    {
        return QDir(path(folder)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_movie;
    const QStringList m_two{QStringLiteral("clip.wav"), QStringLiteral("clip_000000.dng"),
                            QStringLiteral("clip_000001.dng")};
};

void TestFrameFolder::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_movie = path(QStringLiteral("clip"));
}

void TestFrameFolder::framesGetTheMoviesName()
{
    extract(2);
    QCOMPARE(entries(), QStringList{QStringLiteral("clip.unfinished")});
    QCOMPARE(finishFrameFolder(m_movie), QString());
    QCOMPARE(entries(), QStringList{QStringLiteral("clip")});
    QCOMPARE(entries(QStringLiteral("clip")), m_two);
}

void TestFrameFolder::framesAreCountedFrom0()
{
    extract(2, 17);
    QCOMPARE(finishFrameFolder(m_movie), QString());
    QCOMPARE(entries(QStringLiteral("clip")), m_two);
}

void TestFrameFolder::olderFolderIsReplaced()
{
    extract(5);
    QCOMPARE(finishFrameFolder(m_movie), QString());
    extract(2);
    QCOMPARE(entries(QStringLiteral("clip")).size(), 6); // until the new one is whole
    QCOMPARE(finishFrameFolder(m_movie), QString());
    QCOMPARE(entries(), QStringList{QStringLiteral("clip")});
    QCOMPARE(entries(QStringLiteral("clip")), m_two);
}

void TestFrameFolder::folderWithOtherFilesStays_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    const QByteArray ours = "Filmwright mlv_dump 1";
    QTest::newRow("another name") << "notes.txt" << ours;
    QTest::newRow("a hidden one") << ".notes" << ours;
    QTest::newRow("beside a frame") << "clip_000000.dng.xmp" << ours;
    QTest::newRow("another program's frame") << "clip_000002.dng" << QByteArray("Other");
    QTest::newRow("another program's sound") << "clip.wav" << QByteArray("Other");
}

void TestFrameFolder::folderWithOtherFilesStays()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    extract(2);
    QCOMPARE(finishFrameFolder(m_movie), QString());
    write(m_movie + QLatin1Char('/') + name, content);
    const QStringList before = entries(QStringLiteral("clip"));
    QCOMPARE(makeUnfinishedFolder(m_movie),
             QStringLiteral("the folder %1 is there and isn't replaced, because \"%2\" in it was "
                            "not written by Filmwright")
                 .arg(m_movie, name));
    QCOMPARE(entries(), QStringList{QStringLiteral("clip")});
    QCOMPARE(entries(QStringLiteral("clip")), before);
}

void TestFrameFolder::otherFilesThatCameMeanwhileStay()
{
    extract(2);
    QVERIFY(QDir().mkdir(m_movie));
    write(path(QStringLiteral("clip/notes.txt")));
    QVERIFY(finishFrameFolder(m_movie).contains(QLatin1String("\"notes.txt\"")));
    QCOMPARE(entries(QStringLiteral("clip")), QStringList{QStringLiteral("notes.txt")});
}

void TestFrameFolder::leftoverIsTidied()
{
    extract(2);
    for (const char *name : {"tmp000002.dng.part", "tmp000001.dng.a8X2bQ", "clip_000000.dng",
                             "clip.wav", "tmp.wav.part"})
        write(unfinishedFolder(m_movie) + QLatin1String(name), {});
    QCOMPARE(makeUnfinishedFolder(m_movie), QString());
    QCOMPARE(entries(QStringLiteral("clip.unfinished")), QStringList());
}

void TestFrameFolder::leftoverWithOtherFilesStays()
{
    extract(2);
    write(unfinishedFolder(m_movie) + QStringLiteral("notes.txt"));
    QCOMPARE(makeUnfinishedFolder(m_movie),
             QStringLiteral("%1.unfinished is there and holds more than the frames of a run that "
                            "died")
                 .arg(m_movie));
    QCOMPARE(entries(QStringLiteral("clip.unfinished")), QStringList{QStringLiteral("notes.txt")});
}

void TestFrameFolder::abortedFolderIsRemoved()
{
    extract(2);
    removeUnfinishedFolder(m_movie);
    QCOMPARE(entries(), QStringList());
}

void TestFrameFolder::linkIsNotFollowed()
{
    QVERIFY(QDir().mkdir(path(QStringLiteral("elsewhere"))));
    write(path(QStringLiteral("elsewhere/tmp000000.dng")));
    QVERIFY(QFile::link(path(QStringLiteral("elsewhere")), m_movie));
    QCOMPARE(
        makeUnfinishedFolder(m_movie),
        QStringLiteral("its folder of frames can't be made: something else is at %1").arg(m_movie));
    QVERIFY(QFile::remove(m_movie));
    QVERIFY(
        QFile::link(path(QStringLiteral("elsewhere")), path(QStringLiteral("clip.unfinished"))));
    QVERIFY(!makeUnfinishedFolder(m_movie).isEmpty());
    QCOMPARE(entries(QStringLiteral("elsewhere")), QStringList{QStringLiteral("tmp000000.dng")});
}

void TestFrameFolder::namesThatMakeNoFolder_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("none") << "";
    QTest::newRow("the folder itself") << ".";
    QTest::newRow("the folder above") << "..";
    QTest::newRow("too long") << QString(245, QLatin1Char('n'));
}

void TestFrameFolder::namesThatMakeNoFolder()
{
    QFETCH(QString, name);
    QVERIFY(!makeUnfinishedFolder(m_folder->path() + QLatin1Char('/') + name).isEmpty());
    QCOMPARE(entries(), QStringList());
}

/// Frames of a real recording: their wholeness is read in their tags.
void TestFrameFolder::folderIsFinishedWhileItIsWhole()
{
    const QString recording = path(QStringLiteral("clip.MLV"));
    QCOMPARE(QProcess::execute(QStringLiteral(MLV_SAMPLE),
                               {QStringLiteral("--size"), QStringLiteral("64x48"),
                                QStringLiteral("--frames"), QStringLiteral("3"), recording}),
             0);
    QCOMPARE(makeUnfinishedFolder(m_movie), QString());
    const Ended written =
        runProgram(QStringLiteral(MLV_DUMP),
                   {QStringLiteral("--dng"), recording, QStringLiteral("--cinema-dng"),
                    QStringLiteral("-o"), unfinishedFolder(m_movie) + QStringLiteral("tmp")});
    QCOMPARE(written.status, 0);
    QCOMPARE(finishFrameFolder(m_movie), QString());
    QCOMPARE(framesOfFolder(m_movie), std::optional<quint64>(3));
    QVERIFY(isFinishedMovie(m_movie, "one", 3));
    QVERIFY(!isFinishedMovie(m_movie, "one", 4));
    noteOrigin(m_movie, "one");
    QVERIFY(isFinishedMovie(m_movie, "one", 3));

    // A person's notes are no reason to make it anew.
    write(path(QStringLiteral("clip/notes.txt")));
    QVERIFY(isFinishedMovie(m_movie, "one", 3));

    const QString last = path(QStringLiteral("clip/clip_000002.dng"));
    const QString sound = path(QStringLiteral("clip/clip.wav"));
    for (const QString &file : {last, sound}) {
        QFile whole(file);
        QVERIFY(whole.open(QIODevice::ReadOnly));
        const QByteArray content = whole.readAll();
        whole.close();
        write(file, content.chopped(1));
        QVERIFY(!framesOfFolder(m_movie));
        write(file, content);
        QCOMPARE(framesOfFolder(m_movie), std::optional<quint64>(3));
    }
    QVERIFY(QFile::rename(last, path(QStringLiteral("clip/clip_000003.dng"))));
    QVERIFY(!framesOfFolder(m_movie)); // a gap
    QVERIFY(QFile::remove(path(QStringLiteral("clip/clip_000003.dng"))));
    QCOMPARE(framesOfFolder(m_movie), std::optional<quint64>(2));
    QVERIFY(!isFinishedMovie(m_movie, "one", 3));
}

FILMWRIGHT_TEST(TestFrameFolder, QCoreApplication)
#include "tst_framefolder.moc"
