// SPDX-License-Identifier: MIT
#include "project/moviemark.h"
#include "support/ordinaryuser.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace filmwright;

class TestMovieMark : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void markIsHiddenBesideTheMovie();
    void markOfAnEndlessNameIsShortEnough();
    void movieOfALivingRunIsNotTouched();
    void movieOfADeadRunIsRemoved();
    void wholeMovieStays();
    void removedMarkLeavesNothing();
    void settledMovieStaysWithoutItsMark();
    void movieThatVanishedCannotBeSettled();
    void settledMovieInAFolderThatWasClosedMeanwhile();
    void markOfAMovieWrittenAnewSaysWholeNoMore();
    void secondMarkIsRefused();
    void markOfADeadRunIsTakenOver();
    void plantedLinkIsNotFollowed();
    void plantedPipeIsNotWaitedFor();
    void folderOfTheMoviesName();
    void folderWithoutWriteAccess();

private:
    void write(const QString &path, const QByteArray &content) const
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    QStringList entries() const
    {
        return QDir(m_folder->path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_movie;
    QString m_mark;
    const QString m_busy = QStringLiteral("its movie is being written by another run");
};

void TestMovieMark::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_movie = m_folder->filePath(QStringLiteral("clip.mov"));
    m_mark = MovieMark::pathFor(m_movie);
}

void TestMovieMark::markIsHiddenBesideTheMovie()
{
    QCOMPARE(m_mark, m_folder->filePath(QStringLiteral(".clip.mov.unfinished")));
    MovieMark mark(m_movie);
    QCOMPARE(mark.set(), QString());
    QCOMPARE(entries(), QStringList{QStringLiteral(".clip.mov.unfinished")});
}

void TestMovieMark::markOfAnEndlessNameIsShortEnough()
{
    const QString base(250, QLatin1Char('a'));
    const QString first = m_folder->filePath(base + QStringLiteral("1.mov"));
    const QString second = m_folder->filePath(base + QStringLiteral("2.mov"));
    QVERIFY(MovieMark::pathFor(first) != MovieMark::pathFor(second));
    MovieMark mark(first);
    QCOMPARE(mark.set(), QString());
    QCOMPARE(MovieMark::clear(first), m_busy);
    QCOMPARE(MovieMark::clear(second), QString());
}

void TestMovieMark::movieOfALivingRunIsNotTouched()
{
    MovieMark mark(m_movie);
    QCOMPARE(mark.set(), QString());
    write(m_movie, "half a movie");
    QCOMPARE(MovieMark::clear(m_movie), m_busy);
    QVERIFY(QFile::exists(m_movie));
    QVERIFY(QFile::exists(m_mark));
}

void TestMovieMark::movieOfADeadRunIsRemoved()
{
    {
        MovieMark mark(m_movie);
        QCOMPARE(mark.set(), QString());
        write(m_movie, "half a movie");
    }
    QCOMPARE(entries().size(), 2);
    QCOMPARE(MovieMark::clear(m_movie), QString());
    QCOMPARE(entries(), QStringList());
}

void TestMovieMark::wholeMovieStays()
{
    write(m_movie, "a movie");
    QCOMPARE(MovieMark::clear(m_movie), QString());
    QCOMPARE(entries(), QStringList{QStringLiteral("clip.mov")});
}

void TestMovieMark::removedMarkLeavesNothing()
{
    MovieMark mark(m_movie);
    QCOMPARE(mark.set(), QString());
    mark.remove();
    QCOMPARE(entries(), QStringList());
    mark.remove();
    MovieMark next(m_movie);
    QCOMPARE(next.set(), QString());
}

void TestMovieMark::settledMovieStaysWithoutItsMark()
{
    MovieMark mark(m_movie);
    QCOMPARE(mark.set(), QString());
    write(m_movie, "a movie");
    QCOMPARE(mark.settle(), QString());
    QCOMPARE(entries(), QStringList{QStringLiteral("clip.mov")});
}

void TestMovieMark::movieThatVanishedCannotBeSettled()
{
    MovieMark mark(m_movie);
    QCOMPARE(mark.set(), QString());
    QCOMPARE(mark.settle(), QStringLiteral("its movie could not be brought to the disk: "
                                           "No such file or directory"));
    QVERIFY(QFile::exists(m_mark));
}

