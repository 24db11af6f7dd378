// SPDX-License-Identifier: MIT
#include "mlvdump/mlvdumpreport.h"
#include "project/batchmovies.h"
#include "project/movieorigin.h"
#include "support/fakemovie.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace filmwright;

class TestMovieDestination : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void paths_data();
    void paths();
    void textsOfARecordingAreNoPaths();
    void patternsThatAreRefused_data();
    void patternsThatAreRefused();
    void freePath();
    void moviesOfOneNameInOneFolder();
    void everyChoiceChangesTheOrigin();
    void finishedMovie();

private:
    QString write(const QString &name, const QByteArray &content) const
    {
        QFile file(m_folder.filePath(name));
        if (file.open(QIODevice::WriteOnly))
            file.write(content);
        return file.fileName();
    }
    static MlvMetadata metadata()
    {
        MlvMetadata metadata;
        metadata.date = QStringLiteral("01.05.2026");
        metadata.time = QStringLiteral("14:30:02 (GMT+0)");
        metadata.camera = QStringLiteral("Canon EOS 5D");
        return metadata;
    }

    QTemporaryDir m_folder;
};

void TestMovieDestination::paths_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("suffix"); // of a recipe; null: none
    QTest::addColumn<QString>("path");
    QTest::newRow("beside") << ""
                            << "" << QString() << "/card/M01.a.mov";
    QTest::newRow("in a folder") << "/out"
                                 << "" << QString() << "/out/M01.a.mov";
    QTest::newRow("named") << ""
                           << "x {name} y" << QString() << "/card/x M01.a y.mov";
    QTest::newRow("everything") << "/out"
                                << "{date}_{time}_{camera}_{recipe}" << QString()
                                << "/out/2026-05-01_14-30-02_Canon EOS 5D_mov.mov";
    QTest::newRow("recipe") << "/out"
                            << "{name}.{recipe}"
                            << ""
                            << "/out/M01.a.mine.mp4";
    QTest::newRow("suffix") << "/out"
                            << "{name}"
                            << ".draft"
                            << "/out/M01.a.draft.mp4";
    QTest::newRow("point in the name") << ""
                                       << "a.b" << QString() << "/card/a.b.mov";
    QTest::newRow("twice") << ""
                           << "{name}{name}" << QString() << "/card/M01.aM01.a.mov";
}

void TestMovieDestination::paths()
{
    QFETCH(QString, folder);
    QFETCH(QString, pattern);
    QFETCH(QString, suffix);
    ConversionSettings settings;
    settings.destination.folder = folder;
    settings.destination.pattern = pattern;
    if (!suffix.isNull()) {
        settings.recipe.emplace();
        settings.recipe->id = QStringLiteral("mine");
        settings.recipe->extension = QStringLiteral("mp4");
        settings.recipe->suffix = suffix;
    }
    QTEST(moviePathFor(QStringLiteral("/card/M01.a.MLV"), settings, metadata()), "path");
}

void TestMovieDestination::textsOfARecordingAreNoPaths()
{
    ConversionSettings settings;
    settings.destination.folder = QStringLiteral("/out");
    settings.destination.pattern = QStringLiteral("a{camera}{date}");
    MlvMetadata hostile;
    hostile.camera = QStringLiteral("../../{name}\n%x");
    QCOMPARE(moviePathFor(QStringLiteral("/card/c.MLV"), settings, hostile),
             QStringLiteral("/out/a.._.._{name}__xunknown.mov")
                 .replace(QLatin1Char('{'), QLatin1Char('_'))
                 .replace(QLatin1Char('}'), QLatin1Char('_')));
}

void TestMovieDestination::patternsThatAreRefused_data()
{
    QTest::addColumn<QString>("problem");
    const QString name = QStringLiteral("a movie's name can't be empty or begin with a point");
    QTest::newRow("") << name;
    QTest::newRow(".hidden") << name;
    QTest::newRow("a/{name}") << QStringLiteral("\"a/{name}\" is no name of a file; --output names "
                                                "the folder");
    QTest::newRow("{lens}") << QStringLiteral("there is no {lens}; there are {name}, {date}, "
                                              "{time}, {camera}, {recipe}");
    QTest::newRow("{name") << QStringLiteral("a { or } is not closed");
    QTest::newRow("{name}}") << QStringLiteral("a { or } is not closed");
    QTest::newRow("{name} {date}") << QString();
}

void TestMovieDestination::patternsThatAreRefused()
{
    QTEST(patternError(QString::fromUtf8(QTest::currentDataTag())), "problem");
}

void TestMovieDestination::freePath()
{
    const QString path = m_folder.filePath(QStringLiteral("free.x.mov"));
    QCOMPARE(freeMoviePath(path), path);
    write(QStringLiteral("free.x.mov"), "a");
    QCOMPARE(freeMoviePath(path), m_folder.filePath(QStringLiteral("free.x-2.mov")));
    write(QStringLiteral("free.x-2.mov"), "a");
    QCOMPARE(freeMoviePath(path), m_folder.filePath(QStringLiteral("free.x-3.mov")));

    // A folder's name has no extension.
    const QString folder = m_folder.filePath(QStringLiteral("free.x"));
    QCOMPARE(freeMoviePath(folder, MovieKind::Folder), folder);
    QVERIFY(QDir().mkdir(folder));
    QCOMPARE(freeMoviePath(folder, MovieKind::Folder),
             m_folder.filePath(QStringLiteral("free.x-2")));
}

