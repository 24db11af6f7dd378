// SPDX-License-Identifier: MIT
// Batches of the window with the real tools, each struck by a fault while a person presses its
// buttons. None may harm a recording, lose a movie or make a wrong one, leave a process or a file
// behind, or hang; what can be mended is mended, and the next Start makes every movie.

#include "footage.h"
#include "windowscene.h"

#include "support/testprogram.h"

#include <QMap>

#include <cstdio>

class TestWindowFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void strike_data();
    void strike();
    void cleanupTestCase();

private:
    WindowRehearsal rehearsalOf(Order order, bool hasDark);
    const WindowFootage &footageFor(const Order &order) const
    {
        return order.blendsAlternatingRows ? m_twoExposures : m_plain;
    }

    WindowFootage m_plain;
    WindowFootage m_twoExposures; ///< rows of which alternate
    QMap<QString, WindowRehearsal> m_rehearsals;
    QMap<QString, QString> m_endings; ///< by the strikes' names
};

void TestWindowFaults::initTestCase()
{
    QVERIFY2(QFile::exists(realTool(QStringLiteral("mlv_dump"))),
             "FILMWRIGHT_BUILD_RESOURCES doesn't name the folder of the tools");
    const QByteArray dark = sample(QStringLiteral("--frames 2 --dark"));
    m_plain = {{{QStringLiteral("a.MLV"), sample(QStringLiteral("--frames 3 --no-sound"))},
                {QStringLiteral("b.MLV"), sample(QStringLiteral("--frames 4"))},
                {QStringLiteral("c.MLV"), sample(QStringLiteral("--frames 2"))}},
               dark};
    // Fewer frames don't tell how far the exposures are apart.
    const QString twoExposures = QStringLiteral("--frames 4 --dual-iso 100/1600");
    m_twoExposures = {
        {{QStringLiteral("a.MLV"), sample(twoExposures + QStringLiteral(" --no-sound"))},
         {QStringLiteral("b.MLV"), sample(twoExposures)},
         {QStringLiteral("c.MLV"), sample(twoExposures + QStringLiteral(" --frames 5"))}},
        dark};
}

WindowRehearsal TestWindowFaults::rehearsalOf(Order order, bool hasDark)
{
    order.hasDark = hasDark;
    const QString name = order.nameOfMovie();
    if (!m_rehearsals.contains(name))
        m_rehearsals.insert(name, WindowScene::rehearse(footageFor(order), order));
    return m_rehearsals.value(name);
}

void TestWindowFaults::strike_data()
{
    QTest::addColumn<quint32>("seed");
    QTest::addColumn<int>("number");
    const auto seed = static_cast<quint32>(setting("FILMWRIGHT_STRIKE_SEED", 1));
    const int strikes = setting("FILMWRIGHT_WINDOW_STRIKES", 20);
    for (int number = 1; number <= strikes; ++number) {
        QTest::addRow("%d-%04d %s", int(seed), number,
                      qPrintable(WindowStrike::make(seed, number).name))
            << seed << number;
    }
}

void TestWindowFaults::strike()
{
    QFETCH(quint32, seed);
    QFETCH(int, number);
    const WindowStrike strike = WindowStrike::make(seed, number);
    const QString skipReason = WindowScene::skipReason(strike);
    if (!skipReason.isEmpty())
        QSKIP(qPrintable(skipReason));
    const Order &order = strike.strike.order;
    const WindowRehearsal plain = rehearsalOf(order, false);
    const WindowRehearsal calibrated = rehearsalOf(order, true);
    for (const WindowRehearsal &rehearsal : {plain, calibrated})
        for (const QByteArray &movie : rehearsal.movies)
            QVERIFY(!movie.isEmpty());
    WindowScene scene(footageFor(order), strike, plain, calibrated);
    const QStringList complaints = scene.play();
    m_endings[QString::fromUtf8(QTest::currentDataTag())] = scene.ending();
    QVERIFY2(complaints.isEmpty(), qPrintable(complaints.join(QStringLiteral("; "))));
}

/// What the struck batches came to.
void TestWindowFaults::cleanupTestCase()
{
    for (auto ending = m_endings.cbegin(); ending != m_endings.cend(); ++ending)
        std::printf("%s: %s\n", qPrintable(ending.key()), qPrintable(ending.value()));
}

FILMWRIGHT_TEST(TestWindowFaults, QApplication)
#include "tst_windowfaults.moc"
