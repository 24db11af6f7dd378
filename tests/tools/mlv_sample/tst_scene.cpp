// SPDX-License-Identifier: MIT
// The filmed frames: colours, exposures, noise and what calibration can undo.
#include "levels.h"

#include "mlv_sample/camera.h"
#include "mlv_sample/frames.h"

#include "support/testprogram.h"

#include <QTest>

#include <cmath>
#include <vector>

namespace {

constexpr int width = 192;
constexpr int height = 108;

sample::Settings settings()
{
    sample::Settings settings;
    settings.width = width;
    settings.height = height;
    return settings;
}

std::size_t at(int x, int y)
{
    return static_cast<std::size_t>(y) * width + static_cast<std::size_t>(x);
}

/// Frames averaged, black subtracted.
std::vector<double> average(const sample::Settings &settings, int frames)
{
    sample::FrameMaker maker(settings);
    std::vector<double> sum(at(0, height));
    for (int i = 0; i < frames; ++i) {
        const auto &samples = maker.make(i);
        for (std::size_t k = 0; k < sum.size(); ++k)
            sum[k] += (samples[k] - black) / static_cast<double>(frames);
    }
    return sum;
}

/// The means of the red, green and blue samples in the middle of an area.
sample::Rgb meanOf(const std::vector<double> &frame, const sample::Area &area)
{
    sample::Rgb sum{};
    std::array<int, 3> count{};
    for (int y = static_cast<int>(area.top * height) + 2; y < area.bottom * height - 2; ++y) {
        for (int x = static_cast<int>(area.left * width) + 2; x < area.right * width - 2; ++x) {
            const auto filter = static_cast<std::size_t>((x & 1) + (y & 1));
            sum[filter] += frame[at(x, y)];
            ++count[filter];
        }
    }
    for (std::size_t i = 0; i < 3; ++i)
        sum[i] /= count[i];
    return sum;
}

double deviation(const std::vector<double> &one, const std::vector<double> &other)
{
    double sum = 0;
    for (std::size_t i = 0; i < one.size(); ++i)
        sum += (one[i] - other[i]) * (one[i] - other[i]);
    return std::sqrt(sum / static_cast<double>(one.size()));
}

} // namespace

