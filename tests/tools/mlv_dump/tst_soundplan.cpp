// SPDX-License-Identifier: MIT
#include "mlv_dump/soundplan.h"

#include "support/testprogram.h"

#include <QTest>

using mlvdump::SoundPlan;

namespace {

constexpr quint64 plenty = 1000000;

mlv::DataIndex blocksOf(std::initializer_list<std::pair<quint32, quint32>> numbersAndSizes)
{
    mlv::DataIndex blocks;
    for (const auto &[number, size] : numbersAndSizes)
        blocks.push_back({0, 0, size, number, 0});
    return blocks;
}

/// The pieces as "silence + bytes of the block's end".
QString listed(const SoundPlan &plan)
{
    QStringList list;
    for (const auto &piece : plan.pieces)
        list.append(QStringLiteral("%1+%2").arg(piece.silence).arg(piece.bytes));
    return list.join(QLatin1Char(' '));
}

QString planned(const mlv::DataIndex &blocks, qint64 lead, quint64 mostSilence = plenty)
{
    return listed(mlvdump::planSound(blocks, lead, mostSilence));
}

} // namespace

class TestSoundPlan : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void blocksFollowOneAnother();
    void laterSoundGetsSilenceInFront();
    void earlierSoundIsCutOverBlocks();
    void soundBeforeThePictureMayBeAllOfIt();
    void lostBlockLeavesSilenceOfTheUsualSize();
    void lostBlockBeforeThePictureLeavesNone();
    void firstNumberMeansNothing();
    void silenceThatCannotBeTrueIsLeftOut();
    void soundBehindTheEndIsCutOff();
    void bytesAreCounted();
};

void TestSoundPlan::blocksFollowOneAnother()
{
    QCOMPARE(planned(blocksOf({{0, 100}, {1, 100}, {2, 40}}), 0),
             QStringLiteral("0+100 0+100 0+40"));
}

void TestSoundPlan::laterSoundGetsSilenceInFront()
{
    QCOMPARE(planned(blocksOf({{0, 100}, {1, 100}}), 30), QStringLiteral("30+100 0+100"));
}

void TestSoundPlan::earlierSoundIsCutOverBlocks()
{
    QCOMPARE(planned(blocksOf({{0, 100}, {1, 100}, {2, 100}}), -130),
             QStringLiteral("0+0 0+70 0+100"));
}

void TestSoundPlan::soundBeforeThePictureMayBeAllOfIt()
{
    const auto blocks = blocksOf({{0, 100}, {1, 100}});
    QCOMPARE(planned(blocks, -5000), QStringLiteral("0+0 0+0"));
    QCOMPARE(mlvdump::planSound(blocks, -5000, plenty).bytes, 0U);
}

void TestSoundPlan::lostBlockLeavesSilenceOfTheUsualSize()
{
    const auto blocks = blocksOf({{0, 100}, {3, 40}});
    const auto plan = mlvdump::planSound(blocks, 0, plenty);
    QCOMPARE(listed(plan), QStringLiteral("0+100 200+40"));
    QCOMPARE(QString::fromStdString(plan.warnings.at(0)),
             QStringLiteral("2 lost sound blocks are silent"));
}

void TestSoundPlan::lostBlockBeforeThePictureLeavesNone()
{
    QCOMPARE(planned(blocksOf({{0, 100}, {2, 100}}), -150), QStringLiteral("0+0 50+100"));
}

void TestSoundPlan::firstNumberMeansNothing()
{
    QCOMPARE(planned(blocksOf({{7, 100}, {8, 100}}), 0), QStringLiteral("0+100 0+100"));
}

void TestSoundPlan::silenceThatCannotBeTrueIsLeftOut()
{
    const auto blocks = blocksOf({{0, 100}, {0xffffffff, 100}});
    const auto plan = mlvdump::planSound(blocks, 400, 300);
    QCOMPARE(listed(plan), QStringLiteral("0+100 0+100"));
    QCOMPARE(plan.warnings.size(), std::size_t{1});
    QVERIFY(plan.warnings[0].find("in 2 places") != std::string::npos);
}

void TestSoundPlan::soundBehindTheEndIsCutOff()
{
    const auto cut = [](qint64 lead, quint64 mostBytes) {
        const auto blocks = blocksOf({{0, 100}, {2, 100}, {3, 100}});
        const auto plan = mlvdump::planSound(blocks, lead, plenty, mostBytes);
        return listed(plan) + QStringLiteral("=%1").arg(plan.bytes);
    };
    QCOMPARE(cut(0, 230), QStringLiteral("0+100 100+30=230"));
    QCOMPARE(cut(0, 150), QStringLiteral("0+100 50+0=150"));
    QCOMPARE(cut(30, 20), QStringLiteral("20+0=20"));
    QCOMPARE(cut(-50, 60), QStringLiteral("0+50 10+0=60"));
    QCOMPARE(cut(0, 1000), QStringLiteral("0+100 100+100 0+100=400"));
}

void TestSoundPlan::bytesAreCounted()
{
    const auto blocks = blocksOf({{0, 100}, {2, 40}});
    QCOMPARE(mlvdump::planSound(blocks, 10, plenty).bytes, 10U + 100 + 100 + 40);
    QCOMPARE(mlvdump::planSound({}, 10, plenty).bytes, 0U);
}

FILMWRIGHT_TEST(TestSoundPlan, QCoreApplication)
#include "tst_soundplan.moc"
