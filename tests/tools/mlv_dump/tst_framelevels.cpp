// SPDX-License-Identifier: MIT
#include "mlv_dump/framelevels.h"

#include "mlv_sample/random.h"
#include "raw/samples.h"
#include "recordingbuilder.h"
#include "support/testprogram.h"

#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <functional>

using mlvdump::frameLevels;
using mlvdump::LevelChoice;

namespace {

constexpr int width = 640;
constexpr int height = 400;
constexpr int recordedWhite = 16200; // of 14 bits, what recorders write by default

constexpr LevelChoice automatic{LevelChoice::Kind::Auto, 0};
constexpr LevelChoice recorded{LevelChoice::Kind::Recorded, 0};

constexpr LevelChoice given(int level)
{
    return {LevelChoice::Kind::Given, level};
}

/// Light that falls on a sensor: green reaches the end of its 14 bits at 1.
using Scene = std::function<double(double x, double y)>;

/// The camera in front of a scene.
struct Camera
{
    int bits = 14;
    int black = 2048;   ///< of 14 bits
    int clip = 16383;   ///< the sensor's end, of 14 bits
    double gain = 1;    ///< more noise for the same level
    double scatter = 0; ///< of the sensor's end from pixel to pixel, levels of 14 bits
    double red = 0.55;  ///< sensitivities beside green
    double blue = 0.7;
    double cut = 1e9; ///< light beyond it doesn't reach the sensor
};

QByteArray frame(const Scene &scene, const Camera &camera, sample::Random &random)
{
    std::vector<std::uint16_t> samples(std::size_t{width} * height);
    const double scale = std::ldexp(1.0, camera.bits - 14);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const bool isGreen = x % 2 != y % 2;
            const double sensitivity = isGreen ? 1 : y % 2 == 0 ? camera.red : camera.blue;
            const double light = sensitivity *
                                 std::min(camera.cut, scene(1.0 * x / width, 1.0 * y / height)) *
                                 14000;
            const double noise = std::sqrt(36 + camera.gain * light / 4.6);
            const double scatter = camera.scatter > 0 ? camera.scatter * random.normal() : 0;
            const double level =
                std::min(camera.black + light + noise * random.normal(), camera.clip + scatter);
            samples[static_cast<std::size_t>(y * width + x)] =
                static_cast<std::uint16_t>(std::clamp(level, 0.0, 16383.0) * scale);
        }
    }
    QByteArray packed(static_cast<qsizetype>(raw::packedSize(samples.size(), camera.bits)), '\0');
    raw::packSamples(
        samples, camera.bits, raw::WordOrder::LittleEndian,
        std::as_writable_bytes(std::span(packed.data(), static_cast<std::size_t>(packed.size()))));
    return packed;
}

RecordingBuilder recording(int bits, int black, const QList<QByteArray> &frames,
                           std::uint32_t model = 1)
{
    auto info = RecordingBuilder::rawInfo();
    info.width = width;
    info.height = height;
    info.bitsPerSample = bits;
    info.blackLevel = black >> (14 - bits);
    info.whiteLevel = recordedWhite >> (14 - bits);
    RecordingBuilder builder;
    builder.add(mlv::blocktype::rawInfo, info);
    builder.add(mlv::blocktype::identity, mlv::Identity{{"Camera"}, model, {}});
    for (qsizetype i = 0; i < frames.size(); ++i)
        builder.addFrameData(static_cast<std::uint32_t>(i), frames.at(i));
    return builder;
}

double wall(double, double)
{
    return 0.8;
}

double gradient(double x, double y)
{
    return 0.1 + 0.75 * x * (0.9 + 0.1 * y);
}

/// A panel that is everywhere as bright, before something dark.
double panel(double x, double y)
{
    return x > 0.3 && x < 0.6 && y > 0.2 && y < 0.7 ? 0.9 : 0.15;
}

double vignette(double x, double y)
{
    return 0.85 - 0.4 * ((x - 0.5) * (x - 0.5) + (y - 0.5) * (y - 0.5));
}

double sun(double x, double y)
{
    const double distance = std::hypot(x - 0.6, y - 0.4);
    return 0.05 + 0.85 * std::exp(-distance * distance * 30) + 0.05 * (1 - y);
}

/// Most frames are of it, so its light is computed once.
double texture(double x, double y)
{
    static const std::vector<double> light = [] {
        std::vector<double> result;
        for (int row = 0; row < height; ++row) {
            const double down = 1.0 * row / height;
            for (int column = 0; column < width; ++column) {
                const double right = 1.0 * column / width;
                result.push_back(0.45 + 0.2 * std::sin(right * 900) * std::cos(down * 700) +
                                 0.2 * std::sin(right * 40 + down * 30));
            }
        }
        return result;
    }();
    return light[static_cast<std::size_t>(std::lround(y * height) * width +
                                          std::lround(x * width))];
}

double darkness(double, double)
{
    return 0;
}