class TestScene : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void patchesHaveTheirColours()
    {
        sample::Settings perfect = settings();
        perfect.perfect = true;
        const auto frame = average(perfect, 1);
        sample::Settings wall = perfect;
        wall.subject = sample::Subject::Flat;
        const auto flat = average(wall, 1);

        const sample::Rgb reference = sample::cameraColour({1, 1, 1});
        for (const sample::Patch &patch : sample::colourPatches()) {
            const sample::Rgb expected = sample::cameraColour(
                {sample::linearFromSrgb(patch.srgb[0]), sample::linearFromSrgb(patch.srgb[1]),
                 sample::linearFromSrgb(patch.srgb[2])});
            const sample::Rgb seen = meanOf(frame, patch.area);
            const sample::Rgb wallSeen = meanOf(flat, patch.area);
            for (std::size_t i = 0; i < 3; ++i) {
                // The wall is lit by 0.5 of saturation, the chart's white by 0.55.
                const double share = seen[i] / wallSeen[i] * 0.5 / 0.55;
                QVERIFY(std::abs(share - expected[i] / reference[i]) < 0.01);
            }
        }
    }

    void greyStepsHalveTheLight()
    {
        sample::Settings perfect = settings();
        perfect.perfect = true;
        sample::Settings wall = perfect;
        wall.subject = sample::Subject::Flat;
        const auto frame = average(perfect, 1);
        const auto flat = average(wall, 1);
        const auto light = [&](int step) {
            const sample::Area area = sample::greyStep(step);
            return meanOf(frame, area)[1] / meanOf(flat, area)[1];
        };
        for (int step = 1; step < 7; ++step)
            QVERIFY(std::abs(light(step - 1) / light(step) - 2) < 0.05);
    }

    void averagedDarksTakeOutHotPixelsAndOffsets()
    {
        sample::Settings perfect = settings();
        perfect.perfect = true;
        sample::Settings dark = settings();
        dark.subject = sample::Subject::Dark;

        const auto truth = average(perfect, 1);
        sample::Settings oneFrame = settings();
        const auto clip = average(oneFrame, 1);
        const auto offsets = average(dark, 32);
        std::vector<double> calibrated = clip;
        for (std::size_t i = 0; i < clip.size(); ++i)
            calibrated[i] -= offsets[i];
        // Dark areas, where the noise of light doesn't hide the pattern.
        const auto darkPart = [](const std::vector<double> &frame) {
            return std::vector<double>(frame.begin() + static_cast<std::ptrdiff_t>(at(0, 82)),
                                       frame.begin() + static_cast<std::ptrdiff_t>(at(0, 92)));
        };
        QVERIFY(deviation(darkPart(calibrated), darkPart(truth)) <
                deviation(darkPart(clip), darkPart(truth)));
        const auto hottest = std::max_element(offsets.begin(), offsets.end());
        QVERIFY(*hottest > 200);
        const auto hotIndex = static_cast<std::size_t>(hottest - offsets.begin());
        QVERIFY(std::abs(calibrated[hotIndex] - truth[hotIndex]) < 200);
    }

    void aFlatHasTheLensShadingOfTheClip()
    {
        sample::Settings wall = settings();
        wall.subject = sample::Subject::Flat;
        const auto flat = average(wall, 16);
        sample::Settings perfect = settings();
        perfect.perfect = true;
        const auto clip = average(perfect, 1);

        // The backdrop in the corner and in the middle, before and after division.
        const sample::Area corner{0.0, 0.0, 0.028, 0.2};
        const sample::Area middle{0.47, 0.45, 0.52, 0.70};
        const double before = meanOf(clip, corner)[1] / meanOf(clip, middle)[1];
        const double after = before * meanOf(flat, middle)[1] / meanOf(flat, corner)[1];
        QVERIFY(before < 0.8);
        QVERIFY(std::abs(after - 1) < 0.01);
    }

    void dualIsoRowsAlternateInPairs_data()
    {
        QTest::addColumn<int>("phase");
        for (int phase = 0; phase < 4; ++phase)
            QTest::addRow("low pair from row %d", phase) << phase;
    }

    void dualIsoRowsAlternateInPairs()
    {
        QFETCH(int, phase);
        sample::Settings dual = settings();
        dual.perfect = true;
        dual.highIso = 800;
        dual.dualIsoPhase = phase;
        sample::Settings single = settings();
        single.perfect = true;
        const auto both = average(dual, 1);
        const auto low = average(single, 1);
        for (int y = 0; y < height; ++y) {
            const bool highRow = (y + 4 - phase) % 4 >= 2;
            for (int x = 0; x < width; ++x) {
                const double light = low[at(x, y)];
                const double expected =
                    highRow ? std::min(8 * light, static_cast<double>(white - black)) : light;
                QVERIFY(std::abs(both[at(x, y)] - expected) <= (highRow ? 5 : 0));
            }
        }
    }

    void everyOtherFrameOfAnHdrRecordingIsBrighter()
    {
        sample::Settings hdr = settings();
        hdr.perfect = true;
        hdr.hdrStops = 2;
        sample::FrameMaker maker(hdr);
        const std::size_t grey = at(100, 60);
        const int normal = maker.make(0)[grey] - black;
        const int bright = maker.make(1)[grey] - black;
        QVERIFY(normal > 100);
        QVERIFY(std::abs(bright - 4 * normal) <= 2);
        QCOMPARE(maker.make(2)[grey] - black, normal);
    }

    void noiseGrowsWithSensitivityButLessThanTheGain()
    {
        const auto darkNoise = [](int iso) {
            sample::Settings dark = settings();
            dark.subject = sample::Subject::Dark;
            dark.iso = iso;
            sample::FrameMaker maker(dark);
            const std::vector<quint16> first = maker.make(0);
            const std::vector<quint16> &second = maker.make(1);
            return deviation({first.begin(), first.end()}, {second.begin(), second.end()}) /
                   std::sqrt(2.0);
        };
        const double low = darkNoise(100);
        const double high = darkNoise(800);
        QVERIFY(std::abs(low - 6.0) < 0.5);
        QVERIFY(high > low);
        QVERIFY(high < 2 * low);
    }

    void aFrameDoesNotDependOnThoseMadeBefore()
    {
        sample::FrameMaker inOrder(settings());
        inOrder.make(0);
        inOrder.make(1);
        const std::vector<quint16> expected = inOrder.make(2);
        sample::FrameMaker alone(settings());
        QCOMPARE(alone.make(2), expected);
    }
};

FILMWRIGHT_TEST(TestScene, QCoreApplication)
#include "tst_scene.moc"
