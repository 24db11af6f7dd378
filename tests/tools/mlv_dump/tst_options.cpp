// SPDX-License-Identifier: MIT
#include "mlv_dump/options.h"

#include "support/testprogram.h"

#include <QTest>

#include <vector>

using mlvdump::Mode;
using mlvdump::Options;

namespace {

Options parsed(const std::vector<std::string_view> &arguments)
{
    return mlvdump::parseOptions(arguments);
}

constexpr auto noLimit = std::numeric_limits<std::uint64_t>::max();

} // namespace

class TestOptions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void metadataRun();
    void frameRun();
    void averagingRun();
    void subtractionRun();
    void optionsMayFollowTheRecording();
    void metadataOnlyWins();
    void withoutPrefixTheRecordingsNameIsUsed();
    void rangeOfFrames_data();
    void rangeOfFrames();
    void levelsAndMatrix();
    void repairOfPixelsAndColumns();
    void developmentOfTheFrames();
    void wrongArgumentsAreRefused_data();
    void wrongArgumentsAreRefused();
    void refusalKnowsOfFrameRuns();
    void nameThatLooksLikeAnOption();
    void helpAndVersionNeedNoRecording();
};

void TestOptions::metadataRun()
{
    const auto options = parsed({"-m", "-v", "a.MLV"});
    QVERIFY(options.mode == Mode::Report);
    QVERIFY(options.verbose);
    QVERIFY(options.input == "a.MLV");
}

void TestOptions::frameRun()
{
    const auto options = parsed({"--dng", "a.MLV", "--no-cs", "-f", "0-0", "-s", "dark.mlv", "-t",
                                 "flat.mlv", "-o", "/t/tmp"});
    QVERIFY(options.mode == Mode::Frames);
    QVERIFY(options.dark == "dark.mlv");
    QVERIFY(options.flat == "flat.mlv");
    QVERIFY(options.output == "/t/tmp");
    QCOMPARE(options.range.last, noLimit);
}

void TestOptions::averagingRun()
{
    const auto options = parsed({"-a", "dark.MLV", "-o", "dark.mlv"});
    QVERIFY(options.mode == Mode::Average);
    QVERIFY(options.output == "dark.mlv");
}

void TestOptions::subtractionRun()
{
    const auto options = parsed({"-s", "flat_dark.mlv", "-o", "out.mlv", "flat.mlv"});
    QVERIFY(options.mode == Mode::Rewrite);
    QVERIFY(options.input == "flat.mlv");
}

void TestOptions::optionsMayFollowTheRecording()
{
    QVERIFY(parsed({"a.MLV", "-v"}).verbose);
}

void TestOptions::metadataOnlyWins()
{
    QVERIFY(parsed({"--dng", "-m", "a.MLV", "-o", "x"}).mode == Mode::Report);
}

void TestOptions::withoutPrefixTheRecordingsNameIsUsed()
{
    QVERIFY(parsed({"--dng", "/r/a_b.MLV"}).output == "/r/a_b_");
}

void TestOptions::rangeOfFrames_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<quint64>("first");
    QTest::addColumn<quint64>("last");
    const auto row = [](const char *text, quint64 first, quint64 last) {
        QTest::newRow(text) << QByteArray(text) << first << last;
    };
    row("0-0", 0, noLimit); // asked for by our caller, who wants every frame
    row("5-0", 5, noLimit);
    row("2-4", 2, 4);
    row("3-3", 3, 3);
    row("4-2", 4, 4);
    row("7", 0, 7);
    row("0", 0, 0);
}

void TestOptions::rangeOfFrames()
{
    QFETCH(QByteArray, text);
    const auto range = parsed({"-f", text.constData(), "a.MLV"}).range;
    QTEST(quint64{range.first}, "first");
    QTEST(quint64{range.last}, "last");
}

void TestOptions::levelsAndMatrix()
{
    using Kind = mlvdump::LevelChoice::Kind;
    const auto plain = parsed({"--dng", "a.MLV"});
    QVERIFY(plain.black.kind == Kind::Auto);
    QVERIFY(plain.white.kind == Kind::Auto);
    QVERIFY(!plain.keepsRecordedMatrix);
    const auto given = parsed({"--dng", "a.MLV", "--black-level", "recorded", "--white-level",
                               "15000", "--matrix", "recorded"});
    QVERIFY(given.black.kind == Kind::Recorded);
    QVERIFY(given.white.kind == Kind::Given);
    QCOMPARE(given.white.level, 15000);
    QVERIFY(given.keepsRecordedMatrix);
    QVERIFY(parsed({"a.MLV", "--white-level", "1", "--white-level", "auto"}).white.kind ==
            Kind::Auto);
}

