// SPDX-License-Identifier: MIT
#include "mlv/timeline.h"

#include "support/testprogram.h"

#include <QTest>

class TestTimeline : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void withoutEntriesNothingHolds();
    void lastSettingNotAfterTheTimeHolds();
    void beforeTheFirstSettingTheFirstHolds();
    void ofEqualTimesTheOneAddedLastHolds();
    void changesBeyondReasonAreNotKept();
};

void TestTimeline::withoutEntriesNothingHolds()
{
    const mlv::Timeline<int> timeline;
    QVERIFY(timeline.at(5) == nullptr);
}

void TestTimeline::lastSettingNotAfterTheTimeHolds()
{
    mlv::Timeline<int> timeline;
    timeline.add(20, 2);
    timeline.add(10, 1);
    timeline.sort();
    QCOMPARE(timeline.at(19)->value, 1);
    QCOMPARE(timeline.at(20)->value, 2);
    QCOMPARE(timeline.at(1000)->value, 2);
    QCOMPARE(timeline.at(1000)->timestamp, 20U);
}

void TestTimeline::beforeTheFirstSettingTheFirstHolds()
{
    mlv::Timeline<int> timeline;
    timeline.add(10, 1);
    timeline.sort();
    QCOMPARE(timeline.at(0)->value, 1);
}

void TestTimeline::ofEqualTimesTheOneAddedLastHolds()
{
    mlv::Timeline<int> timeline;
    timeline.add(10, 1);
    timeline.add(10, 2);
    timeline.sort();
    QCOMPARE(timeline.at(10)->value, 2);
}

void TestTimeline::changesBeyondReasonAreNotKept()
{
    mlv::Timeline<int> timeline;
    for (int i = 0; i < 100000; ++i)
        timeline.add(static_cast<std::uint64_t>(i), i);
    timeline.sort();
    QCOMPARE(timeline.at(1000000)->value, 65535);
}

FILMWRIGHT_TEST(TestTimeline, QCoreApplication)
#include "tst_timeline.moc"
