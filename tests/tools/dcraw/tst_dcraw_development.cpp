// SPDX-License-Identifier: MIT
// What happens to a frame in memory, on each instruction set that the processor has.
#include "dcraw/instructionset.h"
#include "plaindevelopment.h"

#include "support/testprogram.h"

#include <QTest>

#include <cmath>
#include <cstring>
#include <functional>
#include <mutex>
#include <random>
#include <stdexcept>

using dcraw::Development;
using dcraw::Highlights;
using dcraw::InstructionSet;
using dcraw::Interpolation;
using plain::Samples;

namespace {

constexpr int width = 40;
constexpr int height = 32;

class Memory : public dcraw::PixelSink
{
public:
    explicit Memory(const Development &development)
        : bytes(development.outputRowBytes() * static_cast<std::size_t>(development.outputHeight()))
        , rowWrites(static_cast<std::size_t>(development.outputHeight()))
        , m_rowBytes(development.outputRowBytes())
    {
    }

    bool write(int row, std::span<const std::byte> pixels) override
    {
        const std::lock_guard lock(m_mutex);
        const auto first = static_cast<std::size_t>(row);
        std::copy(pixels.begin(), pixels.end(),
                  bytes.begin() + static_cast<std::ptrdiff_t>(first * m_rowBytes));
        for (std::size_t i = 0; i < pixels.size() / m_rowBytes; ++i)
            ++rowWrites[first + i];
        return --rowsUntilRefusal != 0;
    }

    std::vector<std::byte> bytes;
    std::vector<int> rowWrites;
    int rowsUntilRefusal = -1; ///< calls

private:
    std::size_t m_rowBytes;
    std::mutex m_mutex;
};

std::vector<std::uint16_t> toneOf(const std::function<int(int)> &tone)
{
    std::vector<std::uint16_t> values(65536);
    for (int i = 0; i < 65536; ++i)
        values[static_cast<std::size_t>(i)] = static_cast<std::uint16_t>(tone(i));
    return values;
}

/// Writes the colours of the camera, 16 bits, and scales by nothing.
Development unchanged()
{
    Development development;
    development.width = width;
    development.height = height;
    development.pattern = {{{0, 1}, {3, 2}}};
    development.scale = {1, 1, 1, 1};
    development.multipliers = {1, 1, 1};
    development.highlights = Highlights::Leave;
    development.convertsColour = false;
    development.cameraToXyz = {{{0.4F, 0.4F, 0.2F}, {0.2F, 0.7F, 0.1F}, {0, 0.1F, 0.9F}}};
    development.sixteenBits = true;
    development.tone = toneOf([](int value) { return value; });
    return development;
}

struct Result
{
    Result(const Development &development, const std::vector<std::uint16_t> &samples,
           unsigned threads = 1)
        : memory(development)
        , width(static_cast<std::size_t>(development.outputWidth()))
    {
        const Samples rows(samples, development.width);
        isComplete = dcraw::develop(development, rows, memory, threads);
    }

    /// At 16 bits.
    int at(int y, int x, int colour) const
    {
        const std::size_t sample =
            (static_cast<std::size_t>(y) * width + static_cast<std::size_t>(x)) * 3 +
            static_cast<std::size_t>(colour);
        std::uint16_t value = 0;
        std::memcpy(&value, &memory.bytes[2 * sample], sizeof value);
        return value;
    }
    std::array<int, 3> pixel(int y, int x) const { return {at(y, x, 0), at(y, x, 1), at(y, x, 2)}; }

    Memory memory;
    std::size_t width;
    bool isComplete = false;
};

std::vector<std::uint16_t> samplesOf(const std::function<int(int, int)> &sample,
                                     int samplesWidth = width, int samplesHeight = height)
{
    std::vector<std::uint16_t> samples;
    for (int y = 0; y < samplesHeight; ++y)
        for (int x = 0; x < samplesWidth; ++x)
            samples.push_back(static_cast<std::uint16_t>(sample(y, x)));
    return samples;
}

/// Samples that are red, green or blue everywhere, in the pattern of unchanged().
std::vector<std::uint16_t> evenColour(int red, int green, int blue)
{
    return samplesOf([=](int y, int x) {
        return (y + x) % 2 != 0 ? green : y % 2 == 0 ? red : blue;
    });
}

using Pixel = std::array<int, 3>;

/// Random choices of everything, and a scene for them.
struct RandomFrame
{
    explicit RandomFrame(unsigned seed);

