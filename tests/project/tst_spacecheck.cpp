// SPDX-License-Identifier: MIT
#include "fakeproject.h"
#include "project/framesize.h"
#include "project/spacecheck.h"

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
    QCOMPARE(spaceProblem({1000, 0}, 1000, QStringLiteral("/t")), QString());
}

void TestSpaceCheck::bothFiguresAreTold()
{
    QCOMPARE(spaceProblem({3.0 * 1024 * 1024 * 1024, 0}, 50.0 * 1024 * 1024, QStringLiteral("/t")),
             QStringLiteral("its frames need 3.22 GB, but only 52.43 MB are free in the temporary "
                            "folder /t; make room there or choose another temporary folder"));
}

void TestSpaceCheck::framesThatAreThereCountAsSpace()
{
    QCOMPARE(spaceProblem({5000, 4000}, 1000, QStringLiteral("/t")), QString());
    QVERIFY(!spaceProblem({5000, 3000}, 1000, QStringLiteral("/t")).isEmpty());
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

void TestSpaceCheck::unknownResolutionNeedsNothing()
{
    FakeProject fake(10);
    fake.read();
    QCOMPARE(spaceNeed(*fake.controller).frames, 0.0);
    QCOMPARE(spaceProblem(*fake.controller), QString());
}

void TestSpaceCheck::hugeCountsAreRefused()
{
    FakeProject fake(2000000000);
    fake.setRawInformation(QStringLiteral("65534x65534"), 16);
    fake.read();
    QVERIFY(!spaceProblem(*fake.controller).isEmpty());
}

QTEST_GUILESS_MAIN(TestSpaceCheck)
#include "tst_spacecheck.moc"
