// SPDX-License-Identifier: MIT
// Where movies go, what they are called, and what becomes of those that are there.

#include "commandline.h"
#include "sample.h"

#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

class TestDestination : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void closedCardWithAnOutputFolder();
    void folderThatCantBeMade();
    void namesByPattern();
    void twoRecordingsOfOneName();
    void finishedMoviesAreSkipped();
    void movieMadeWithAnotherChoiceIsNotSkipped();
    void existingMovieIsKept();

private:
    QString card(const QString &name = {}) const
    {
        return m_folder->filePath(QStringLiteral("card/") + name);
    }
    QString out(const QString &name = {}) const
    {
        return m_folder->filePath(QStringLiteral("out/") + name);
    }
    /// A run on the card with these options; its standard output, sorted.
    QStringList convert(const QStringList &options, int status = 0) const
    {
        CommandLine cli;
        if (!cli.run(QStringList{QStringLiteral("convert")} + options + QStringList{card()}) ||
            cli.status() != status)
            return {QStringLiteral("status %1: ").arg(cli.status()) +
                    cli.messages().join(QLatin1Char('\n'))};
        QStringList movies = cli.output();
        movies.sort();
        return movies;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestDestination::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir().mkpath(card()));
    QVERIFY(writeSample(card(QStringLiteral("clip.MLV")),
                        QStringLiteral("--size 64x48 --frames 2 --no-sound")));
}

void TestDestination::closedCardWithAnOutputFolder()
{
    const QFile::Permissions before = QFile::permissions(card());
    QVERIFY(QFile::setPermissions(card(), QFile::ReadOwner | QFile::ExeOwner));
    const QStringList movies =
        convert({QStringLiteral("--output"), out(QStringLiteral("deep/er"))});
    QVERIFY(QFile::setPermissions(card(), before));
    QCOMPARE(movies, QStringList{out(QStringLiteral("deep/er/clip.mov"))});
    QCOMPARE(QDir(card()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList{QStringLiteral("clip.MLV")});
    QCOMPARE(QDir(out(QStringLiteral("deep/er")))
                 .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList{QStringLiteral("clip.mov")});
}

void TestDestination::folderThatCantBeMade()
{
    const QString below = card(QStringLiteral("clip.MLV/below"));
    QCOMPARE(
        convert({QStringLiteral("--output"), below}, 0),
        QStringList{
            QStringLiteral("status 2: filmwright-cli: the folder %1 can't be written").arg(below)});
}

void TestDestination::namesByPattern()
{
    QCOMPARE(
        convert({QStringLiteral("--output"), out(), QStringLiteral("--name"),
                 QStringLiteral("{date} {time} {camera} {recipe} {name}"),
                 QStringLiteral("--format"), QStringLiteral("avi")}),
        QStringList{out(QStringLiteral("2026-03-21 14-30-00 Filmwright Sample avi clip.avi"))});
    QCOMPARE(convert({QStringLiteral("--name"), QStringLiteral("{lens}")}, 2), QStringList());
}

void TestDestination::twoRecordingsOfOneName()
{
    QVERIFY(QDir().mkpath(card(QStringLiteral("more"))));
    QVERIFY(QFile::copy(card(QStringLiteral("clip.MLV")), card(QStringLiteral("more/clip.MLV"))));
    QCOMPARE(convert({QStringLiteral("--output"), out()}, 1),
             QStringList{out(QStringLiteral("clip.mov"))});
    QCOMPARE(convert({QStringLiteral("--output"), out(), QStringLiteral("--existing"),
                      QStringLiteral("keep")}),
             (QStringList{out(QStringLiteral("clip-2.mov")), out(QStringLiteral("clip-3.mov"))}));
}

void TestDestination::finishedMoviesAreSkipped()
{
    constexpr int recordings = 12;
    for (int number = 1; number < recordings; ++number)
        QVERIFY(QFile::copy(card(QStringLiteral("clip.MLV")),
                            card(QStringLiteral("clip%1.MLV").arg(number))));
    QCOMPARE(convert({QStringLiteral("--quiet")}).size(), recordings);
    const QStringList cut{card(QStringLiteral("clip11.mov")), card(QStringLiteral("clip5.mov"))};
    for (const QString &movie : cut)
        QVERIFY(QFile::resize(movie, QFileInfo(movie).size() / 2));
    const QString report = out(QStringLiteral("report.json"));
    QVERIFY(QDir().mkpath(out()));
    QCOMPARE(convert({QStringLiteral("--existing"), QStringLiteral("skip"),
                      QStringLiteral("--report"), report}),
             cut);
    QFile written(report);
    QVERIFY(written.open(QIODevice::ReadOnly));
    QCOMPARE(written.readAll().count("\"skipped\""), recordings - 2);
    QCOMPARE(convert({QStringLiteral("--existing"), QStringLiteral("skip")}), QStringList());
}

void TestDestination::movieMadeWithAnotherChoiceIsNotSkipped()
{
    const QString movie = card(QStringLiteral("clip.mov"));
    const QStringList skip{QStringLiteral("--existing"), QStringLiteral("skip")};
    const QStringList maximum{QStringLiteral("--quality"), QStringLiteral("maximum")};
    QCOMPARE(convert({}), QStringList{movie});
    QCOMPARE(convert(skip), QStringList());
    const QStringList anew = convert(skip + maximum);
    if (anew.isEmpty())
        QSKIP("this file system keeps no extended attributes");
    QCOMPARE(anew, QStringList{movie});
    QCOMPARE(convert(skip + maximum), QStringList());
    QCOMPARE(convert(skip + QStringList{QStringLiteral("--recipe"), QStringLiteral("prores-lt")}),
             QStringList{movie});
}

void TestDestination::existingMovieIsKept()
{
    QCOMPARE(convert({}), QStringList{card(QStringLiteral("clip.mov"))});
    QCOMPARE(convert({QStringLiteral("--existing"), QStringLiteral("keep")}),
             QStringList{card(QStringLiteral("clip-2.mov"))});
}

FILMWRIGHT_TEST(TestDestination, QCoreApplication)
#include "tst_destination.moc"