    Development development;
    std::vector<std::uint16_t> samples;
};

RandomFrame::RandomFrame(unsigned seed)
{
    std::mt19937 generator(seed);
    const auto whole = [&](int low, int high) {
        return low + static_cast<int>(generator() % static_cast<unsigned>(high - low + 1));
    };
    const auto real = [&](double low, double high) {
        return low + (high - low) * static_cast<double>(generator()) / 4294967296.0;
    };
    constexpr std::array<std::array<std::array<std::uint8_t, 2>, 2>, 4> patterns{
        {{{{0, 1}, {3, 2}}}, {{{2, 3}, {1, 0}}}, {{{1, 0}, {2, 3}}}, {{{3, 2}, {0, 1}}}}};
    Development &d = development;
    d.width = whole(22, 300);
    d.height = whole(22, 300);
    d.pattern = patterns[static_cast<unsigned>(whole(0, 3))];
    d.black = whole(0, 3000);
    const int range = whole(0, 9) == 0 ? 1 : whole(500, 60000);
    d.multipliers = {static_cast<float>(real(0.2, 1)), static_cast<float>(real(0.2, 1)),
                     static_cast<float>(real(0.2, 1))};
    d.multipliers[static_cast<unsigned>(whole(0, 2))] = 1;
    const float secondGreen = static_cast<float>(real(0.2, 1));
    for (unsigned c = 0; c < 4; ++c) {
        const float multiplier = c < 3 ? d.multipliers[c] : secondGreen;
        d.scale[c] = static_cast<float>(multiplier * 65535.0 / range);
    }
    d.interpolation = static_cast<Interpolation>(whole(0, 2));
    if (whole(0, 1) == 0)
        d.interpolation = Interpolation::AdaptiveHomogeneity;
    d.medianPasses = std::max(whole(-6, 2), 0);
    d.highlights = static_cast<Highlights>(std::min(whole(0, 4), 2));
    d.convertsColour = whole(0, 5) != 0;
    for (unsigned row = 0; row < 3; ++row) {
        for (unsigned column = 0; column < 3; ++column) {
            const bool diagonal = row == column;
            d.cameraToOutput[row][column] =
                static_cast<float>(diagonal ? real(0.8, 2) : real(-0.8, 0.4));
            d.cameraToXyz[row][column] =
                static_cast<float>(diagonal ? real(0.5, 1) : real(-0.2, 0.3));
        }
    }
    d.pixelAspect = whole(0, 3) != 0 ? 1 : whole(0, 1) == 0 ? real(0.4, 1) : real(1, 2);
    d.sixteenBits = whole(0, 2) == 0;
    const double limit = real(1000, 65536);
    const int top = d.sixteenBits ? 65535 : 255;
    d.tone = toneOf([&](int value) {
        return static_cast<int>(top * std::pow(std::min(value / limit, 1.0), 0.45));
    });

    const int kind = whole(0, 3);
    const double over = real(0.5, 4);
    const double wavesX = real(0.01, 0.3);
    const double wavesY = real(0.01, 0.3);
    samples = samplesOf(
        [&](int y, int x) {
            const double light =
                kind == 0   ? real(0, 1)
                : kind == 1 ? (x / 7 + y / 5) % 2
                            : over * (0.5 + 0.5 * std::sin(wavesX * x) * std::cos(wavesY * y)) +
                                  real(-0.05, 0.05);
            return std::min(65535.0, d.black + std::clamp(light, -0.01, 1.02) * range);
        },
        d.width, d.height);
}

} // namespace

