// SPDX-License-Identifier: MIT
#include "toolrun.h"

#include "support/testprogram.h"
#include "support/words.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

/// The white balance that frames are developed with, in the programs that users have.
class TestMlvDumpBalance : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void greyCardIsGrey_data();
    void greyCardIsGrey();
    void greysOfASceneAreGrey_data();
    void greysOfASceneAreGrey();
    void oneAnswerForTheWholeRecording();
    void answerIsTheSameForAnyNumberOfThreads();
    void answerFitsAnotherRecording();
    void clippedPartsTellNothing();
    void flatIsAppliedBeforeFramesAreLookedAt();
    void darkRecordingKeepsTheCameras();
    void temperatureIsThatOfTheCamerasSetting_data();
    void temperatureIsThatOfTheCamerasSetting();
    void whatIsNotChosenChangesNothing();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    QString sample(const QString &options, const QString &name = QStringLiteral("a.MLV")) const
    {
        const auto run =
            runBuilt(QStringLiteral("mlv_sample"),
                     words(QStringLiteral("--no-sound ") + options) + QStringList{path(name)});
        if (run.status != 0)
            qFatal("%s", qPrintable(run.lines.join(QLatin1Char('\n'))));
        return path(name);
    }
    ProgramRun extract(const QString &recording, const QString &prefix,
                       const QString &options) const
    {
        const auto run =
            runBuilt(QStringLiteral("mlv_dump"), QStringList{QStringLiteral("--dng"), recording,
                                                             QStringLiteral("-o"), path(prefix)} +
                                                     words(options));
        if (run.status != 0)
            qFatal("%s", qPrintable(run.lines.join(QLatin1Char('\n'))));
        return run;
    }
    /// AsShotNeutral of every frame with that prefix, each once.
    QStringList neutrals(const QString &prefix) const
    {
        QStringList found;
        for (const QString &name :
             QDir(m_folder->path()).entryList({prefix + QStringLiteral("*.dng")}))
            found << QString::fromUtf8(outputOf(QStringLiteral("exiftool"),
                                                {QStringLiteral("-s3"), QStringLiteral("-n"),
                                                 QStringLiteral("-AsShotNeutral"), path(name)}))
                         .trimmed();
        found.removeDuplicates();
        return found;
    }
    QByteArray bytes(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    /// The mean colour of a part of a developed frame, of shares of its sides.
    QList<double> developed(const QString &prefix, const QRectF &part,
                            const QString &brightness) const
    {
        const QString frame = path(prefix + QStringLiteral("000000"));
        const auto run = runBuilt(QStringLiteral("dcraw"),
                                  words(QStringLiteral("-H 3 -q 3 -w -W -T -b ") + brightness) +
                                      QStringList{frame + QStringLiteral(".dng")});
        if (run.status != 0)
            qFatal("%s", qPrintable(run.lines.join(QLatin1Char('\n'))));
        QImage image;
        image.loadFromData(outputOf(QStringLiteral("ffmpeg"),
                                    words(QStringLiteral("-v error -i")) +
                                        QStringList{frame + QStringLiteral(".tiff")} +
                                        words(QStringLiteral("-f image2pipe -c:v ppm -"))));
        const QRect area = QRectF(part.x() * image.width(), part.y() * image.height(),
                                  part.width() * image.width(), part.height() * image.height())
                               .toRect();
        QList<double> sums{0, 0, 0};
        for (int y = area.top(); y <= area.bottom(); ++y) {
            for (int x = area.left(); x <= area.right(); ++x) {
                const QColor colour = image.pixelColor(x, y);
                sums[0] += colour.red();
                sums[1] += colour.green();
                sums[2] += colour.blue();
            }
        }
        for (double &sum : sums)
            sum /= area.width() * area.height();
        return sums;
    }
    static double spread(const QList<double> &colour)
    {
        return *std::max_element(colour.cbegin(), colour.cend()) -
               *std::min_element(colour.cbegin(), colour.cend());
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestMlvDumpBalance::greyCardIsGrey_data()
{
    QTest::addColumn<QString>("light");
    QTest::newRow("daylight") << "1,1,1";
    QTest::newRow("shade") << "0.75,0.88,1.15";
    QTest::newRow("evening") << "1.1,0.82,0.58";
    QTest::newRow("lamp") << "1.2,0.6,0.22";
    QTest::newRow("tubes") << "0.8,1,0.6";
    QTest::newRow("stage") << "1,0.55,1.1";
}

void TestMlvDumpBalance::greyCardIsGrey()
{
    QFETCH(QString, light);
    const QString card =
        sample(QStringLiteral("--size 320x192 --frames 3 --flat --light ") + light);
    extract(card, QStringLiteral("camera"), {});
    extract(card, QStringLiteral("auto"), QStringLiteral("--white-balance auto"));
    const QRectF middle(0.1, 0.1, 0.8, 0.8);
    const QString brightness = QStringLiteral("1");
    const auto grey = developed(QStringLiteral("auto"), middle, brightness);
    QVERIFY2(spread(grey) <= 2, qPrintable(QString::number(spread(grey))));
    QVERIFY(*std::max_element(grey.cbegin(), grey.cend()) < 250); // nothing hides in white
    if (light != QLatin1String("1,1,1"))
        QVERIFY(spread(developed(QStringLiteral("camera"), middle, brightness)) > 10);
}

void TestMlvDumpBalance::greysOfASceneAreGrey_data()
{
    QTest::addColumn<QString>("light");
    QTest::newRow("daylight") << "1,1,1";
    QTest::newRow("evening") << "1.1,0.82,0.58";
    QTest::newRow("lamp") << "1.2,0.6,0.22";
}

/// Colours around them don't pull the white far away.
void TestMlvDumpBalance::greysOfASceneAreGrey()
{
    QFETCH(QString, light);
    extract(sample(QStringLiteral("--size 640x360 --frames 3 --light ") + light),
            QStringLiteral("auto"), QStringLiteral("--white-balance auto"));
    // A step of the ramp of greys, an eighth of white.
    const QRectF step(0.03 + 3.2 * 0.94 / 12, 0.27, 0.6 * 0.94 / 12, 0.07);
    const auto grey = developed(QStringLiteral("auto"), step, QStringLiteral("4"));
    QVERIFY2(spread(grey) <= 4, qPrintable(QString::number(spread(grey))));
}

void TestMlvDumpBalance::oneAnswerForTheWholeRecording()
{
    // The camera's white balance isn't asked, the scene changes in brightness and moves.
    extract(sample(QStringLiteral("--size 320x192 --frames 30 --hdr 1 --light 1.2,0.6,0.3")),
            QStringLiteral("auto"), QStringLiteral("--white-balance auto"));
    QCOMPARE(neutrals(QStringLiteral("auto")).size(), 1);
}

void TestMlvDumpBalance::answerIsTheSameForAnyNumberOfThreads()
{
    const QString recording = sample(QStringLiteral("--size 320x192 --frames 12"));
    for (const char *threads : {"1", "2", "7"}) {
        extract(recording, QLatin1String(threads),
                QStringLiteral("--white-balance auto --threads ") + QLatin1String(threads));
    }
    QVERIFY(!bytes(QStringLiteral("1000003.dng")).isEmpty());
    for (const char *threads : {"2", "7"}) {
        QCOMPARE(bytes(QLatin1String(threads) + QStringLiteral("000003.dng")),
                 bytes(QStringLiteral("1000003.dng")));
    }
}

/// It is told in the form in which it can be given.
void TestMlvDumpBalance::answerFitsAnotherRecording()
{
    const QString recording =
        sample(QStringLiteral("--size 320x192 --frames 2 --light 1.2,0.6,0.3"));
    const auto run =
        extract(recording, QStringLiteral("auto"), QStringLiteral("--white-balance auto"));
    static const QRegularExpression note(
        QStringLiteral("\\[NOTE\\] the white balance found in the frames is (\\S+)\\n"));
    const auto found = note.match(run.lines.join(QLatin1Char('\n')));
    QVERIFY(found.hasMatch());
    extract(recording, QStringLiteral("given"),
            QStringLiteral("--white-balance ") + found.captured(1));
    const QStringList one = neutrals(QStringLiteral("auto")).constFirst().split(QLatin1Char(' '));
    const QStringList other =
        neutrals(QStringLiteral("given")).constFirst().split(QLatin1Char(' '));
    for (int i = 0; i < 3; ++i)
        QVERIFY(std::abs(one.at(i).toDouble() / other.at(i).toDouble() - 1) < 1e-4);
}

/// What is clipped has the sensor's colour, magenta. The recorded white level hides it.
void TestMlvDumpBalance::clippedPartsTellNothing()
{
    const QString options = QStringLiteral("--size 640x360 --frames 3 --light 1.1,0.82,0.58");
    extract(sample(options), QStringLiteral("whole"), QStringLiteral("--white-balance auto"));
    for (const char *level : {"", " --white-level recorded"}) {
        const QString prefix = QStringLiteral("clipped") + QString::number(qstrlen(level)) + u'-';
        extract(sample(options + QStringLiteral(" --clip 8500 --recorded-white 15000"),
                       QStringLiteral("b.MLV")),
                prefix, QStringLiteral("--white-balance auto") + QLatin1String(level));
        const QStringList whole =
            neutrals(QStringLiteral("whole")).constFirst().split(QLatin1Char(' '));
        const QStringList clipped = neutrals(prefix).constFirst().split(QLatin1Char(' '));
        for (const int i : {0, 2}) {
            const double ratio = clipped.at(i).toDouble() / whole.at(i).toDouble();
            QVERIFY2(ratio > 0.93 && ratio < 1.07, qPrintable(QString::number(ratio)));
        }
    }
}

/// A flat through a filter takes the filter's colour out of the frames.
void TestMlvDumpBalance::flatIsAppliedBeforeFramesAreLookedAt()
{
    const QString size = QStringLiteral("--size 320x192 --frames 3 --flat ");
    const QString flat =
        sample(size + QStringLiteral("--light 1.2,0.6,0.3"), QStringLiteral("f.MLV"));
    extract(sample(size), QStringLiteral("auto"),
            QStringLiteral("--white-balance auto -t ") + flat);
    QVERIFY(spread(developed(QStringLiteral("auto"), QRectF(0.1, 0.1, 0.8, 0.8),
                             QStringLiteral("1"))) <= 2);
}

void TestMlvDumpBalance::darkRecordingKeepsTheCameras()
{
    const QString dark = sample(QStringLiteral("--size 320x192 --frames 2 --dark"));
    extract(dark, QStringLiteral("camera"), {});
    const auto run = extract(dark, QStringLiteral("auto"), QStringLiteral("--white-balance auto"));
    QVERIFY(run.lines.contains(QStringLiteral("[NOTE] the frames don't tell what is white; the "
                                              "camera's white balance is taken")));
    QCOMPARE(bytes(QStringLiteral("auto000001.dng")), bytes(QStringLiteral("camera000001.dng")));
}

void TestMlvDumpBalance::temperatureIsThatOfTheCamerasSetting_data()
{
    QTest::addColumn<int>("kelvin");
    for (const int kelvin : {2000, 3200, 5600, 10000, 25000})
        QTest::addRow("%d K", kelvin) << kelvin;
}

void TestMlvDumpBalance::temperatureIsThatOfTheCamerasSetting()
{
    QFETCH(int, kelvin);
    const QString size = QStringLiteral("--size 64x48 --frames 1 ");
    extract(sample(size + QStringLiteral("--set-kelvin %1").arg(kelvin)), QStringLiteral("set"),
            {});
    extract(sample(size, QStringLiteral("b.MLV")), QStringLiteral("chosen"),
            QStringLiteral("--white-balance %1").arg(kelvin));
    QCOMPARE(neutrals(QStringLiteral("chosen")), neutrals(QStringLiteral("set")));
}

void TestMlvDumpBalance::whatIsNotChosenChangesNothing()
{
    const QString recording = sample(QStringLiteral("--size 64x48 --frames 1"));
    extract(recording, QStringLiteral("plain"), {});
    extract(recording, QStringLiteral("camera"),
            QStringLiteral("--white-balance camera --exposure 0 --renumber"));
    QVERIFY(!bytes(QStringLiteral("plain000000.dng")).isEmpty());
    QCOMPARE(bytes(QStringLiteral("camera000000.dng")), bytes(QStringLiteral("plain000000.dng")));
}

FILMWRIGHT_TEST(TestMlvDumpBalance, QCoreApplication)
#include "tst_mlv_dump_balance.moc"
