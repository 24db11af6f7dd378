// SPDX-License-Identifier: MIT
// The blended picture against the scene's truth.
#include "cr2hdr/blending.h"
#include "dualscene.h"

#include "support/testprogram.h"

#include <QTest>

#include <cmath>

using dualiso::Frame;

namespace {

constexpr std::array<bool, 4> lowRows{true, true, false, false};
constexpr double fullScale = 12952;

Frame blended(const Frame &frame, int threads = 1)
{
    const auto model = dualiso::measure({&frame, 1}, {{false, false, true, true}});
    Frame result = frame;
    dualiso::blend(result, model.value(), threads);
    return result;
}

void addIsoPairs()
{
    QTest::addColumn<int>("highIso");
    for (const int highIso : {400, 800, 1600})
        QTest::addRow("100/%d", highIso) << highIso;
}

} // namespace

class TestBlending : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void shadowsHaveLessNoiseThanTheLowRows_data() { addIsoPairs(); }

    void shadowsHaveLessNoiseThanTheLowRows()
    {
        QFETCH(int, highIso);
        const auto settings = dualscene::dualSettings(highIso);
        const Frame frame = dualscene::frame(settings, 0);
        const Frame truth = dualscene::truth(settings, 0);
        const Frame result = blended(frame);
        for (const int step : {9, 10, 11}) { // 9 to 11 stops below white
            const sample::Area area = sample::greyStep(step);
            const double before = dualscene::deviation(frame, truth, area, lowRows);
            const double after = dualscene::deviation(result, truth, area);
            QVERIFY2(std::log2(before / after) >= 1.5,
                     qPrintable(QStringLiteral("step %1: %2 before, %3 after")
                                    .arg(step)
                                    .arg(before)
                                    .arg(after)));
        }
    }

    void highlightsAreThoseOfTheLowRows_data() { addIsoPairs(); }

    void highlightsAreThoseOfTheLowRows()
    {
        QFETCH(int, highIso);
        const auto settings = dualscene::dualSettings(highIso);
        const Frame truth = dualscene::truth(settings, 0);
        const Frame result = blended(dualscene::frame(settings, 0));
        const sample::Area white = sample::greyStep(0);
        const float green = truth.row(116)[41];
        QVERIFY(green > fullScale / (highIso / 100.0)); // more than the high rows can hold
        QVERIFY(dualscene::deviation(result, truth, white) < 0.01 * fullScale);
    }

    void theMeanErrorIsSmall_data() { addIsoPairs(); }

    void theMeanErrorIsSmall()
    {
        QFETCH(int, highIso);
        const auto settings = dualscene::dualSettings(highIso);
        const Frame truth = dualscene::truth(settings, 0);
        const Frame result = blended(dualscene::frame(settings, 0));
        double sum = 0;
        for (std::size_t i = 0; i < truth.values.size(); ++i)
            sum += std::abs(static_cast<double>(result.values[i] - truth.values[i]));
        QVERIFY(sum / static_cast<double>(truth.values.size()) < 0.01 * fullScale);
    }

    void noRowPatternIsLeft_data() { addIsoPairs(); }

    void noRowPatternIsLeft()
    {
        QFETCH(int, highIso);
        const auto settings = dualscene::dualSettings(highIso);
        const Frame frame = dualscene::frame(settings, 0);
        const Frame truth = dualscene::truth(settings, 0);
        QVERIFY(dualscene::patternEnergy(blended(frame), truth) <
                0.05 * dualscene::patternEnergy(frame, truth));
    }

    void midTonesKeepTheirFullResolution()
    {
        // A sawtooth of rows that interpolation can't know, where neither exposure saturates.
        Frame frame = dualscene::frame(dualscene::dualSettings(800), 0);
        const auto model = dualiso::measure({&frame, 1}, {{false, false, true, true}});
        QVERIFY(model.has_value());
        Frame truth(frame.width, frame.height);
        for (int y = 0; y < frame.height; ++y) {
            const float light = y / 2 % 3 == 0 ? 900.0F : 500.0F;
            for (std::size_t x = 0; x < static_cast<std::size_t>(frame.width); ++x) {
                truth.row(y)[x] = light;
                frame.row(y)[x] = model->pattern.isHigh(y)
                                      ? light * model->exposure.gain + model->exposure.offset
                                      : light;
            }
        }
        dualiso::blend(frame, *model, 1);
        const sample::Area everywhere{0, 0, 1, 1};
        QVERIFY(dualscene::deviation(frame, truth, everywhere) < 10);
    }

    void theEdgeOfASaturatedAreaHasNoFalseColours()
    {
        const dualiso::Model model{
            {{false, false, true, true}}, {8, 0}, 12500, {36, 0.2F}, {64, 2}};
        const std::array<float, 3> white{2800, 7000, 5000}; // 1600 saturates a high row
        constexpr int edge = 30;                            // a high row
        Frame frame(64, 64);
        frame.saturation = fullScale;
        Frame truth = frame;
        for (int y = 0; y < frame.height; ++y) {
            // The row at the edge is 30 % white; red and blue show it, green is saturated there.
            const float share = y < edge ? 1.0F : (y == edge ? 0.3F : 0.0F);
            for (int x = 0; x < frame.width; ++x) {
                const auto filter = static_cast<std::size_t>((x & 1) + (y & 1));
                const float light = white[filter] * (0.18F + share * 0.82F);
                truth.row(y)[static_cast<std::size_t>(x)] = light;
                frame.row(y)[static_cast<std::size_t>(x)] =
                    model.pattern.isHigh(y) ? std::min(8 * light, frame.saturation) : light;
            }
        }
        dualiso::blend(frame, model, 1);
        for (std::size_t x = 8; x < 56; ++x)
            QVERIFY(std::abs(frame.row(edge)[x] - truth.row(edge)[x]) < 0.05F * truth.row(edge)[x]);
    }

    void hotPixelsLeaveNoSpots()
    {
        const auto settings = dualscene::dualSettings(800);
        Frame frame = dualscene::frame(settings, 0);
        const Frame truth = dualscene::truth(settings, 0);
        frame.row(24)[30] = 9000; // in a patch, in a low and in a high row
        frame.row(26)[38] = 9000;
        const Frame result = blended(frame);
        for (int y = 20; y < 30; ++y)
            for (std::size_t x = 25; x < 45; ++x)
                QVERIFY(std::abs(result.row(y)[x] - truth.row(y)[x]) < 120);
    }

    void theResultDoesNotDependOnTheNumberOfThreads()
    {
        const Frame frame = dualscene::frame(dualscene::dualSettings(800), 0);
        QCOMPARE(blended(frame, 3).values, blended(frame, 1).values);
    }
};

FILMWRIGHT_TEST(TestBlending, QCoreApplication)
#include "tst_blending.moc"
