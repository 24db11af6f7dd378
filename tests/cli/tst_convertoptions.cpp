// SPDX-License-Identifier: MIT
#include "cli/convertoptions.h"
#include "mlvdump/mlvdumpreport.h"

#include "support/testprogram.h"

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
        QTest::newRow("development") << "--exposure -0.5 --white-balance auto CLIP"
                                     << "--white-balance auto --exposure -0.5";
        QTest::newRow("brighter") << "--exposure +1.25 --white-balance 2.1,1,1.4 CLIP"
                                  << "--white-balance 2.1,1,1.4 --exposure 1.25";
        QTest::newRow("temperature") << "--exposure=3 --white-balance 5600 CLIP"
                                     << "--white-balance 5600 --exposure 3";
        QTest::newRow("as recorded") << "--exposure 0 --white-balance camera CLIP"
                                     << "";
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

    void selectedFrames_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<quint64>("first");
        QTest::addColumn<quint64>("last");
        QTest::newRow("all") << "CLIP" << quint64(1) << quint64(0);
        QTest::newRow("from the middle") << "--frames 10-20 CLIP" << quint64(10) << quint64(20);
        QTest::newRow("to the end") << "--frames 10- CLIP" << quint64(10) << quint64(0);
        QTest::newRow("from the beginning") << "--frames -20 CLIP" << quint64(1) << quint64(20);
    }

    void selectedFrames()
    {
        QFETCH(QString, line);
        ConvertOptions options;
        QVERIFY(!readConvertOptions(words(line), options));
        QTEST(options.settings.frames.first, "first");
        QTEST(options.settings.frames.last, "last");
    }

    void tableOfColoursIsForRecipes()
    {
        const QString table = m_folder.filePath(QStringLiteral("look.cube"));
        const QByteArray rows("0 0 0\n1 0 0\n0 1 0\n1 1 0\n0 0 1\n1 0 1\n0 1 1\n1 1 1\n");
        writeFile(table, "LUT_3D_SIZE 2\n" + rows);
        const QString recipe = m_folder.filePath(QStringLiteral("mine.recipe"));
        writeFile(recipe, "[Recipe]\nExtension=mp4\nVideo=-c:v libx264\n");
        const QStringList lut{QStringLiteral("--lut"), QDir().relativeFilePath(table)};
        const QStringList byRecipe{QStringLiteral("--recipe"), recipe, m_clip};
        ConvertOptions options;
        QVERIFY(!readConvertOptions(lut + byRecipe, options));
        QCOMPARE(options.settings.lut, table);
        QCOMPARE(readConvertOptions(lut + QStringList{m_clip}, options),
                 std::optional(ExitUnusable));
        writeFile(table, "LUT_3D_SIZE 2\n0 0 0\n");
        QCOMPARE(readConvertOptions(lut + byRecipe, options), std::optional(ExitUnusable));
        QVERIFY(QFile::remove(table));
        QCOMPARE(readConvertOptions(lut + byRecipe, options), std::optional(ExitUnusable));
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

    void bufferIsForRecipes()
    {
        const QString recipe = m_folder.filePath(QStringLiteral("flow.recipe"));
        writeFile(recipe, "[Recipe]\nExtension=mp4\nVideo=-c:v libx264\n");
        const QStringList byRecipe{QStringLiteral("--recipe"), recipe, m_clip};
        const auto with = [&](const char *line) { return words(line) + byRecipe; };
        ConvertOptions options;
        QVERIFY(!readConvertOptions(byRecipe, options));
        QCOMPARE(options.settings.frameBuffer, qint64(2) << 30);
        QVERIFY(options.settings.flows());
        QVERIFY(!readConvertOptions(with("--buffer 500M"), options));
        QCOMPARE(options.settings.frameBuffer, qint64(500) << 20);
        QVERIFY(!readConvertOptions(with("--buffer 1234567"), options));
        QCOMPARE(options.settings.frameBuffer, qint64(1234567));
        QVERIFY(!readConvertOptions(with("--stages"), options));
        QVERIFY(!options.settings.flows());
        for (const char *wrong : {"--buffer 0", "--buffer 2GB", "--buffer -1", "--buffer 1.5G",
                                  "--buffer 9999T", "--buffer 1G --stages"})
            QCOMPARE(readConvertOptions(with(wrong), options), std::optional(ExitUnusable));
        QCOMPARE(readConvertOptions(words("--buffer 1G CLIP"), options),
                 std::optional(ExitUnusable));
        QVERIFY(!readConvertOptions(words("--stages CLIP"), options)); // which it is anyway
        QVERIFY(!options.settings.flows());
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
        QTest::newRow("exposure beyond the range") << "--exposure 3.5 CLIP";
        QTest::newRow("exposure that is no number") << "--exposure bright CLIP";
        QTest::newRow("exposure with an exponent") << "--exposure 1e0 CLIP";
        QTest::newRow("unknown white balance") << "--white-balance tungsten CLIP";
        QTest::newRow("too warm") << "--white-balance 1999 CLIP";
        QTest::newRow("too cold") << "--white-balance 25001 CLIP";
        QTest::newRow("two multipliers") << "--white-balance 2,1 CLIP";
        QTest::newRow("four multipliers") << "--white-balance 2,1,1,1 CLIP";
        QTest::newRow("multiplier of 0") << "--white-balance 2,1,0 CLIP";
        QTest::newRow("negative multiplier") << "--white-balance 2,1,-1 CLIP";
        QTest::newRow("multipliers of no light") << "--white-balance 200,1,1 CLIP";
        QTest::newRow("frame 0") << "--frames 0-5 CLIP";
        QTest::newRow("frames backwards") << "--frames 5-4 CLIP";
        QTest::newRow("a frame alone") << "--frames 5 CLIP";
        QTest::newRow("no frames") << "--frames - CLIP";
        QTest::newRow("frames that are no numbers") << "--frames a-b CLIP";
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
    static void writeFile(const QString &path, const QByteArray &content)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), content.size());
    }
    QStringList words(const QString &text) const
    {
        QStringList words = text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        return words.replaceInStrings(QStringLiteral("CLIP"), m_clip);
    }
    QStringList words(const char *text) const { return words(QString::fromUtf8(text)); }

    QTemporaryDir m_folder;
    QString m_clip;
};

FILMWRIGHT_TEST(TestConvertOptions, QCoreApplication)
#include "tst_convertoptions.moc"
