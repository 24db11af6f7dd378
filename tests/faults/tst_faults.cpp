// SPDX-License-Identifier: MIT
// Real conversions with the real tools, each struck by one fault. Every strike has an outcome that
// is expected, and none may harm the recording, leave a process or a file behind, or pass a short
// movie for a whole one.

#include "footage.h"
#include "scene.h"

#include "support/testprogram.h"

#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QTest>

#include <cstdio>

namespace {

QByteArray recordingOf(const QString &options)
{
    return sample(QStringLiteral("--frames %1 %2").arg(Scene::frames).arg(options));
}

} // namespace

class TestFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void strike_data();
    void strike();
    void strikeOnFlow_data();
    void strikeOnFlow();
    void cleanupTestCase();

private:
    void play(const Strike &strike);
    const Rehearsal &rehearsalOf(const Order &order);
    const QByteArray &recordingFor(const Order &order) const
    {
        return order.blendsAlternatingRows ? m_twoExposures : m_recording;
    }

    QByteArray m_recording;
    QByteArray m_twoExposures; ///< rows of which alternate
    QByteArray m_dark;
    QMap<QString, Rehearsal> m_rehearsals;
    QMap<QString, QMap<QString, int>> m_endings; ///< how often each, by what was struck
};

void TestFaults::initTestCase()
{
    QVERIFY2(QFile::exists(realTool(QStringLiteral("mlv_dump"))),
             "FILMWRIGHT_BUILD_RESOURCES doesn't name the folder of the tools");
    m_recording = recordingOf({});
    m_twoExposures = recordingOf(QStringLiteral("--dual-iso 100/1600"));
    m_dark = recordingOf(QStringLiteral("--dark"));
}

const Rehearsal &TestFaults::rehearsalOf(const Order &order)
{
    const QString name = order.nameOfMovie();
    if (!m_rehearsals.contains(name))
        m_rehearsals.insert(name, Scene::rehearse({recordingFor(order), m_dark}, order));
    return m_rehearsals[name];
}

namespace {

void addStrikes(int strikes, Strike (*make)(quint32 seed, int number))
{
    QTest::addColumn<Strike>("strike");
    const auto seed = static_cast<quint32>(setting("FILMWRIGHT_STRIKE_SEED", 1));
    for (int number = 1; number <= strikes; ++number) {
        const Strike strike = make(seed, number);
        QTest::addRow("%d-%04d %s", int(seed), number, qPrintable(strike.name)) << strike;
    }
}

} // namespace

void TestFaults::strike_data()
{
    addStrikes(setting("FILMWRIGHT_STRIKES", 100), Strike::make);
}

void TestFaults::strike()
{
    QFETCH(Strike, strike);
    play(strike);
}

void TestFaults::strikeOnFlow_data()
{
    addStrikes(setting("FILMWRIGHT_FLOW_STRIKES", 40), Strike::makeFlowing);
}

void TestFaults::strikeOnFlow()
{
    QFETCH(Strike, strike);
    play(strike);
}

void TestFaults::play(const Strike &strike)
{
    const QString skipReason = Scene::skipReason(strike);
    if (!skipReason.isEmpty())
        QSKIP(qPrintable(skipReason));
    const Rehearsal rehearsal = rehearsalOf(strike.order);
    QCOMPARE(rehearsal.frames, Scene::frames - (strike.order.mergesNeighbours ? 1 : 0));
    QVERIFY(rehearsal.temporaryBytes > 0);
    Scene scene({recordingFor(strike.order), m_dark}, strike, rehearsal);
    const QStringList complaints = scene.play();
    static const QRegularExpression varying(
        QStringLiteral("/tmp/\\S+|\\b(0x)?[0-9a-f]*\\d[0-9a-f.]*"));
    ++m_endings[strike.name][scene.ending().replace(varying, QStringLiteral("*"))];
    QVERIFY2(complaints.isEmpty(), qPrintable(complaints.join(QStringLiteral("; "))));
}

/// What the strikes came to: one that always ends in the same way is aimed badly.
void TestFaults::cleanupTestCase()
{
    for (auto kind = m_endings.cbegin(); kind != m_endings.cend(); ++kind) {
        for (auto ending = kind->cbegin(); ending != kind->cend(); ++ending)
            std::printf("%4d  %s: %s\n", ending.value(), qPrintable(kind.key()),
                        qPrintable(ending.key()));
    }
}

FILMWRIGHT_TEST(TestFaults, QCoreApplication)
#include "tst_faults.moc"
