// SPDX-License-Identifier: MIT
#include "conversion/mergepixels.h"
#include "mergereference.h"

#include "support/testprogram.h"

#include <QTest>

#include <hwy/targets.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

using filmwright::mergePixels;
using Pixel = std::array<std::uint8_t, 3>;
using Bytes = std::vector<std::uint8_t>;
using DeepSamples = std::vector<std::uint16_t>;

class tst_MergePixels : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();

    void latticePairsEqualTheReference();
    void randomPixelsEqualTheReference();
    void neighbouringValuesEqualTheReference();
    void everyCountEqualsTheReference();
    void resultMayBeTheFirst();
    void deepPixelsEqualTheReference();
    void everyCountOfDeepPixelsEqualsTheReference();
    void deepPixelsHaveTheLookOfShallowOnes();

    void identicalPixelsKeepHueAndSaturation();
    void greysGiveTheirMeanRoundedDown();
    void blackStaysBlack();
    void choiceOfColour_data();
    void choiceOfColour();
};

namespace {

Pixel merged(const Pixel &first, const Pixel &second)
{
    Pixel result;
    mergePixels(first.data(), second.data(), result.data(), 1);
    return result;
}

/// 0: the best again.
void useInstructionSet(std::int64_t target)
{
    hwy::SetSupportedTargetsForTest(target);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

// Fails at the first pixel that differs from the reference with one of the processor's instruction
// sets.
template <typename Samples>
void compareWithReference(const Samples &first, const Samples &second)
{
    const std::size_t count = first.size() / 3;
    Samples expected(first.size());
    mergeReference(first.data(), second.data(), expected.data(), count);
    useInstructionSet(0); // or only the last one would be among those that are supported
    for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
        useInstructionSet(target);
        Samples result(first.size(), 77);
        mergePixels(first.data(), second.data(), result.data(), count);
        if (result == expected)
            continue;
        const auto wrong = std::mismatch(result.begin(), result.end(), expected.begin()).first;
        const auto pixel = (wrong - result.begin()) / 3 * 3;
        const auto text = [pixel](const Samples &samples) {
            const auto *p = samples.data() + pixel;
            return QStringLiteral("(%1, %2, %3)").arg(p[0]).arg(p[1]).arg(p[2]);
        };
        QFAIL(qPrintable(QStringLiteral("%1: %2 and %3 give %4 instead of %5")
                             .arg(QLatin1String(hwy::TargetName(target)), text(first), text(second),
                                  text(result), text(expected))));
    }
}

} // namespace

void tst_MergePixels::cleanup()
{
    useInstructionSet(0);
}

// 16 levels a sample, the bounds of the choice among them, make 4096 colours and 2^24 pairs.
void tst_MergePixels::latticePairsEqualTheReference()
{
    constexpr std::uint8_t levels[16] = {0,   1,   2,   31,  62,  63,  64,  65,
                                         100, 127, 128, 160, 200, 253, 254, 255};
    Bytes colours;
    for (const std::uint8_t red : levels) {
        for (const std::uint8_t green : levels)
            for (const std::uint8_t blue : levels)
                colours.insert(colours.end(), {red, green, blue});
    }
    for (std::size_t i = 0; i < colours.size(); i += 3) {
        Bytes first(colours.size());
        for (std::size_t k = 0; k < first.size(); k += 3)
            std::memcpy(first.data() + k, colours.data() + i, 3);
        compareWithReference(first, colours);
        if (QTest::currentTestFailed())
            return;
    }
}

void tst_MergePixels::randomPixelsEqualTheReference()
{
    std::mt19937 generator(20240611);
    const auto fill = [&](Bytes &bytes) {
        for (std::size_t i = 0; i < bytes.size(); i += 4) {
            const std::uint32_t value = std::uint32_t(generator());
            std::memcpy(bytes.data() + i, &value, 4);
        }
    };
    Bytes first(300000);
    Bytes second(first.size());
    for (int block = 0; block < 100; ++block) { // 10 million pixels
        fill(first);
        fill(second);
        compareWithReference(first, second);
        if (QTest::currentTestFailed())
            return;
    }
}

// Pairs as they come in films: nearly the same colour twice, where the choice hangs by one step.
void tst_MergePixels::neighbouringValuesEqualTheReference()
{
    std::mt19937 generator(7);
    Bytes first(3000000);
    Bytes second(first.size());
    for (std::size_t i = 0; i < first.size(); ++i) {
        const auto value = generator();
        first[i] = std::uint8_t(value);
        second[i] = std::uint8_t(std::clamp(int(value & 0xff) + int(value >> 8 & 3) - 1, 0, 255));
    }
    compareWithReference(first, second);
}

void tst_MergePixels::everyCountEqualsTheReference()
{
    std::mt19937 generator(3);
    for (std::size_t count = 0; count <= 200; ++count) {
        Bytes first(3 * count);
        Bytes second(3 * count);
        std::generate(first.begin(), first.end(), [&] { return std::uint8_t(generator()); });
        std::generate(second.begin(), second.end(), [&] { return std::uint8_t(generator()); });
        compareWithReference(first, second);
        if (QTest::currentTestFailed())
            return;
    }
}

void tst_MergePixels::resultMayBeTheFirst()
{
    std::mt19937 generator(5);
    Bytes first(3 * 1001);
    Bytes second(first.size());
    std::generate(first.begin(), first.end(), [&] { return std::uint8_t(generator()); });
    std::generate(second.begin(), second.end(), [&] { return std::uint8_t(generator()); });
    Bytes expected(first.size());
    mergePixels(first.data(), second.data(), expected.data(), 1001);
    mergePixels(first.data(), second.data(), first.data(), 1001);
    QCOMPARE(first, expected);
}