/// A few points of light, brighter than the sensor can tell.
double stars(double x, double y)
{
    const int column = static_cast<int>(x * width);
    const int row = static_cast<int>(y * height);
    return column % 211 == 7 && row % 97 == 5 ? 3 : 0.02;
}

double window(double x, double y)
{
    return x > 0.55 && x < 0.85 && y > 0.1 && y < 0.5 ? 2.5 : gradient(x, y);
}

double lamp(double x, double y)
{
    return std::hypot(x - 0.3, y - 0.3) < 0.04 ? 4 : 0.3 * gradient(x, y);
}

double risenSun(double x, double y)
{
    return 4 * sun(x, y);
}

struct Named
{
    const char *name;
    Scene scene;
};

} // namespace

class TestFrameLevels : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void clippedHighlightsTellTheWhiteLevel_data();
    void clippedHighlightsTellTheWhiteLevel();
    void withoutClippingTheRecordedWhiteLevelHolds_data();
    void withoutClippingTheRecordedWhiteLevelHolds();
    void drawnAreasAreNoClipping();
    void anotherFrameThatGoesHigherSpeaksAgainstClipping();
    void blackLevelOfZeroIsTheCamerasOwn_data();
    void blackLevelOfZeroIsTheCamerasOwn();
    void blackThatWasSubtractedIsZero();
    void levelsCanBeGivenOrLeftAlone();

private:
    mlvdump::FrameLevels levelsOf(const RecordingBuilder &builder,
                                  const LevelChoice &black = automatic,
                                  const LevelChoice &white = automatic) const
    {
        const mlv::Recording opened(
            builder.write(m_folder.filePath(QStringLiteral("a.MLV"))).toStdString());
        return frameLevels(opened, mlv::frameFormat(*opened.rawInfo()), black, white, 2);
    }

    QTemporaryDir m_folder;
    sample::Random m_random{1};
};

void TestFrameLevels::clippedHighlightsTellTheWhiteLevel_data()
{
    QTest::addColumn<Scene>("scene");
    QTest::addColumn<Camera>("camera");
    QTest::addColumn<int>("otherFrames");
    const auto row = [](const char *name, const Scene &scene, const Camera &camera,
                        int otherFrames = 0) {
        QTest::addRow("%s, %d bits, clip at %d, gain %g, scatter %g, %d other frames", name,
                      camera.bits, camera.clip, camera.gain, camera.scatter, otherFrames)
            << scene << camera << otherFrames;
    };
    for (const int bits : {10, 12, 14}) {
        for (const int clip : {12500, 13500, 14500, 15000, 15400, 15800})
            row("window", window, {.bits = bits, .clip = clip});
        row("lamp", lamp, {.bits = bits, .clip = 15000});
        row("sun", risenSun, {.bits = bits, .clip = 15000, .gain = 4});
        row("green alone", window, {.bits = bits, .clip = 15000, .red = 0.3, .blue = 0.3});
        row("blue alone", window, {.bits = bits, .clip = 13500, .red = 0.2, .blue = 2, .cut = 0.7});
        row("noise at the end", window, {.bits = bits, .clip = 15000, .gain = 16, .scatter = 1.5});
        row("in one frame of 200", lamp, {.bits = bits, .clip = 15000}, 199);
    }
    row("high sensitivity", window, {.clip = 13500, .gain = 64});
    row("early camera", window, {.black = 1024, .clip = 15600});
    row("red alone", window, {.clip = 15000, .red = 2, .blue = 0.3, .cut = 0.7});
    row("sun, scattered end", risenSun, {.clip = 15800, .gain = 2, .scatter = 1});
}

void TestFrameLevels::clippedHighlightsTellTheWhiteLevel()
{
    QFETCH(const Scene, scene);
    QFETCH(const Camera, camera);
    QFETCH(const int, otherFrames);
    QList<QByteArray> frames(otherFrames, frame(texture, camera, m_random));
    frames.insert(otherFrames / 3, frame(scene, camera, m_random));
    const auto levels = levelsOf(recording(camera.bits, camera.black, frames));
    const int clip = camera.clip >> (14 - camera.bits);
    const int found = levels.format.whiteLevel;
    // A level too high by 1 in 200 leaves the channels of clipped white within 2 of 255.
    QVERIFY2(found <= clip && found >= clip - (8 >> (14 - camera.bits)) - 1,
             qPrintable(QStringLiteral("%1 instead of %2").arg(found).arg(clip)));
    QCOMPARE(levels.remarks.size(), std::size_t{1});
}

