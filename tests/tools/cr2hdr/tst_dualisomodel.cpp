// SPDX-License-Identifier: MIT
// What is found out about a recording: row pattern, exposure difference, noise, saturation.
#include "cr2hdr/model.h"
#include "dualscene.h"

#include "support/testprogram.h"

#include <QTest>

#include <cmath>

using dualiso::Finding;
using dualiso::Frame;
using dualiso::PatternSearch;

namespace {

Finding findingOf(const Frame &frame)
{
    PatternSearch search;
    search.add(frame);
    return search.finding();
}

bool isNear(float value, double expected, double tolerance)
{
    return std::abs(static_cast<double>(value) - expected) <= tolerance;
}

} // namespace

class TestDualIsoModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void thePatternIsFoundAtEveryPhaseAndDepth_data()
    {
        QTest::addColumn<int>("bits");
        QTest::addColumn<int>("phase");
        QTest::addColumn<QByteArray>("letters");
        const QList<QByteArray> patterns{"LLHH", "HLLH", "HHLL", "LHHL"};
        for (const int bits : {10, 12, 14, 16}) {
            for (int phase = 0; phase < 4; ++phase) {
                QTest::addRow("%d bits, %s", bits, patterns[phase].constData())
                    << bits << phase << patterns[phase];
            }
        }
    }

    void thePatternIsFoundAtEveryPhaseAndDepth()
    {
        QFETCH(int, bits);
        QFETCH(int, phase);
        QFETCH(QByteArray, letters);
        sample::Settings settings = dualscene::dualSettings(400);
        settings.bits = bits;
        settings.dualIsoPhase = phase;
        PatternSearch search;
        search.add(dualscene::frame(settings, 0));
        QCOMPARE(search.finding(), Finding::DualIso);
        QCOMPARE(QByteArray::fromStdString(search.pattern().letters()), letters);
    }

    void ordinaryFramesAreNotDualIso_data()
    {
        QTest::addColumn<int>("iso");
        QTest::newRow("ISO 100") << 100;
        QTest::newRow("ISO 6400") << 6400;
    }

    void ordinaryFramesAreNotDualIso()
    {
        QFETCH(int, iso);
        sample::Settings settings = dualscene::dualSettings(0);
        settings.iso = iso;
        QCOMPARE(findingOf(dualscene::frame(settings, 0)), Finding::NotDualIso);
    }

    void aThirdOfAStopIsNoDualIso()
    {
        QCOMPARE(findingOf(dualscene::frame(dualscene::dualSettings(126), 0)), Finding::NotDualIso);
    }

    void aFrameWhoseHighRowsAreAllSaturatedIsDualIso()
    {
        sample::Settings settings = dualscene::dualSettings(1600);
        settings.subject = sample::Subject::Flat;
        const Frame frame = dualscene::frame(settings, 0);
        PatternSearch search;
        search.add(frame);
        QCOMPARE(search.finding(), Finding::DualIso);
        QCOMPARE(search.pattern().letters(), std::string("LLHH"));
        // But there is nothing to learn about the exposures.
        QVERIFY(!dualiso::measure({&frame, 1}, search.pattern()).has_value());
    }

    void aSaturatedFrameIsUnclear()
    {
        Frame frame = dualscene::frame(dualscene::dualSettings(800), 0);
        std::fill(frame.values.begin(), frame.values.end(), frame.saturation);
        QCOMPARE(findingOf(frame), Finding::Unclear);
    }

    void aDarkFrameIsUnclear()
    {
        sample::Settings settings = dualscene::dualSettings(800);
        settings.subject = sample::Subject::Dark;
        QCOMPARE(findingOf(dualscene::frame(settings, 0)), Finding::Unclear);
    }

    void theExposureDifferenceIsMeasured_data()
    {
        QTest::addColumn<int>("highIso");
        QTest::addColumn<int>("bits");
        for (const int highIso : {400, 800, 1600})
            for (const int bits : {10, 12, 14})
                QTest::addRow("100/%d, %d bits", highIso, bits) << highIso << bits;
    }

    void theExposureDifferenceIsMeasured()
    {
        QFETCH(int, highIso);
        QFETCH(int, bits);
        sample::Settings settings = dualscene::dualSettings(highIso);
        settings.bits = bits;
        const Frame frame = dualscene::frame(settings, 0);
        PatternSearch search;
        search.add(frame);
        const auto model = dualiso::measure({&frame, 1}, search.pattern());
        QVERIFY(model.has_value());
        const double expected = highIso / 100.0;
        QVERIFY(isNear(model->exposure.gain, expected, 0.02 * expected));
        QVERIFY(isNear(model->exposure.offset / model->exposure.gain, 0, 0.7));
    }

    void differentBlackLevelsOfTheRowsAreMeasured()
    {
        Frame frame = dualscene::frame(dualscene::dualSettings(800), 0);
        const dualiso::RowPattern pattern{{false, false, true, true}};
        for (int y = 0; y < frame.height; ++y)
            for (float &value : frame.row(y))
                value += pattern.isHigh(y) ? 40.0F : 0.0F;
        const auto model = dualiso::measure({&frame, 1}, pattern);
        QVERIFY(model.has_value());
        QVERIFY(isNear(model->exposure.offset, 40, 5));
        QVERIFY(isNear(model->exposure.gain, 8, 0.16));
    }

    void framesWithoutAnythingToCompareHaveNoModel()
    {
        Frame frame(64, 64);
        frame.saturation = 12952;
        QVERIFY(!dualiso::measure({&frame, 1}, {{false, false, true, true}}).has_value());
    }

    void noiseIsMeasuredForEachKindOfRows()
    {
        const Frame frame = dualscene::frame(dualscene::dualSettings(800), 0);
        const auto model = dualiso::measure({&frame, 1}, {{false, false, true, true}});
        QVERIFY(model.has_value());
        // The sample sensor's: 6 levels and 1.7 of column offsets at ISO 100, 8.2 at ISO 800.
        QVERIFY(isNear(std::sqrt(model->lowNoise.readVariance), 6.2, 1.0));
        QVERIFY(isNear(std::sqrt(model->highNoise.readVariance), 8.2, 3.0));
    }

    void saturationBelowTheWhiteLevelIsNoticed()
    {
        Frame frame = dualscene::frame(dualscene::dualSettings(800), 0);
        const dualiso::RowPattern pattern{{false, false, true, true}};
        for (int y = 0; y < frame.height; ++y)
            for (float &value : frame.row(y))
                value = pattern.isHigh(y) ? std::min(value, 11000.0F) : value;
        const auto model = dualiso::measure({&frame, 1}, pattern);
        QVERIFY(model.has_value());
        QVERIFY(model->clippedFrom < 11000);
        QVERIFY(model->clippedFrom > 10000);
    }
};

FILMWRIGHT_TEST(TestDualIsoModel, QCoreApplication)
#include "tst_dualisomodel.moc"
