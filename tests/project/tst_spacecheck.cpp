// SPDX-License-Identifier: MIT
#include "fakeproject.h"
#include "project/conversionsettings.h"
#include "project/framesize.h"
#include "project/moviespace.h"
#include "project/spacecheck.h"
#include "runner/files.h"

#include "support/testprogram.h"

#include <QDir>
#include <QTest>

using namespace filmwright;

class TestSpaceCheck : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void resolutionTexts_data();
    void resolutionTexts();
    void enoughSpaceIsNoProblem();
    void bothFiguresAreTold();
    void framesThatAreThereCountAsSpace();
    void needFollowsTheReport();
    void mergedFramesNeedSpaceToo();
    void recipesNeedWhatTheirFramesNeed();
    void selectedFramesAloneNeedSpace();
    void framesThatFlowNeedTheirBuffer();
    void moviesOfRecipesNeedAboutWhatTheirEncodersWrite();
    void movieThatGrowsBeyondItsDisk_data();
    void movieThatGrowsBeyondItsDisk();
    void unknownResolutionNeedsNothing();
    void hugeCountsAreRefused();
};

void TestSpaceCheck::resolutionTexts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("pixels");
    QTest::newRow("as reported") << QStringLiteral("1920x1080") << 2073600.0;
    QTest::newRow("nothing") << QString() << 0.0;
    QTest::newRow("one side") << QStringLiteral("1920") << 0.0;
    QTest::newRow("words") << QStringLiteral("f/1") << 0.0;
    QTest::newRow("negative") << QStringLiteral("-5x5") << 0.0;
    QTest::newRow("three sides") << QStringLiteral("2x3x4") << 0.0;
}

void TestSpaceCheck::resolutionTexts()
{
    QFETCH(QString, text);
    QTEST(pixelsOf(text), "pixels");
}

void TestSpaceCheck::enoughSpaceIsNoProblem()
{
    QCOMPARE(spaceError({1000, 0}, 1000, QStringLiteral("/t")), QString());
}

void TestSpaceCheck::bothFiguresAreTold()
{
    QCOMPARE(spaceError({3.0 * 1024 * 1024 * 1024, 0}, 50.0 * 1024 * 1024, QStringLiteral("/t")),
             QStringLiteral("its frames need 3.22 GB, but only 52.43 MB are free in the temporary "
                            "folder /t; make room there or choose another temporary folder"));
}

void TestSpaceCheck::framesThatAreThereCountAsSpace()
{
    QCOMPARE(spaceError({5000, 4000}, 1000, QStringLiteral("/t")), QString());
    QVERIFY(!spaceError({5000, 3000}, 1000, QStringLiteral("/t")).isEmpty());
}

void TestSpaceCheck::needFollowsTheReport()
{
    FakeProject fake(10);
    fake.setRawInformation(QStringLiteral("1920x1080"), 12);
    fake.read();
    const double frame = 1920.0 * 1080 * (12 / 8.0 + 3);
    const SpaceNeed need = spaceNeed(*fake.controller);
    QVERIFY(need.frames >= 10 * frame);
    QVERIFY(need.frames < 10 * frame * 1.01);
    QCOMPARE(need.there, 0.0);
    QVERIFY(QDir().mkpath(fake.controller->extractionDirectory()));
    fake.writeTiff(fake.frame(0, QStringLiteral("tiff")));
    QCOMPARE(spaceNeed(*fake.controller).there,
             static_cast<double>(QFileInfo(fake.frame(0, QStringLiteral("tiff"))).size()));
}

void TestSpaceCheck::mergedFramesNeedSpaceToo()
{
    FakeProject fake(10);
    fake.setRawInformation(QStringLiteral("1920x1080"), 14);
    fake.read();
    const double plain = spaceNeed(*fake.controller).frames;
    fake.controller->setDualISO(true);
    QVERIFY(spaceNeed(*fake.controller).frames - plain >= 10 * 3.0 * 1920 * 1080);
}

void TestSpaceCheck::recipesNeedWhatTheirFramesNeed()
{
    FakeProject fake(10);
    fake.setRawInformation(QStringLiteral("1920x1080"), 14);
    fake.read();
    const double plain = spaceNeed(*fake.controller).frames;
    const double samples = 10 * 3.0 * 1920 * 1080;
    Recipe recipe;
    recipe.develop = QStringList{QStringLiteral("-6")};
    fake.controller->setRecipe(recipe);
    QCOMPARE(spaceNeed(*fake.controller).frames - plain, samples);
    recipe.develop = QStringList{QStringLiteral("-h")};
    fake.controller->setRecipe(recipe);
    QCOMPARE(plain - spaceNeed(*fake.controller).frames, samples * 3 / 4);
    recipe.develop.clear();
    recipe.extension = QStringLiteral("dng");
    fake.controller->setRecipe(recipe);
    const double raw = 10 * (1920.0 * 1080 * 14 / 8 + 8192);
    QCOMPARE(spaceNeed(*fake.controller).frames, raw);
    fake.controller->setBlendsAlternatingRows(true); // frames have 16 bits then
    QCOMPARE(spaceNeed(*fake.controller).frames - raw, 10 * 1920.0 * 1080 * 2 / 8);
    fake.controller->setBlendsAlternatingRows(false);
    fake.controller->setRecipe(std::nullopt);
    QCOMPARE(spaceNeed(*fake.controller).frames, plain);
}