void TestMovieMark::settledMovieInAFolderThatWasClosedMeanwhile()
{
    const QString folder = m_folder->filePath(QStringLiteral("closed"));
    QVERIFY(QDir().mkdir(folder));
    const QString movie = folder + QStringLiteral("/clip.mov");
    const auto open = QFile::permissions(folder);
    const auto others = QFile::ReadGroup | QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther;
    QVERIFY(QFile::setPermissions(m_folder->path(), QFile::permissions(m_folder->path()) | others));
    {
        MovieMark mark(movie);
        QCOMPARE(mark.set(), QString());
        write(movie, "a movie");
        QVERIFY(QFile::setPermissions(movie, QFile::permissions(movie) | QFile::ReadOther));
        QVERIFY(QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner | others));
        const OrdinaryUser user;
        QCOMPARE(mark.settle(), QString());
    }
    QVERIFY(QFile::exists(MovieMark::pathFor(movie)));
    QVERIFY(QFile::setPermissions(folder, open));
    QCOMPARE(MovieMark::clear(movie), QString());
    QVERIFY(QFile::exists(movie));
    QVERIFY(!QFile::exists(MovieMark::pathFor(movie)));
}

/// A run that finished in a closed folder left its mark between another run's two looks at it.
void TestMovieMark::markOfAMovieWrittenAnewSaysWholeNoMore()
{
    write(m_mark, QByteArray("whole", sizeof "whole"));
    {
        MovieMark mark(m_movie);
        QCOMPARE(mark.set(), QString());
        write(m_movie, "half a movie");
    }
    QCOMPARE(MovieMark::clear(m_movie), QString());
    QCOMPARE(entries(), QStringList());
}

void TestMovieMark::secondMarkIsRefused()
{
    MovieMark first(m_movie);
    QCOMPARE(first.set(), QString());
    {
        MovieMark second(m_movie);
        QCOMPARE(second.set(), m_busy);
        second.remove();
    }
    QVERIFY(QFile::exists(m_mark));
    QCOMPARE(MovieMark::clear(m_movie), m_busy);
}

void TestMovieMark::markOfADeadRunIsTakenOver()
{
    write(m_mark, {});
    MovieMark mark(m_movie);
    QCOMPARE(mark.set(), QString());
    QCOMPARE(MovieMark::clear(m_movie), m_busy);
}

void TestMovieMark::plantedLinkIsNotFollowed()
{
    const QString target = m_folder->filePath(QStringLiteral("target"));
    write(target, "precious");
    QVERIFY(QFile::link(target, m_mark));
    MovieMark mark(m_movie);
    QCOMPARE(mark.set(), QStringLiteral("its movie can't be written: "
                                        "Too many levels of symbolic links"));
    QCOMPARE(MovieMark::clear(m_movie),
             QStringLiteral("the mark of its unfinished movie can't be read: "
                            "Too many levels of symbolic links"));
    QVERIFY(QFile::exists(target));
}

void TestMovieMark::plantedPipeIsNotWaitedFor()
{
    QCOMPARE(mkfifo(QFile::encodeName(m_mark).constData(), S_IRUSR | S_IWUSR), 0);
    write(m_movie, "a movie");
    const QString reason =
        QStringLiteral("something else has the name of the mark of its unfinished movie");
    QCOMPARE(MovieMark::clear(m_movie), reason);
    MovieMark mark(m_movie);
    QCOMPARE(mark.set(), reason);
    QVERIFY(QFile::exists(m_movie));
}

/// ffmpeg 5.1 fails at that, 7.1 ends well without having written anything.
void TestMovieMark::folderOfTheMoviesName()
{
    QVERIFY(QDir().mkdir(m_movie));
    QCOMPARE(MovieMark::clear(m_movie), QStringLiteral("a folder has the name of its movie"));
    QVERIFY(QDir(m_movie).exists());
}

void TestMovieMark::folderWithoutWriteAccess()
{
    const QString folder = QStringLiteral("%1/closed").arg(m_folder->path());
    QVERIFY(QDir().mkdir(folder));
    const auto others = QFile::ReadGroup | QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther;
    QVERIFY(QFile::setPermissions(m_folder->path(), QFile::permissions(m_folder->path()) | others));
    QVERIFY(QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner | others));
    const QString movie = folder + QStringLiteral("/clip.mov");
    const OrdinaryUser user;
    QCOMPARE(MovieMark::clear(movie),
             QStringLiteral("the folder of its movie can't be written: Permission denied"));
    MovieMark mark(movie);
    QCOMPARE(mark.set(), QStringLiteral("its movie can't be written: Permission denied"));
}

FILMWRIGHT_TEST(TestMovieMark, QCoreApplication)
#include "tst_moviemark.moc"
