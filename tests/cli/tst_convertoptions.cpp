// SPDX-License-Identifier: MIT
#include "cli/convertoptions.h"
#include "mlvdump/mlvdumpreport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <algorithm>

using namespace filmwright;

class TestConvertOptions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_clip = m_folder.filePath(QStringLiteral("clip.MLV"));
        QVERIFY(QFile(m_clip).open(QIODevice::WriteOnly));
    }

    void defaults()
    {
        ConvertOptions options;
        QVERIFY(!readConvertOptions({m_clip}, options));
        QCOMPARE(options.settings.format, qint32(MovieFormatMOV));
        QCOMPARE(options.settings.quality, qint32(MovieQualityHigh));
        QCOMPARE(options.paths, QStringList{m_clip});
        QVERIFY(options.settings.calibration.dark.isEmpty() &&
                options.settings.calibration.flat.isEmpty() &&
                options.settings.calibration.flatDark.isEmpty());
        QVERIFY(options.temporaryBase.isEmpty() && options.report.isEmpty());
        QVERIFY(!options.keepTemporary);
        QVERIFY(!options.quiet);
        QCOMPARE(options.settings.workers, 1);
        QVERIFY(!options.settings.recipe);
    }

    void everyOption()
    {
        ConvertOptions options;
        QVERIFY(!readConvertOptions(
            words("--format avi --quality maximum --dark CLIP --flat CLIP "
                  "--flat-dark CLIP --temp-dir work --keep-temp --report r.json --quiet "
                  "--jobs 3 CLIP"),
            options));
        QCOMPARE(options.settings.format, qint32(MovieFormatAVI));
        QCOMPARE(options.settings.quality, qint32(MovieQualityMaximum));
        QCOMPARE(options.settings.calibration.dark, m_clip);
        QCOMPARE(options.settings.calibration.flat, m_clip);
        QCOMPARE(options.settings.calibration.flatDark, m_clip);
        QCOMPARE(options.temporaryBase, QStringLiteral("work"));
        QVERIFY(options.keepTemporary);
        QCOMPARE(options.report, QStringLiteral("r.json"));
        QVERIFY(options.quiet);
        QCOMPARE(options.settings.workers, 3);
    }

    void correctionsOfTheFrames_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("arguments");
        QTest::newRow("none") << "CLIP"
                              << "";
        QTest::newRow("as without them")
            << "--white-level auto --black-level auto --matrix auto --repair-pixels off CLIP"
            << "";
        QTest::newRow("levels") << "--white-level 15000 --black-level recorded CLIP"
                                << "--white-level 15000 --black-level recorded";
        QTest::newRow("matrix") << "--matrix recorded CLIP"
                                << "--matrix recorded";
        QTest::newRow("repair") << "--repair-columns --repair-pixels auto CLIP"
                                << "--repair-pixels auto --repair-columns";
        QTest::newRow("map") << "--repair-pixels CLIP CLIP"
                             << "--repair-pixels CLIP";
    }

    void correctionsOfTheFrames()
    {
        QFETCH(QString, line);
        QFETCH(QString, arguments);
        ConvertOptions options;
        QVERIFY(!readConvertOptions(words(line.toLatin1().constData()), options));
        QCOMPARE(options.settings.corrections.arguments(),
                 arguments.isEmpty() ? QStringList() : words(arguments.toLatin1().constData()));
    }

    void correctionsThatMakeNoSenseAreRefused()
    {
        for (const char *line :
             {"--white-level 65536 CLIP", "--white-level -1 CLIP", "--black-level dark CLIP",
              "--matrix d65 CLIP", "--repair-pixels missing.fpm CLIP"}) {
            ConvertOptions options;
            QCOMPARE(readConvertOptions(words(line), options), ExitUnusable);
        }
    }

    void mapThatIsNamedRelativelyIsMadeAbsolute()
    {
        ConvertOptions options;
        QVERIFY(!readConvertOptions(
            {QStringLiteral("--repair-pixels"), QDir().relativeFilePath(m_clip), m_clip}, options));
        QCOMPARE(options.settings.corrections.pixelRepair, m_clip);
    }

    void automaticJobsAreTheCores()
    {
        ConvertOptions options;
        QVERIFY(!readConvertOptions(words("--jobs auto CLIP"), options));
        QCOMPARE(options.settings.workers, std::clamp(QThread::idealThreadCount(), 1, 64));
    }

    void recipeTakesThePlaceOfFormatAndQuality()
    {
        QFile recipe(m_folder.filePath(QStringLiteral("mine.recipe")));
        QVERIFY(recipe.open(QIODevice::WriteOnly));
        recipe.write("[Recipe]\nExtension=mp4\nVideo=-c:v libx264\n");
        recipe.close();
        ConvertOptions options;
        const QStringList chosen{QStringLiteral("--recipe"), recipe.fileName(), m_clip};
        QVERIFY(!readConvertOptions(chosen, options));
        QVERIFY(options.settings.recipe);
        QCOMPARE(moviePathFor(m_clip, options.settings, {}),
                 m_folder.filePath(QStringLiteral("clip.mp4")));
        for (const char *other : {"--format", "--quality"}) {
            const QString value =
                other == QByteArray("--format") ? QStringLiteral("mov") : QStringLiteral("high");
            QCOMPARE(
                readConvertOptions(QStringList{QString::fromUtf8(other), value} + chosen, options),
                std::optional(ExitUnusable));
        }
    }

    void pathThatBeginsWithADash()
    {
        ConvertOptions options;
        const QString clip = m_folder.filePath(QStringLiteral("--quiet"));
        QVERIFY(QFile(clip).open(QIODevice::WriteOnly));
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_folder.path()));
        const auto ending = readConvertOptions(words("-- --quiet"), options);
        QVERIFY(QDir::setCurrent(before));
        QVERIFY(!ending);
        QCOMPARE(options.paths, QStringList{QStringLiteral("--quiet")});
        QVERIFY(!options.quiet);
    }

    void calibrationThatBeginsWithADash()
    {
        ConvertOptions options;
        const QString clip = m_folder.filePath(QStringLiteral("-d.MLV"));
        QVERIFY(QFile(clip).open(QIODevice::WriteOnly));
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_folder.path()));
        const auto ending = readConvertOptions(words("--dark=-d.MLV CLIP"), options);
        const QString absolute = QFileInfo(QStringLiteral("-d.MLV")).absoluteFilePath();
        QVERIFY(QDir::setCurrent(before));
        QVERIFY(!ending);
        QCOMPARE(options.settings.calibration.dark, absolute); // no option of a tool
    }

    void unusable_data()
    {
        QTest::addColumn<QString>("arguments");
        QTest::newRow("no path") << "";
        QTest::newRow("unknown option") << "--fast CLIP";
        QTest::newRow("unknown format") << "--format mp4 CLIP";
        QTest::newRow("unknown quality") << "--quality low CLIP";
        QTest::newRow("unknown progress") << "--progress xml CLIP";
        QTest::newRow("unknown recipe") << "--recipe none CLIP";
        QTest::newRow("missing recipe") << "--recipe /no/such.recipe CLIP";
        QTest::newRow("unknown treatment of a movie") << "--existing ask CLIP";
        QTest::newRow("name with a folder") << "--name a/b CLIP";
        QTest::newRow("empty output folder") << "--output= CLIP";
        QTest::newRow("no jobs") << "--jobs 0 CLIP";
        QTest::newRow("too many jobs") << "--jobs 65 CLIP";
        QTest::newRow("jobs that are no number") << "--jobs many CLIP";
        QTest::newRow("missing value") << "CLIP --dark";
        QTest::newRow("missing recording") << "CLIP /no/such.MLV";
        QTest::newRow("missing calibration") << "--flat-dark /no/such.MLV CLIP";
    }

    void unusable()
    {
        QFETCH(QString, arguments);
        ConvertOptions options;
        QCOMPARE(readConvertOptions(words(arguments), options), std::optional(ExitUnusable));
    }

    void helpEndsWithSuccess()
    {
        ConvertOptions options;
        QCOMPARE(readConvertOptions(words("--help"), options), std::optional(ExitSuccess));
    }

private:
    QStringList words(const QString &text) const
    {
        QStringList words = text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        return words.replaceInStrings(QStringLiteral("CLIP"), m_clip);
    }
    QStringList words(const char *text) const { return words(QString::fromUtf8(text)); }

    QTemporaryDir m_folder;
    QString m_clip;
};

QTEST_GUILESS_MAIN(TestConvertOptions)
#include "tst_convertoptions.moc"
