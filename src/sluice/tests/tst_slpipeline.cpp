// SPDX-License-Identifier: MIT
#include "sluice/slpipeline.h"

#include "support/testprogram.h"

#include <QObject>
#include <QTest>

#include <thread>

class tst_SLPipeline : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void emptyYieldsNone();
    void valuesComeOutInOrder();
    void settingNeverReplaces();
    void carriesPointers();
    void keepsWhatDescribesIt();
    void outputReachesThePipeline();
    void newOutputDisconnectsTheOldOne();
    void severalOutputsReachThePipeline();
    void newOutputDisconnectsAllOldOnes();
    void deathOfThePipelineDisconnects();
    void deathOfTheOutletDisconnects();
    void oneProducerAndOneConsumer();
};

void tst_SLPipeline::emptyYieldsNone()
{
    SLPipeline pipeline;
    QVERIFY(pipeline.isEmpty());
    QVERIFY(!pipeline.value().isValid());
}

void tst_SLPipeline::valuesComeOutInOrder()
{
    const auto pipeline = SLPipeline::pipeline();
    pipeline->setDataType(QMetaType::fromType<QString>());
    pipeline->setValue(QStringLiteral("a"));
    pipeline->setValue(QStringLiteral("b"));
    QCOMPARE(pipeline->value().toString(), QStringLiteral("a"));
    pipeline->setValue(QStringLiteral("c"));
    QCOMPARE(pipeline->value().toString(), QStringLiteral("b"));
    QCOMPARE(pipeline->value().toString(), QStringLiteral("c"));
    QVERIFY(!pipeline->value().isValid());
}

void tst_SLPipeline::settingNeverReplaces()
{
    SLPipeline pipeline;
    pipeline.setValue(1);
    pipeline.setValue(1);
    QCOMPARE(pipeline.value().toInt(), 1);
    QCOMPARE(pipeline.value().toInt(), 1);
    QVERIFY(pipeline.isEmpty());
}

void tst_SLPipeline::carriesPointers()
{
    SLPipeline pipeline;
    pipeline.setValue(QVariant::fromValue<QObject *>(this));
    QCOMPARE(pipeline.value().value<QObject *>(), this);
}

void tst_SLPipeline::keepsWhatDescribesIt()
{
    SLPipeline pipeline;
    pipeline.setMode(SLOutletModeInput);
    pipeline.setDataType(QMetaType::fromType<QString>());
    QCOMPARE(int(pipeline.mode()), 1);
    QCOMPARE(pipeline.dataType(), QMetaType::fromType<QString>());
    QCOMPARE(int(SLOutletModeOutput), 4);
}

void tst_SLPipeline::outputReachesThePipeline()
{
    SLPipeline pipeline;
    const auto outlet = SLOutlet::outlet();
    pipeline.setOutput(outlet);
    QCOMPARE(pipeline.output(), outlet);
    QCOMPARE(outlet->pipeline(), &pipeline);
}

void tst_SLPipeline::newOutputDisconnectsTheOldOne()
{
    SLPipeline pipeline;
    const auto first = SLOutlet::outlet();
    const auto second = SLOutlet::outlet();
    pipeline.setOutput(first);
    pipeline.setOutput(second);
    QCOMPARE(first->pipeline(), nullptr);
    QCOMPARE(second->pipeline(), &pipeline);
}

void tst_SLPipeline::severalOutputsReachThePipeline()
{
    const auto first = SLOutlet::outlet();
    const auto second = SLOutlet::outlet();
    {
        SLPipeline pipeline;
        pipeline.setOutput(first);
        pipeline.addOutput(second);
        QCOMPARE(pipeline.output(), first);
        QCOMPARE(first->pipeline(), &pipeline);
        QCOMPARE(second->pipeline(), &pipeline);
    }
    QCOMPARE(first->pipeline(), nullptr);
    QCOMPARE(second->pipeline(), nullptr);
}

void tst_SLPipeline::newOutputDisconnectsAllOldOnes()
{
    SLPipeline pipeline;
    const auto first = SLOutlet::outlet();
    const auto second = SLOutlet::outlet();
    const auto third = SLOutlet::outlet();
    pipeline.setOutput(first);
    pipeline.addOutput(second);
    pipeline.setOutput(third);
    QCOMPARE(first->pipeline(), nullptr);
    QCOMPARE(second->pipeline(), nullptr);
    QCOMPARE(third->pipeline(), &pipeline);
}

void tst_SLPipeline::deathOfThePipelineDisconnects()
{
    const auto outlet = SLOutlet::outlet();
    auto pipeline = SLPipeline::pipeline();
    pipeline->setOutput(outlet);
    pipeline.reset();
    QCOMPARE(outlet->pipeline(), nullptr);
}

void tst_SLPipeline::deathOfTheOutletDisconnects()
{
    SLPipeline pipeline;
    pipeline.setOutput(SLOutlet::outlet());
    QCOMPARE(pipeline.output(), nullptr);
    pipeline.setValue(1);
    QCOMPARE(pipeline.value().toInt(), 1);
}

void tst_SLPipeline::oneProducerAndOneConsumer()
{
    constexpr int count = 20000;
    SLPipeline pipeline;
    std::thread producer([&] {
        for (int i = 0; i < count; ++i)
            pipeline.setValue(QString::number(i));
    });
    QStringList taken;
    while (taken.size() < count)
        if (const QVariant value = pipeline.value(); value.isValid())
            taken.append(value.toString());
        else
            std::this_thread::yield();
    producer.join();
    for (int i = 0; i < count; ++i)
        QCOMPARE(taken.at(i), QString::number(i));
    QVERIFY(pipeline.isEmpty());
}

FILMWRIGHT_TEST(tst_SLPipeline, QCoreApplication)
#include "tst_slpipeline.moc"