class TestDevelopment : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        if (QTest::currentDataTag() == nullptr)
            return;
        for (unsigned i = 0; i < dcraw::instructionSetNames.size(); ++i)
            if (qstrcmp(QTest::currentDataTag(), dcraw::instructionSetNames[i]) == 0)
                dcraw::useInstructionSet(static_cast<InstructionSet>(i));
    }

    void cleanup() { dcraw::useInstructionSet(dcraw::bestInstructionSet()); }

    void everyInstructionSetAndNumberOfThreadsComputesTheSame_data() { addInstructionSets(); }

    void everyInstructionSetAndNumberOfThreadsComputesTheSame()
    {
        constexpr std::array<unsigned, 4> threads{1, 2, 3, 8};
        for (unsigned seed = 0; seed < 60; ++seed) {
            const RandomFrame frame(seed);
            const auto expected =
                plain::develop(frame.development, Samples(frame.samples, frame.development.width));
            const Result result(frame.development, frame.samples, threads[seed % threads.size()]);
            QVERIFY2(result.memory.bytes == expected, qPrintable(QString::number(seed)));
            QCOMPARE(result.memory.rowWrites, std::vector<int>(result.memory.rowWrites.size(), 1));
        }
    }

    void evenColourStaysAsItIs_data() { addInstructionSets(); }

    void evenColourStaysAsItIs()
    {
        const Result result(unchanged(), evenColour(1000, 2000, 3000));
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                QCOMPARE(result.pixel(y, x), (Pixel{1000, 2000, 3000}));
    }

    void rowsOfDifferentBrightnessAreInterpolatedAlongTheRows_data() { addInstructionSets(); }

    void rowsOfDifferentBrightnessAreInterpolatedAlongTheRows()
    {
        const auto light = [](int y) { return y / 2 % 2 == 0 ? 1000 : 9000; };
        Development development = unchanged();
        development.pattern = {{{0, 1}, {1, 2}}};
        const Result result(development, samplesOf([&](int y, int) { return light(y); }));
        for (int y = 5; y < height - 5; ++y)
            for (int x = 5; x < width - 5; ++x)
                QCOMPARE(result.at(y, x, 1), light(y));
    }

    void columnsOfDifferentBrightnessAreInterpolatedAlongTheColumns_data() { addInstructionSets(); }

    void columnsOfDifferentBrightnessAreInterpolatedAlongTheColumns()
    {
        const auto light = [](int x) { return x / 2 % 2 == 0 ? 1000 : 9000; };
        const Result result(unchanged(), samplesOf([&](int, int x) { return light(x); }));
        for (int y = 5; y < height - 5; ++y)
            for (int x = 5; x < width - 5; ++x)
                QCOMPARE(result.at(y, x, 1), light(x));
    }

    void theBorderIsTheMeanOfTheNeighboursThatExist()
    {
        // 100 more from column to column, 1000 from row to row.
        const Result result(unchanged(),
                            samplesOf([](int y, int x) { return 1000 * y + 100 * x; }));
        QCOMPARE(result.pixel(0, 0), (Pixel{0, (100 + 1000) / 2, 1100}));
        QCOMPARE(result.pixel(0, 1), (Pixel{(0 + 200) / 2, 100, 1100}));
        QCOMPARE(result.pixel(0, 2), (Pixel{200, (100 + 300 + 1200) / 3, (1100 + 1300) / 2}));
        QCOMPARE(result.pixel(4, 4),
                 (Pixel{4400, (3400 + 4300 + 4500 + 5400) / 4, (3300 + 3500 + 5300 + 5500) / 4}));
    }

    void aSaturatedColourEdgeIsJudgedInMoreThanSixteenBits_data() { addInstructionSets(); }

    void aSaturatedColourEdgeIsJudgedInMoreThanSixteenBits()
    {
        // Patches anywhere between pure red and pure green: their differences reach beyond 32767.
        Development development = unchanged();
        development.cameraToXyz = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
        std::mt19937 generator(1);
        std::array<std::array<int, 200>, 3> patches{};
        for (auto &levels : patches) {
            for (int &level : levels)
                level = static_cast<int>(
                    65535 * std::pow(static_cast<double>(generator() % 1000) / 999.0, 3));
        }
        const auto samples = samplesOf([&](int y, int x) {
            return patches[static_cast<unsigned>(y % 2 + x % 2)]
                          [static_cast<unsigned>(y / 3 * 14 + x / 3)];
        });
        const auto expected = plain::develop(development, Samples(samples, width));
        QVERIFY(Result(development, samples).memory.bytes == expected);
    }

    void whatIsBelowBlackIsDark_data() { addInstructionSets(); }

    void whatIsBelowBlackIsDark()
    {
        Development development = unchanged();
        development.black = 512;
        development.scale = {2, 2, 2, 2};
        QCOMPARE(Result(development, evenColour(100, 512, 612)).pixel(16, 16), (Pixel{0, 0, 200}));
    }

    void lightThatExceedsThirtyTwoBitsIsDark_data() { addInstructionSets(); }

    void lightThatExceedsThirtyTwoBitsIsDark()
    {
        // As the conversion of the processor has it: the lowest number.
        Development development = unchanged();
        development.scale = {65535, 65535, 65535, 65535};
        QCOMPARE(Result(development, evenColour(40000, 1, 30000)).pixel(16, 16),
                 (Pixel{0, 65535, 65535}));
    }

    void clippedColoursWithoutAnyRatioFollowTheStrongest_data() { addInstructionSets(); }

    void clippedColoursWithoutAnyRatioFollowTheStrongest()
    {
        const Result result(rebuilding(), evenColour(32000, 60000, 31999));
        QCOMPARE(result.pixel(16, 16), (Pixel{60000, 60000, 31999}));
    }

    void clippedColoursTakeTheRatioOfTheBlocksBeside_data() { addInstructionSets(); }

    void clippedColoursTakeTheRatioOfTheBlocksBeside()
    {
        // Red is clipped in the right half; in the left one it is 3/4 of green.
        const auto samples = samplesOf([](int y, int x) {
            const bool right = x >= 20;
            return (y + x) % 2 != 0 ? 32000 : y % 2 == 0 ? (right ? 32000 : 24000) : 1000;
        });
        const Result result(rebuilding(), samples);
        // Of the block beside: three neighbours know 3/4, two of them on the diagonal.
        const float ratio = (1.0F * 0.75F + 1.0F * 0.75F + 2.0F * 0.75F + 2) / (4 + 2);
        QCOMPARE(result.at(16, 26, 0), std::max(32000, static_cast<int>(32000 * ratio)));
        const auto expected = plain::develop(rebuilding(), Samples(samples, width));
        QVERIFY(result.memory.bytes == expected);
    }

    void theRestBehindTheLastWholeBlockIsNotRebuilt_data() { addInstructionSets(); }

    void theRestBehindTheLastWholeBlockIsNotRebuilt()
    {
        Development development = rebuilding();
        development.width = 38;
        development.height = 30;
        const auto samples =
            samplesOf([](int y, int x) { return (y + x) % 2 != 0 ? 60000 : 32000; }, 38, 30);
        const Result result(development, samples);
        QCOMPARE(result.at(27, 35, 0), 60000);
        QCOMPARE(result.at(27, 36, 0), 32000);
        QCOMPARE(result.at(28, 35, 0), 32000);
    }

    void blendedGreyBecomesBlack()
    {
        Development development = unchanged();
        development.highlights = Highlights::Blend;
        development.multipliers = {0.5F, 1, 1};
        QCOMPARE(Result(development, evenColour(40000, 40000, 40000)).pixel(16, 16),
                 (Pixel{0, 0, 0}));
        QCOMPARE(Result(development, evenColour(32767, 32767, 32767)).pixel(16, 16),
                 (Pixel{32767, 32767, 32767}));
    }

    void blendingTakesSaturationAndKeepsTheSum()
    {
        Development development = unchanged();
        development.highlights = Highlights::Blend;
        development.multipliers = {0.5F, 1, 1};
        const Pixel pixel = Result(development, evenColour(10000, 60000, 30000)).pixel(16, 16);
        QVERIFY(std::abs(pixel[0] + pixel[1] + pixel[2] - 100000) <= 3);
        QVERIFY(pixel[1] < 60000);
        QVERIFY(pixel[0] > 10000);
    }

    void theMedianRemovesALoneColour()
    {
        Development development = unchanged();
        development.interpolation = Interpolation::HalfSize;
        development.width = 2 * width;
        development.height = 2 * height;
        const auto samples = samplesOf(
            [](int y, int x) {
                return y / 2 == 8 && x / 2 == 9 && y % 2 == 0 && x % 2 == 0 ? 9000 : 500;
            },
            2 * width, 2 * height);
        QCOMPARE(Result(development, samples).pixel(8, 9), (Pixel{9000, 500, 500}));
        development.medianPasses = 1;
        QCOMPARE(Result(development, samples).pixel(8, 9), (Pixel{500, 500, 500}));
    }

    void theMedianLeavesTheOutermostPixels()
    {
        Development development = unchanged();
        development.interpolation = Interpolation::HalfSize;
        development.medianPasses = 3;
        const auto samples = samplesOf([](int y, int x) { return y == 0 && x == 20 ? 9000 : 500; });
        QCOMPARE(Result(development, samples).pixel(0, 10), (Pixel{9000, 500, 500}));
    }

    void anOddEdgeOfHalfSizeIsDarkBeyond()
    {
        Development development = unchanged();
        development.interpolation = Interpolation::HalfSize;
        development.width = 23;
        development.height = 23;
        const Result result(development, samplesOf([](int, int) { return 600; }, 23, 23));
        QCOMPARE(result.pixel(10, 10), (Pixel{600, 600, 600}));
        QCOMPARE(result.pixel(10, 11), (Pixel{600, 300, 0}));
        QCOMPARE(result.pixel(11, 10), (Pixel{600, 300, 0}));
        QCOMPARE(result.pixel(11, 11), (Pixel{600, 0, 0}));
    }

    void rowsAreStretchedByAddedUpPositions()
    {
        Development development = unchanged();
        development.interpolation = Interpolation::HalfSize;
        development.pixelAspect = 0.75;
        const auto samples = samplesOf([](int y, int) { return 1000 * (y / 2); });
        const Result result(development, samples);
        QCOMPARE(development.outputHeight(), 21); // 16 ÷ 0.75, rounded
        QCOMPARE(result.at(0, 3, 0), 0);
        QCOMPARE(result.at(1, 3, 0), 750);
        QCOMPARE(result.at(2, 3, 0), 1500);
        QCOMPARE(result.at(20, 3, 0), 15000); // behind the last row there is none to mix with
    }

    void columnsAreStretchedByTheReciprocal()
    {
        Development development = unchanged();
        development.interpolation = Interpolation::HalfSize;
        development.pixelAspect = 1.25;
        const Result result(development, samplesOf([](int, int x) { return 1000 * (x / 2); }));
        QCOMPARE(development.outputWidth(), 25);
        QCOMPARE(result.at(3, 0, 2), 0);
        QCOMPARE(result.at(3, 1, 2), 800);
        QCOMPARE(result.at(3, 5, 2), 4000);
        QCOMPARE(result.at(3, 24, 2), 19000);
    }

    void eightBitsAreWrittenAsTheToneHasThem_data() { addInstructionSets(); }

    void eightBitsAreWrittenAsTheToneHasThem()
    {
        Development development = unchanged();
        development.sixteenBits = false;
        development.tone = toneOf([](int value) { return std::min(value / 16, 255); });
        const Result result(development, evenColour(160, 320, 60000));
        const std::size_t start = (16 * width + 16) * 3;
        QCOMPARE(static_cast<int>(result.memory.bytes[start]), 10);
        QCOMPARE(static_cast<int>(result.memory.bytes[start + 1]), 20);
        QCOMPARE(static_cast<int>(result.memory.bytes[start + 2]), 255);
    }

    void aRefusedRowEndsTheWork()
    {
        Development development = unchanged();
        development.height = 1000;
        Memory memory(development);
        memory.rowsUntilRefusal = 2;
        const Samples samples(samplesOf([](int, int) { return 500; }, width, 1000), width);
        QVERIFY(!dcraw::develop(development, samples, memory, 2));
        QVERIFY(memory.rowWrites.back() == 0 || memory.rowWrites.front() == 0);
    }

    void whatTheSamplesThrowComesOut()
    {
        class Unreadable : public dcraw::SampleRows
        {
            void read(int, std::span<std::uint16_t>) const override
            {
                throw std::runtime_error("can't be read");
            }
        };
        Memory memory(unchanged());
        for (const unsigned threads : {1U, 3U}) {
            QVERIFY_THROWS_EXCEPTION(std::runtime_error,
                                     dcraw::develop(unchanged(), Unreadable(), memory, threads));
        }
    }

private:
    static void addInstructionSets()
    {
        QTest::addColumn<int>("unused");
        for (unsigned i = 0; i <= static_cast<unsigned>(dcraw::bestInstructionSet()); ++i)
            QTest::newRow(dcraw::instructionSetNames[i]) << 0;
    }

    /// Green is the strongest colour; red and blue are clipped at 32000, half of it.
    static Development rebuilding()
    {
        Development development = unchanged();
        development.highlights = Highlights::Rebuild;
        development.multipliers = {0.5F, 1, 0.5F};
        return development;
    }
};

FILMWRIGHT_TEST(TestDevelopment, QCoreApplication)
#include "tst_dcraw_development.moc"