void TestOptions::repairOfPixelsAndColumns()
{
    using Pixels = mlvdump::RepairChoice::Pixels;
    QVERIFY(parsed({"--dng", "a.MLV"}).repair.isNothing());
    const auto automatic =
        parsed({"--dng", "a.MLV", "--repair-pixels", "auto", "--repair-columns"}).repair;
    QVERIFY(automatic.pixels == Pixels::Auto);
    QVERIFY(automatic.columns);
    const auto map = parsed({"--dng", "a.MLV", "--repair-pixels", "/maps/my.fpm"}).repair;
    QVERIFY(map.pixels == Pixels::Map);
    QVERIFY(map.map == "/maps/my.fpm");
    QVERIFY(!map.columns);
    const auto off =
        parsed({"--dng", "a.MLV", "--repair-pixels", "my.fpm", "--repair-pixels", "off"}).repair;
    QVERIFY(off.isNothing());
    QVERIFY(off.map.empty());
}

void TestOptions::developmentOfTheFrames()
{
    using Kind = mlvdump::BalanceChoice::Kind;
    const auto plain = parsed({"--dng", "a.MLV"});
    QVERIFY(plain.balance.kind == Kind::Camera);
    QCOMPARE(plain.exposure, 0.0);
    QVERIFY(!plain.renumbers);
    const auto chosen = parsed({"--dng", "a.MLV", "--white-balance", "3200", "--exposure", "-0.5",
                                "-f", "3-7", "--renumber"});
    QVERIFY(chosen.balance.kind == Kind::Kelvin);
    QCOMPARE(chosen.exposure, -0.5);
    QVERIFY(chosen.renumbers);
}

void TestOptions::wrongArgumentsAreRefused_data()
{
    QTest::addColumn<QByteArrayList>("arguments");
    QTest::newRow("none") << QByteArrayList{};
    QTest::newRow("no recording") << QByteArrayList{"-v"};
    QTest::newRow("two recordings") << QByteArrayList{"a.MLV", "b.MLV"};
    QTest::newRow("unknown option") << QByteArrayList{"--fast", "a.MLV"};
    QTest::newRow("value missing") << QByteArrayList{"a.MLV", "-o"};
    QTest::newRow("average without a file") << QByteArrayList{"-a", "a.MLV"};
    for (const char *range : {"", "-", "x", "1-", "-1", "1-2-3", "1-99999999999", "1.5"})
        QTest::addRow("range %s", range) << QByteArrayList{"-f", range, "a.MLV"};
    for (const char *level : {"", "-1", "65536", "15e3", "automatic"})
        QTest::addRow("white level %s", level) << QByteArrayList{"--white-level", level, "a.MLV"};
    for (const char *exposure : {"", "bright", "1EV", "11", "-11", "nan"})
        QTest::addRow("exposure %s", exposure) << QByteArrayList{"--exposure", exposure, "a.MLV"};
    QTest::newRow("white balance") << QByteArrayList{"--white-balance", "1000", "a.MLV"};
    QTest::newRow("no map") << QByteArrayList{"--repair-pixels", "", "a.MLV"};
    QTest::newRow("matrix") << QByteArrayList{"--matrix", "mine", "a.MLV"};
    for (const char *threads : {"0", "-1", "x", "100000"})
        QTest::addRow("threads %s", threads) << QByteArrayList{"--threads", threads, "a.MLV"};
}

void TestOptions::wrongArgumentsAreRefused()
{
    QFETCH(QByteArrayList, arguments);
    std::vector<std::string_view> views;
    for (const auto &argument : arguments)
        views.emplace_back(argument.constData());
    QVERIFY_THROWS_EXCEPTION(mlvdump::UsageError, parsed(views));
}

void TestOptions::refusalKnowsOfFrameRuns()
{
    for (const bool frames : {true, false}) {
        try {
            parsed({frames ? "--dng" : "-v", "a.MLV", "b.MLV"});
            QFAIL("two recordings were accepted");
        } catch (const mlvdump::UsageError &error) {
            QCOMPARE(error.asksForFrames(), frames);
        }
    }
}

void TestOptions::nameThatLooksLikeAnOption()
{
    QVERIFY(parsed({"--", "-v.MLV"}).input == "-v.MLV");
    QVERIFY(parsed({"-"}).input == "-");
}

void TestOptions::helpAndVersionNeedNoRecording()
{
    QVERIFY(parsed({"--help"}).mode == Mode::Help);
    QVERIFY(parsed({"--version"}).mode == Mode::Version);
}

FILMWRIGHT_TEST(TestOptions, QCoreApplication)
#include "tst_options.moc"