void TestFrameLevels::withoutClippingTheRecordedWhiteLevelHolds_data()
{
    QTest::addColumn<Scene>("scene");
    QTest::addColumn<Camera>("camera");
    const Named scenes[] = {{"wall", wall},         {"gradient", gradient}, {"panel", panel},
                            {"vignette", vignette}, {"sun", sun},           {"texture", texture},
                            {"darkness", darkness}, {"stars", stars}};
    for (const auto &[name, scene] : scenes) {
        for (const int bits : {10, 12, 14})
            QTest::addRow("%s, %d bits", name, bits) << scene << Camera{.bits = bits};
        QTest::addRow("%s, high sensitivity", name) << scene << Camera{.gain = 32};
        QTest::addRow("%s, little noise", name) << scene << Camera{.gain = 0.25};
    }
}

void TestFrameLevels::withoutClippingTheRecordedWhiteLevelHolds()
{
    QFETCH(const Scene, scene);
    QFETCH(const Camera, camera);
    const QByteArray one = frame(scene, camera, m_random);
    const QByteArray other = frame(scene, camera, m_random);
    const auto levels = levelsOf(recording(camera.bits, camera.black, {one, other, one}));
    QCOMPARE(levels.format.whiteLevel, recordedWhite >> (14 - camera.bits));
    QVERIFY(levels.remarks.empty());
}

/// Test charts have areas of one level, which no sensor gives.
void TestFrameLevels::drawnAreasAreNoClipping()
{
    Camera exact;
    exact.gain = 0;
    const auto steps = [](double x, double) { return 0.1 * std::floor(x * 10); };
    sample::Random random{2};
    Camera noiseless = exact;
    noiseless.red = noiseless.blue = 1;
    for (const Camera &camera : {exact, noiseless}) {
        std::vector<std::uint16_t> samples;
        QByteArray chart = frame(steps, camera, random);
        QCOMPARE(levelsOf(recording(14, 2048, {chart})).format.whiteLevel, recordedWhite);
    }
}

void TestFrameLevels::anotherFrameThatGoesHigherSpeaksAgainstClipping()
{
    Camera cut;
    cut.clip = 13500;
    const QByteArray clipped = frame(window, cut, m_random);
    const QByteArray brighter = frame(sun, Camera{.red = 1.1}, m_random);
    QCOMPARE(levelsOf(recording(14, 2048, {clipped, brighter})).format.whiteLevel, recordedWhite);
}

void TestFrameLevels::blackLevelOfZeroIsTheCamerasOwn_data()
{
    QTest::addColumn<int>("bits");
    QTest::addColumn<quint32>("model");
    QTest::addColumn<int>("black");
    QTest::addColumn<int>("expected");
    QTest::newRow("14 bits") << 14 << 1U << 2048 << 2048;
    QTest::newRow("12 bits") << 12 << 1U << 2048 << 512;
    QTest::newRow("10 bits") << 10 << 1U << 2048 << 128;
    QTest::newRow("5D Mark II") << 14 << 0x80000218U << 1024 << 1024;
    QTest::newRow("50D") << 14 << 0x80000261U << 1024 << 1024;
    QTest::newRow("500D") << 12 << 0x80000252U << 1024 << 256;
}

void TestFrameLevels::blackLevelOfZeroIsTheCamerasOwn()
{
    QFETCH(const int, bits);
    QFETCH(const quint32, model);
    QFETCH(const int, black);
    QFETCH(const int, expected);
    const QByteArray picture = frame(texture, Camera{.bits = bits, .black = black}, m_random);
    const auto levels = levelsOf(recording(bits, 0, {picture}, model));
    QCOMPARE(levels.format.blackLevel, expected);
    QCOMPARE(levels.remarks.size(), std::size_t{1});
    // A level between the usual ones stands.
    const auto other = levelsOf(recording(bits, 1600, {picture}, model));
    QCOMPARE(other.format.blackLevel, 1600 >> (14 - bits));
}

void TestFrameLevels::blackThatWasSubtractedIsZero()
{
    const QByteArray picture = frame(sun, Camera{.black = 0}, m_random);
    const auto levels = levelsOf(recording(14, 0, {picture}));
    QCOMPARE(levels.format.blackLevel, 0);
    QVERIFY(levels.remarks.empty());
}

void TestFrameLevels::levelsCanBeGivenOrLeftAlone()
{
    const QByteArray picture = frame(window, Camera{.clip = 15000}, m_random);
    const auto builder = recording(14, 0, {picture});
    const auto alone = levelsOf(builder, recorded, recorded);
    QCOMPARE(alone.format.blackLevel, 0);
    QCOMPARE(alone.format.whiteLevel, recordedWhite);
    const auto other = levelsOf(builder, given(1000), given(14000));
    QCOMPARE(other.format.blackLevel, 1000);
    QCOMPARE(other.format.whiteLevel, 14000);
    const auto impossible = levelsOf(builder, given(65535), given(0));
    QCOMPARE(impossible.format.blackLevel, 16382);
    QCOMPARE(impossible.format.whiteLevel, 16383);
    QVERIFY(impossible.remarks.empty());
}

FILMWRIGHT_TEST(TestFrameLevels, QCoreApplication)
#include "tst_framelevels.moc"
