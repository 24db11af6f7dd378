// SPDX-License-Identifier: MIT
// Projects that are stopped, aborted, failed or quit at arbitrary moments while several frames are
// converted at once. Run under the thread sanitizer it looks for races, elsewhere for hangs, tools
// left behind and frames that come after the end.
//
// FILMWRIGHT_STRESS_ROUNDS sets the rounds of each kind, FILMWRIGHT_STRESS_SEED the moments.
#include "fakeproject.h"
#include "support/processes.h"
#include "support/testprogram.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTest>

#include <random>

using namespace filmwright;

namespace {

/// From extraction to movie, in milliseconds, more or less: an end may come anywhere in it.
constexpr int wholeRun = 400;

/// The project's tools have its folder on their command lines.
QStringList runningTools(const FakeProject &project)
{
    return processesWith(project.path(QString()));
}

int setting(const char *name, int usual)
{
    return qEnvironmentVariableIsSet(name) ? qEnvironmentVariableIntValue(name) : usual;
}

} // namespace

class TestConversionStress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void endAtAnyMoment_data();
    void endAtAnyMoment();

private:
    using End = void (TestConversionStress::*)(FakeProject &);

    void stop(FakeProject &project);
    void abort(FakeProject &project);
    void fail(FakeProject &project);
    void quit(FakeProject &project);
    void pass(int most);

    std::mt19937 m_generator;
};

void TestConversionStress::initTestCase()
{
    const int seed = setting("FILMWRIGHT_STRESS_SEED", 20260321);
    qInfo("FILMWRIGHT_STRESS_SEED=%d", seed);
    m_generator.seed(static_cast<unsigned>(seed));
}

/// Milliseconds of the main thread's events.
void TestConversionStress::pass(int most)
{
    QTest::qWait(std::uniform_int_distribution(0, most)(m_generator));
}

void TestConversionStress::stop(FakeProject &project)
{
    pass(wholeRun);
    project.controller->stop();
}

/// As an interrupted run ends: nothing stays, though a frame may still be in work.
void TestConversionStress::abort(FakeProject &project)
{
    pass(wholeRun);
    project.controller->stop();
    project.controller->cleanTmpFiles();
}

/// A frame fails; who drives the project stops it as soon as it hears of it.
void TestConversionStress::fail(FakeProject &project)
{
    pass(wholeRun / 2);
    QFile fault(project.path(QStringLiteral("fault")));
    QVERIFY(fault.open(QIODevice::WriteOnly));
    const auto heard = [&project] {
        return project.events.contains(QStringLiteral("no image")) ||
               project.events.contains(QStringLiteral("told"));
    };
    QTRY_VERIFY(heard());
    project.controller->stop();
    fault.remove();
}

/// What was converted or built is waited for: no tool outlives the project.
void TestConversionStress::quit(FakeProject &project)
{
    pass(wholeRun);
    project.controller->stop();
    project.controller.reset();
    QCOMPARE(childProcesses(), 0);
}

void TestConversionStress::endAtAnyMoment_data()
{
    QTest::addColumn<End>("end");
    QTest::addColumn<int>("workers");
    for (const int workers : {1, 2, 8}) {
        QTest::addRow("stop, %d workers", workers) << &TestConversionStress::stop << workers;
        QTest::addRow("abort, %d workers", workers) << &TestConversionStress::abort << workers;
        QTest::addRow("error, %d workers", workers) << &TestConversionStress::fail << workers;
        QTest::addRow("quit, %d workers", workers) << &TestConversionStress::quit << workers;
    }
}

void TestConversionStress::endAtAnyMoment()
{
    QFETCH(End, end);
    QFETCH(int, workers);
    FakeProject project(12);
    project.setConversion(QStringLiteral("if [ -e '%1' ]; then exit 1; fi; head -c 20 \"$frame\" > "
                                         "\"$tiff\"; sleep 0.01; cp \"$frame\" \"$tiff\"")
                              .arg(project.path(QStringLiteral("fault"))));
    project.setEncoding(QStringLiteral("sleep 0.03; echo movie > \"$movie\""));
    const int rounds = setting("FILMWRIGHT_STRESS_ROUNDS", 4);
    for (int round = 0; round < rounds; ++round) {
        if (!project.controller) {
            project.read();
            project.controller->setConversionWorkers(workers);
        }
        project.events.clear();
        project.launch();
        (this->*end)(project);
        project.events.clear();
        // Some rounds begin anew at once, while the last frames are still in work.
        if (std::uniform_int_distribution(0, 1)(m_generator) == 0) {
            QTest::qWait(30);                                 // nothing tells that the workers rest
            project.events.removeAll(QStringLiteral("idle")); // an aborted extraction reports later
            QVERIFY2(project.events.isEmpty(), qPrintable(project.events.join(QLatin1Char(' '))));
        }
    }
    if (project.controller) {
        project.events.clear();
        project.controller->cleanTmpFiles();
        project.launch();
        // Else nobody would see one that is left behind.
        QVERIFY(QTest::qWaitFor([&project] { return !runningTools(project).isEmpty(); }));
        QTRY_VERIFY_WITH_TIMEOUT(project.events.contains(QStringLiteral("told")), 30000);
        QCOMPARE(project.events.count(QStringLiteral("image")), 12);
        project.controller.reset();
    }
    QCOMPARE(childProcesses(), 0);
    QTRY_COMPARE(runningTools(project), QStringList()); // what tools had started is killed, too
}

FILMWRIGHT_TEST(TestConversionStress, QCoreApplication)
#include "tst_conversionstress.moc"