void TestSpaceCheck::selectedFramesAloneNeedSpace()
{
    FakeProject fake(10);
    fake.setRawInformation(QStringLiteral("1920x1080"), 14);
    fake.read();
    const double all = spaceNeed(*fake.controller).frames;
    fake.controller->setFrameSelection({3, 0});
    QCOMPARE(spaceNeed(*fake.controller).frames, all * 8 / 10);
}

void TestSpaceCheck::framesThatFlowNeedTheirBuffer()
{
    FakeProject fake(100000);
    fake.setRawInformation(QStringLiteral("1920x1080"), 14);
    fake.read();
    Recipe recipe;
    recipe.extension = QStringLiteral("mov");
    recipe.develop = QStringList{QStringLiteral("-6")};
    fake.controller->setRecipe(recipe);
    constexpr qint64 frame = 1920 * 1080 * 31 / 4 + 2 * 8192;
    fake.controller->setFrameBuffer(7 * frame);
    QCOMPARE(framesInBuffer(*fake.controller), 7U);
    QCOMPARE(spaceNeed(*fake.controller).frames, 7.0 * frame);
    fake.controller->setFrameBuffer(frame - 1); // nothing goes with less than one
    QCOMPARE(framesInBuffer(*fake.controller), 1U);
    fake.controller->setFrameBuffer(qint64(1) << 60); // nobody has that
    const double need = spaceNeed(*fake.controller).frames;
    QVERIFY(need <= freeSpace(fake.controller->workingFolder()) * 0.6);
    fake.controller->setFrameBuffer(0);
    QCOMPARE(spaceNeed(*fake.controller).frames, 100000.0 * frame);
}

void TestSpaceCheck::moviesOfRecipesNeedAboutWhatTheirEncodersWrite()
{
    MlvMetadata metadata;
    metadata.resolution = QStringLiteral("1920x1080");
    metadata.videoFrames = 100;
    ConversionSettings settings;
    settings.recipe.emplace();
    settings.recipe->extension = QStringLiteral("mov");
    const auto bytesOf = [&](const char *video) {
        settings.recipe->video = QString::fromUtf8(video).split(QLatin1Char(' '));
        return movieBytes(metadata, settings);
    };
    constexpr double pixels = 1920 * 1080;
    QCOMPARE(bytesOf("-c:v prores_ks -profile:v hq"), 44 * pixels);
    QCOMPARE(bytesOf("-c:v dnxhd -profile:v dnxhr_hqx"), 44 * pixels);
    QCOMPARE(bytesOf("-c:v ffv1 -level 3"), 200 * pixels);
    QCOMPARE(bytesOf("-c:v libx264 -crf 20"), 0.0); // goes by the scene
    settings.frames = {11, 20};
    QCOMPARE(bytesOf("-c:v ffv1 -level 3"), 20 * pixels);
    const QString problem = movieSpaceError({{QStringLiteral("/clip.mov"), 1e30, true}});
    QVERIFY2(problem.startsWith(QLatin1String("its movie needs about ")), qPrintable(problem));
}

void TestSpaceCheck::movieThatGrowsBeyondItsDisk_data()
{
    QTest::addColumn<int>("encoded");
    QTest::addColumn<double>("free"); // for 1000 frames, of a megabyte each so far
    QTest::addColumn<bool>("fits");
    QTest::newRow("too early to say") << 47 << 1e6 << true;
    QTest::newRow("room for all") << 100 << 901e6 << true;
    QTest::newRow("room if the others are smaller") << 100 << 500e6 << true;
    QTest::newRow("no room") << 100 << 450e6 << false;
    QTest::newRow("known better later") << 900 << 80e6 << false;
    QTest::newRow("all is there") << 1000 << 0.0 << true;
}

void TestSpaceCheck::movieThatGrowsBeyondItsDisk()
{
    QFETCH(int, encoded);
    QFETCH(double, free);
    QFETCH(bool, fits);
    const GrowingMovie movie{QStringLiteral("/films/clip.mov"), encoded * 1e6,
                             static_cast<quint64>(encoded), 1000};
    const QString problem = growthError(movie, free);
    QCOMPARE(problem.isEmpty(), fits);
    if (!fits)
        QVERIFY2(problem.contains(QLatin1String("are free in /films")), qPrintable(problem));
}

void TestSpaceCheck::unknownResolutionNeedsNothing()
{
    FakeProject fake(10);
    fake.read();
    QCOMPARE(spaceNeed(*fake.controller).frames, 0.0);
    QCOMPARE(spaceError(*fake.controller), QString());
}

void TestSpaceCheck::hugeCountsAreRefused()
{
    FakeProject fake(2000000000);
    fake.setRawInformation(QStringLiteral("65534x65534"), 16);
    fake.read();
    QVERIFY(!spaceError(*fake.controller).isEmpty());
}

FILMWRIGHT_TEST(TestSpaceCheck, QCoreApplication)
#include "tst_spacecheck.moc"
