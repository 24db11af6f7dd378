// SPDX-License-Identifier: MIT
#include "mlv_dump/frameplan.h"

#include "support/testprogram.h"

#include <QTest>

using mlvdump::FramePlan;
using mlvdump::FrameRange;

namespace {

mlv::DataIndex index(std::initializer_list<quint32> numbers)
{
    mlv::DataIndex frames;
    for (const auto number : numbers)
        frames.push_back({0, 0, 0, number, 0});
    return frames;
}

/// The planned frames as "number of the file: number in the recording".
QString listed(const FramePlan &plan)
{
    QStringList list;
    for (const auto &frame : plan.frames)
        list.append(QStringLiteral("%1:%2").arg(frame.number).arg(frame.block->number));
    return list.join(QLatin1Char(' '));
}

QString planned(std::initializer_list<quint32> numbers, FrameRange range = {})
{
    const auto frames = index(numbers);
    return listed(mlvdump::planFrames(frames, range));
}

} // namespace

class TestFramePlan : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void firstFrameIsNumberZero();
    void gapIsFilledByTheFrameBefore();
    void filledFramesAreCounted();
    void rangeGoesByTheNumbersOfTheFiles();
    void onlyFilledFramesOfTheRangeAreCounted();
    void gapThatCannotBeTrueIsNotFilled();
    void allGapsTogetherAreLimited();
    void withoutFramesThereIsNoPlan();
};

void TestFramePlan::firstFrameIsNumberZero()
{
    QCOMPARE(planned({7, 8, 9}), QStringLiteral("0:7 1:8 2:9"));
}

void TestFramePlan::gapIsFilledByTheFrameBefore()
{
    QCOMPARE(planned({1, 2, 4, 7}), QStringLiteral("0:1 1:2 2:2 3:4 4:4 5:4 6:7"));
}

void TestFramePlan::filledFramesAreCounted()
{
    const auto frames = index({1, 2, 4, 7});
    const auto plan = mlvdump::planFrames(frames, {});
    QCOMPARE(plan.remarks.size(), std::size_t{1});
    QCOMPARE(QString::fromStdString(plan.remarks[0]),
             QStringLiteral("3 dropped frames are filled by the frame before them"));
    QVERIFY(mlvdump::planFrames(index({5, 6}), {}).remarks.empty());
}

void TestFramePlan::rangeGoesByTheNumbersOfTheFiles()
{
    QCOMPARE(planned({10, 11, 13, 14}, {1, 3}), QStringLiteral("1:11 2:11 3:13"));
    QCOMPARE(planned({10, 11}, {2, 5}), QString());
}

void TestFramePlan::onlyFilledFramesOfTheRangeAreCounted()
{
    const auto frames = index({0, 3, 6});
    const auto plan = mlvdump::planFrames(frames, {2, 4});
    QCOMPARE(listed(plan), QStringLiteral("2:0 3:3 4:3"));
    QCOMPARE(QString::fromStdString(plan.remarks[0]).left(2), QStringLiteral("2 "));
}

void TestFramePlan::gapThatCannotBeTrueIsNotFilled()
{
    const auto frames = index({0, 1, 0xfffffff0});
    const auto plan = mlvdump::planFrames(frames, {});
    QCOMPARE(listed(plan), QStringLiteral("0:0 1:1 2:4294967280"));
    QCOMPARE(plan.remarks.size(), std::size_t{1});
    QVERIFY(plan.remarks[0].find("jump too far to be true in 1 places") != std::string::npos);
}

void TestFramePlan::allGapsTogetherAreLimited()
{
    mlv::DataIndex frames;
    for (quint32 i = 0; i < 100; ++i)
        frames.push_back({0, 0, 0, i * 900, 0});
    const auto plan = mlvdump::planFrames(frames, {});
    QCOMPARE(plan.frames.size(), std::size_t{100 + 899}); // one gap of at most 1100
}

void TestFramePlan::withoutFramesThereIsNoPlan()
{
    QCOMPARE(planned({}), QString());
}

FILMWRIGHT_TEST(TestFramePlan, QCoreApplication)
#include "tst_frameplan.moc"