// Random ones, and pairs of nearly the same colour, where the choice hangs by one step.
void tst_MergePixels::deepPixelsEqualTheReference()
{
    std::mt19937 generator(11);
    DeepSamples first(3000000);
    DeepSamples second(first.size());
    std::generate(first.begin(), first.end(), [&] { return std::uint16_t(generator()); });
    std::generate(second.begin(), second.end(), [&] { return std::uint16_t(generator()); });
    compareWithReference(first, second);
    for (std::size_t i = 0; i < first.size(); ++i)
        second[i] = std::uint16_t(std::clamp(int(first[i]) + int(generator() & 3) - 1, 0, 65535));
    compareWithReference(first, second);
}

void tst_MergePixels::everyCountOfDeepPixelsEqualsTheReference()
{
    std::mt19937 generator(13);
    for (std::size_t count = 0; count <= 100; ++count) {
        DeepSamples first(3 * count);
        DeepSamples second(3 * count);
        std::generate(first.begin(), first.end(), [&] { return std::uint16_t(generator()); });
        std::generate(second.begin(), second.end(), [&] { return std::uint16_t(generator()); });
        compareWithReference(first, second);
        if (QTest::currentTestFailed())
            return;
    }
}

void tst_MergePixels::deepPixelsHaveTheLookOfShallowOnes()
{
    std::mt19937 generator(17);
    Bytes first(30000);
    Bytes second(first.size());
    std::generate(first.begin(), first.end(), [&] { return std::uint8_t(generator()); });
    std::generate(second.begin(), second.end(), [&] { return std::uint8_t(generator()); });
    const auto deepened = [](const Bytes &bytes) {
        DeepSamples samples(bytes.size());
        std::transform(bytes.begin(), bytes.end(), samples.begin(),
                       [](std::uint8_t byte) { return std::uint16_t(257 * byte); });
        return samples;
    };
    const DeepSamples deepFirst = deepened(first);
    const DeepSamples deepSecond = deepened(second);
    DeepSamples deep(first.size());
    mergePixels(deepFirst.data(), deepSecond.data(), deep.data(), first.size() / 3);
    mergePixels(first.data(), second.data(), first.data(), first.size() / 3);
    for (std::size_t i = 0; i < deep.size(); ++i)
        QVERIFY(std::abs(int(deep[i]) - 257 * int(first[i])) <= 257);
}

void tst_MergePixels::identicalPixelsKeepHueAndSaturation()
{
    // Luma 0.299 * 200 + 0.587 * 100 + 0.114 * 50 = 124.2; the others keep their ratio to it.
    const Pixel pixel = {200, 100, 50};
    QCOMPARE(merged(pixel, pixel), (Pixel{124, 62, 31}));
    const Pixel blue = {0, 0, 255};
    QCOMPARE(merged(blue, blue), (Pixel{0, 0, 29}));
}

void tst_MergePixels::greysGiveTheirMeanRoundedDown()
{
    for (int a = 0; a < 256; ++a) {
        for (int b = 0; b < 256; ++b) {
            const auto first = std::uint8_t(a);
            const auto second = std::uint8_t(b);
            const auto mean = std::uint8_t((a + b) / 2);
            QCOMPARE(merged({first, first, first}, {second, second, second}),
                     (Pixel{mean, mean, mean}));
        }
    }
}

void tst_MergePixels::blackStaysBlack()
{
    QCOMPARE(merged({0, 0, 0}, {0, 0, 0}), (Pixel{0, 0, 0}));
}

void tst_MergePixels::choiceOfColour_data()
{
    QTest::addColumn<Pixel>("first");
    QTest::addColumn<Pixel>("second");
    QTest::addColumn<bool>("takesFirst");
    const Pixel red = {100, 50, 50};  // maximum 100, saturation 1/2
    const Pixel blue = {50, 50, 100}; // the same
    const Pixel paleBlue = {80, 50, 100};
    const Pixel deepBlue = {40, 50, 100};
    const Pixel brightDeepBlue = {40, 50, 101};
    QTest::newRow("equal green, equal saturation: first") << red << blue << true;
    QTest::newRow("equal green, second less saturated: first") << red << paleBlue << true;
    QTest::newRow("equal green, second more saturated and no brighter: second")
        << red << deepBlue << false;
    QTest::newRow("equal green, second more saturated but brighter: first")
        << red << brightDeepBlue << true;
    QTest::newRow("equal green, second at 63: first")
        << Pixel{63, 50, 50} << Pixel{10, 50, 63} << true;
    QTest::newRow("equal green, second at 64: second")
        << Pixel{64, 50, 50} << Pixel{10, 50, 64} << false;
    QTest::newRow("less green: second") << red << Pixel{50, 51, 100} << false;
    QTest::newRow("less green but more saturated and no brighter: first")
        << Pixel{100, 40, 40} << Pixel{50, 51, 100} << true;
    QTest::newRow("less green, more saturated but brighter: second")
        << Pixel{101, 40, 40} << Pixel{50, 51, 100} << false;
    QTest::newRow("less green, more saturated but dark: second")
        << Pixel{63, 10, 10} << Pixel{50, 51, 63} << false;
    QTest::newRow("more green: first") << Pixel{100, 51, 50} << blue << true;
}

void tst_MergePixels::choiceOfColour()
{
    QFETCH(Pixel, first);
    QFETCH(Pixel, second);
    QFETCH(bool, takesFirst);
    const Pixel result = merged(first, second);
    // The pixels are told apart by red or blue being the largest.
    QCOMPARE(result[0] > result[2], takesFirst);
}

FILMWRIGHT_TEST(tst_MergePixels, QCoreApplication)
#include "tst_mergepixels.moc"