void TestMovieDestination::moviesOfOneNameInOneFolder()
{
    ConversionSettings settings;
    settings.destination.folder = m_folder.path();
    BatchMovies movies;
    QCOMPARE(movies.claim(QStringLiteral("/one/c.MLV"), settings), QString());
    QCOMPARE(movies.claim(QStringLiteral("/two/c.MLV"), settings),
             QStringLiteral("its movie would replace that of another recording, ") +
                 m_folder.filePath(QStringLiteral("c.mov")));
    // Known only after the reading, and then claimed.
    settings.destination.pattern = QStringLiteral("{time}");
    QCOMPARE(movies.claim(QStringLiteral("/one/d.MLV"), settings), QString());
    QCOMPARE(movies.claim(QStringLiteral("/two/d.MLV"), settings), QString());
    const QString movie = m_folder.filePath(QStringLiteral("14-30-02.mov"));
    QCOMPARE(movies.claimMovie(movie), QString());
    QVERIFY(!movies.claimMovie(movie).isEmpty());
}

void TestMovieDestination::everyChoiceChangesTheOrigin()
{
    const QString recording = write(QStringLiteral("clip.MLV"), "recording");
    const ConversionSettings plain;
    QList<QByteArray> origins{movieOrigin(recording, plain)};
    QCOMPARE(movieOrigin(recording, plain), origins.constFirst());
    const auto note = [&](auto change) {
        ConversionSettings settings;
        change(settings);
        const QByteArray origin = movieOrigin(recording, settings);
        QVERIFY(!origins.contains(origin));
        origins << origin;
    };
    note([](ConversionSettings &settings) { settings.format = MovieFormatAVI; });
    note([](ConversionSettings &settings) { settings.quality = MovieQualityMaximum; });
    note([](ConversionSettings &settings) { settings.mergesNeighbours = true; });
    note([](ConversionSettings &settings) { settings.blendsAlternatingRows = true; });
    note([&](ConversionSettings &settings) { settings.calibration.dark = recording; });
    note([](ConversionSettings &settings) { settings.recipe.emplace(); });
    note([](ConversionSettings &settings) {
        settings.recipe.emplace().video = QStringList{QStringLiteral("x")};
    });
    note([](ConversionSettings &settings) {
        settings.recipe.emplace().sound = QStringList{QStringLiteral("x")};
    });
    note([](ConversionSettings &settings) { settings.corrections.exposure = 1; });
    note([](ConversionSettings &settings) {
        settings.corrections.whiteBalance = QStringLiteral("5600");
    });
    note([](ConversionSettings &settings) { settings.frames = {2, 5}; });
    note([this](ConversionSettings &settings) {
        settings.lut = write(QStringLiteral("look.cube"), "LUT_3D_SIZE 2");
    });
    note([](ConversionSettings &settings) {
        settings.recipe.emplace().develop = QStringList{QStringLiteral("-6")};
    });
    ConversionSettings faster;
    faster.workers = 3;
    QCOMPARE(movieOrigin(recording, faster), origins.constFirst());
    write(QStringLiteral("clip.MLV"), "longer recording");
    QVERIFY(!origins.contains(movieOrigin(recording, plain)));
}

void TestMovieDestination::finishedMovie()
{
    const QByteArray origin = "one";
    QVERIFY(!isFinishedMovie(m_folder.filePath(QStringLiteral("none.mov")), origin, 1));
    const QString movie = write(QStringLiteral("clip.mov"), fakeMovie(10));
    // Nothing is noted: the frames tell.
    QVERIFY(isFinishedMovie(movie, origin, 10));
    QVERIFY(!isFinishedMovie(movie, origin, 11));
    QVERIFY(!isFinishedMovie(movie, origin, std::nullopt)); // but not of what it is made
    const QString cut = write(QStringLiteral("cut.mov"), fakeMovie(10).chopped(5));
    QVERIFY(!isFinishedMovie(cut, origin, 10));
    const QString marked = write(QStringLiteral("marked.mov"), fakeMovie(10));
    write(QStringLiteral(".marked.mov.unfinished"), "");
    QVERIFY(!isFinishedMovie(marked, origin, 10));

    noteOrigin(movie, origin);
    if (isFinishedMovie(movie, "two", 10))
        QSKIP("this file system keeps no extended attributes");
    QVERIFY(isFinishedMovie(movie, origin, 11)); // of a recording that is shorter than it says
    QVERIFY(isFinishedMovie(movie, origin, std::nullopt));
    noteOrigin(cut, origin);
    QVERIFY(!isFinishedMovie(cut, origin, 10));
}

FILMWRIGHT_TEST(TestMovieDestination, QCoreApplication)
#include "tst_moviedestination.moc"
