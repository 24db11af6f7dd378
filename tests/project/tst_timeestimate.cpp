// SPDX-License-Identifier: MIT
#include "encoding/ffmpegarguments.h"
#include "project/timeestimate.h"

#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QTest>
#include <QTextStream>

#include <cmath>
#include <random>

using namespace filmwright;
using namespace std::chrono_literals;

namespace {

/// Seconds a frame takes in each stage, as a stopwatch beside the tools showed them.
struct Timings
{
    double extracting = 0;
    double converting = 0;
    double encoding = 0;
    double jitter = 0;   ///< so much of a frame's time is chance
    double slowFrom = 1; ///< from this part of the conversion on it takes twice as long
};

/// A recording on its way, on a clock of its own.
class Simulation
{
public:
    Simulation(const RecordingWork &work, const Timings &timings)
        : m_work(work)
    {
        add(WorkStage::Extracting, timings.extracting, timings);
        add(WorkStage::Converting, timings.converting, timings);
        add(WorkStage::Encoding, timings.encoding, timings);
    }

    double total() const { return m_stages.back().ends.back(); }

    StagePosition at(double second) const
    {
        for (const Stage &stage : m_stages) {
            if (second >= stage.ends.back())
                continue;
            const auto done = std::upper_bound(stage.ends.begin(), stage.ends.end(), second);
            return {stage.stage, static_cast<quint64>(done - stage.ends.begin()), m_work.frames};
        }
        return {WorkStage::Finished};
    }

    /// Runs to its end, with a look at the estimate twice a second.
    template <typename Look>
    void run(TimeEstimate &estimate, TimeEstimate::TimePoint &now, Look look)
    {
        for (double second = 0; second < total(); second += 0.5) {
            estimate.update(m_work, at(second), now);
            look(second);
            now += 500ms;
        }
        estimate.update(m_work, {WorkStage::Finished}, now);
    }

private:
    struct Stage
    {
        WorkStage stage;
        std::vector<double> ends; ///< of the frames, in seconds since the recording's begin
    };

    void add(WorkStage stage, double seconds, const Timings &timings)
    {
        double end = m_stages.empty() ? 0 : total();
        Stage added{stage, {}};
        for (quint64 frame = 0; frame < m_work.frames; ++frame) {
            const double chance = std::uniform_real_distribution(-1.0, 1.0)(m_generator);
            const bool slow =
                stage == WorkStage::Converting &&
                static_cast<double>(frame) >= timings.slowFrom * static_cast<double>(m_work.frames);
            end += seconds * (1 + timings.jitter * chance) * (slow ? 2 : 1);
            added.ends.push_back(end);
        }
        m_stages.push_back(added);
    }

    RecordingWork m_work;
    std::mt19937 m_generator{7};
    std::vector<Stage> m_stages;
};

struct Moment
{
    double second = 0;
    StagePosition position;
};

std::vector<Moment> recordedRun(const QString &name)
{
    QFile file(QDir(qEnvironmentVariable("FILMWRIGHT_TEST_DATA"))
                   .filePath(QStringLiteral("timings/") + name));
    std::vector<Moment> moments;
    if (!file.open(QIODevice::ReadOnly))
        return moments;
    QTextStream lines(&file);
    while (!lines.atEnd()) {
        Moment moment;
        QString stage;
        lines >> moment.second >> stage >> moment.position.done >> Qt::ws;
        for (const WorkStage known : {WorkStage::Extracting, WorkStage::Converting,
                                      WorkStage::Encoding, WorkStage::Finished})
            if (stageName(known) == stage)
                moment.position.stage = known;
        moment.position.frames = 400;
        moments.push_back(moment);
    }
    return moments;
}

RecordingWork fullHd(quint64 frames)
{
    RecordingWork work;
    work.frames = frames;
    work.megapixels = 2.0736;
    work.settings.format = MovieFormatMOV;
    work.settings.quality = MovieQualityHigh;
    return work;
}

/// Hardly encoded: most of its time goes into the conversion.
RecordingWork fullHdForAvi(quint64 frames)
{
    RecordingWork work = fullHd(frames);
    work.settings.format = MovieFormatAVI;
    work.settings.quality = MovieQualityMaximum;
    return work;
}

} // namespace

class TestTimeEstimate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nothingIsKnownBeforeTheFirstFrame();
    void steadyAfterTheFirstTenth_data();
    void steadyAfterTheFirstTenth();
    void steadyInRecordedRuns_data();
    void steadyInRecordedRuns();
    void rawFramesAreForetoldFromTheirExtraction();
    void flowingFramesAreForetoldFromTheirEncoding();
    void followsAMachineThatGetsSlower();
    void laterRecordingsAreKnownFromEarlierOnes();
    void recordingWithoutFrameCountIsNotEstimated();
    void framesOfAnEarlierRunCostNothing();
    void rateIsThatOfTheLastTenSeconds();
    void rateOfFramesThatTakeLongerThanTheWindow();
    void rateOfAStageBeginsAnew();
};

void TestTimeEstimate::nothingIsKnownBeforeTheFirstFrame()
{
    TimeEstimate estimate;
    const TimeEstimate::TimePoint now{};
    QVERIFY(!estimate.timeLeft());
    estimate.update(fullHd(100), {WorkStage::Extracting, 0, 100}, now);
    estimate.update(fullHd(100), {WorkStage::Extracting, 0, 100}, now + 1s);
    QVERIFY(!estimate.timeLeft());
    QVERIFY(!estimate.timeFor(fullHd(10)));
    QCOMPARE(estimate.framesPerSecond(), 0.0);
    // How fast the disk is tells nothing of the conversion.
    estimate.update(fullHd(100), {WorkStage::Extracting, 50, 100}, now + 2s);
    QVERIFY(!estimate.timeLeft());
    QVERIFY(estimate.framesPerSecond() > 0);
    estimate.update(fullHd(100), {WorkStage::Converting, 0, 100}, now + 3s);
    QVERIFY(!estimate.timeLeft());
    estimate.update(fullHd(100), {WorkStage::Converting, 1, 100}, now + 4s);
    QVERIFY(!estimate.timeLeft());
    estimate.update(fullHd(100), {WorkStage::Converting, 3, 100}, now + 5s);
    QVERIFY(estimate.timeLeft());
    QVERIFY(estimate.timeFor(fullHd(10)));
}

void TestTimeEstimate::steadyAfterTheFirstTenth_data()
{
    QTest::addColumn<Timings>("timings");
    QTest::addColumn<int>("workers");
    QTest::newRow("as measured") << Timings{0.008, 0.014, 0.06, 0.1} << 1;
    QTest::newRow("busy machine") << Timings{0.02, 0.03, 0.13, 0.5} << 1;
    QTest::newRow("slow machine") << Timings{0.04, 0.08, 0.35, 0.1} << 1;
    QTest::newRow("slow disk") << Timings{0.04, 0.014, 0.06, 0.1} << 1;
    QTest::newRow("easy to encode") << Timings{0.008, 0.014, 0.05, 0.1} << 1;
    QTest::newRow("two at once") << Timings{0.008, 0.013, 0.06, 0.1} << 2;
}

/// The time of the whole recording, as foretold, stays within 20 % of what it is at the end.
void TestTimeEstimate::steadyAfterTheFirstTenth()
{
    QFETCH(Timings, timings);
    QFETCH(int, workers);
    RecordingWork work = fullHd(600);
    work.settings.workers = workers;
    Simulation simulation(work, timings);
    TimeEstimate estimate;
    TimeEstimate::TimePoint now{};
    double worst = 0;
    double worstSecond = 0;
    simulation.run(estimate, now, [&](double second) {
        if (second < simulation.total() / 10)
            return;
        if (second < 600 * timings.extracting + 3) {
            QVERIFY(!estimate.timeLeft() || second > 600 * timings.extracting);
            return;
        }
        QVERIFY(estimate.timeLeft());
        const double foretold = second + estimate.timeLeft()->count();
        const double error = std::abs(foretold / simulation.total() - 1);
        if (error > worst) {
            worst = error;
            worstSecond = second;
        }
    });
    QVERIFY2(worst < 0.2, qPrintable(QStringLiteral("%1 % off at %2 s of %3")
                                         .arg(100 * worst)
                                         .arg(worstSecond)
                                         .arg(simulation.total())));
}

void TestTimeEstimate::steadyInRecordedRuns_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("workers");
    QTest::newRow("one job") << "one-job.txt" << 1;
}

/// As the one above, with what `--progress json` told of a conversion of 400 frames 1920x1080 to
/// MOV on two cores: a line has the seconds since its begin, the stage and the frames done of it.
void TestTimeEstimate::steadyInRecordedRuns()
{
    QFETCH(QString, file);
    QFETCH(int, workers);
    const std::vector<Moment> moments = recordedRun(file);
    QVERIFY(!moments.empty());
    const double total = moments.back().second;
    RecordingWork work = fullHd(400);
    work.settings.workers = workers;
    TimeEstimate estimate;
    double worst = 0;
    int foretellings = 0;
    for (const Moment &moment : moments) {
        const std::chrono::duration<double> since(moment.second);
        estimate.update(work, moment.position,
                        TimeEstimate::TimePoint(
                            std::chrono::duration_cast<TimeEstimate::TimePoint::duration>(since)));
        if (moment.second < total / 10 || !estimate.timeLeft())
            continue;
        const double foretold = moment.second + estimate.timeLeft()->count();
        worst = std::max(worst, std::abs(foretold / total - 1));
        ++foretellings;
    }
    QVERIFY2(worst < 0.2, qPrintable(QStringLiteral("%1 % off").arg(100 * worst)));
    // Nearly all but the first tenth.
    QVERIFY(foretellings > 0.8 * static_cast<double>(moments.size()));
}

/// They have no other stage.
void TestTimeEstimate::rawFramesAreForetoldFromTheirExtraction()
{
    RecordingWork work;
    work.frames = 1000;
    work.settings.recipe.emplace().extension = QStringLiteral("dng");
    TimeEstimate estimate;
    TimeEstimate::TimePoint now;
    for (quint64 done = 0; done <= 250; done += 50) { // 100 a second
        estimate.update(work, {WorkStage::Extracting, done, work.frames}, now);
        now += 500ms;
    }
    QVERIFY(estimate.timeLeft());
    QCOMPARE(estimate.timeLeft()->count(), 7.5);
    QCOMPARE(estimate.timeFor(work)->count(), 10.0);
}

/// The last stage tells what has been through all of them.
void TestTimeEstimate::flowingFramesAreForetoldFromTheirEncoding()
{
    RecordingWork work;
    work.frames = 1000;
    work.settings.recipe.emplace().extension = QStringLiteral("mov");
    work.settings.blendsAlternatingRows = true;
    QVERIFY(work.settings.flows());
    TimeEstimate estimate;
    TimeEstimate::TimePoint now;
    estimate.update(work, {WorkStage::Extracting, 0, work.frames}, now);
    now += 5s; // of the survey
    QVERIFY(!estimate.timeLeft());
    for (quint64 done = 0; done <= 250; done += 50) { // 100 a second
        estimate.update(work, {WorkStage::Encoding, done, work.frames}, now);
        now += 500ms;
    }
    QVERIFY(estimate.timeLeft());
    QCOMPARE(estimate.timeLeft()->count(), 7.5);
    QCOMPARE(estimate.timeFor(work)->count(), 10.0);
}

void TestTimeEstimate::followsAMachineThatGetsSlower()
{
    Simulation simulation(fullHdForAvi(40000), {0.008, 0.014, 0.004, 0.1, 0.5});
    TimeEstimate estimate;
    TimeEstimate::TimePoint now{};
    const double slowSince = 40000 * 0.008 + 20000 * 0.014;
    simulation.run(estimate, now, [&](double second) {
        if (second < slowSince + 120) // twice what it remembers
            return;
        const double foretold = second + estimate.timeLeft()->count();
        QVERIFY(std::abs(foretold / simulation.total() - 1) < 0.2);
    });
}

void TestTimeEstimate::laterRecordingsAreKnownFromEarlierOnes()
{
    const Timings timings{0.03, 0.3, 0.3, 0.05, 1}; // encodes much slower than usual
    TimeEstimate estimate;
    TimeEstimate::TimePoint now{};
    Simulation first(fullHd(200), timings);
    first.run(estimate, now, [](double) {});
    Simulation second(fullHd(400), timings);
    const auto foretold = estimate.timeFor(fullHd(400));
    QVERIFY(foretold);
    QVERIFY(std::abs(foretold->count() / second.total() - 1) < 0.05);
    bool looked = false;
    second.run(estimate, now, [&](double second_) {
        if (looked || second_ < 1)
            return;
        looked = true;
        QVERIFY(std::abs(estimate.timeLeft()->count() / (second.total() - 1) - 1) < 0.1);
    });
    QVERIFY(looked);
    RecordingWork small = fullHd(400);
    small.megapixels /= 4;
    QVERIFY(std::abs(estimate.timeFor(small)->count() / second.total() - 0.25) < 0.02);
}

void TestTimeEstimate::recordingWithoutFrameCountIsNotEstimated()
{
    TimeEstimate estimate;
    TimeEstimate::TimePoint now{};
    Simulation(fullHd(50), {0.01, 0.1, 0.05}).run(estimate, now, [](double) {});
    QVERIFY(estimate.timeFor(fullHd(1)));
    QVERIFY(!estimate.timeFor(fullHd(0)));
}

void TestTimeEstimate::framesOfAnEarlierRunCostNothing()
{
    TimeEstimate estimate;
    TimeEstimate::TimePoint now{};
    const auto convert = [&](quint64 done, std::chrono::milliseconds pause) {
        now += pause;
        estimate.update(fullHdForAvi(100), {WorkStage::Converting, done, 100, 40}, now);
    };
    convert(0, 0ms);
    convert(20, 100ms);
    convert(40, 100ms);
    QVERIFY(!estimate.timeLeft());
    for (quint64 done = 41; done <= 50; ++done)
        convert(done, 1000ms);
    QCOMPARE(estimate.framesPerSecond(), 1.0);
    QVERIFY(estimate.timeLeft()->count() >= 50);
    QVERIFY(estimate.timeLeft()->count() < 90);
}

void TestTimeEstimate::rateIsThatOfTheLastTenSeconds()
{
    TimeEstimate estimate;
    TimeEstimate::TimePoint now{};
    quint64 done = 0;
    const auto pass = [&](int seconds, quint64 framesASecond) {
        for (int second = 0; second < seconds; ++second) {
            estimate.update(fullHd(1000), {WorkStage::Converting, done, 1000}, now);
            now += 1s;
            done += framesASecond;
        }
        estimate.update(fullHd(1000), {WorkStage::Converting, done, 1000}, now);
    };
    pass(3, 4);
    QCOMPARE(estimate.framesPerSecond(), 4.0);
    pass(30, 4);
    pass(5, 2);
    QCOMPARE(estimate.framesPerSecond(), 3.0);
    pass(5, 2);
    QCOMPARE(estimate.framesPerSecond(), 2.0);
}

void TestTimeEstimate::rateOfFramesThatTakeLongerThanTheWindow()
{
    TimeEstimate estimate;
    TimeEstimate::TimePoint now{};
    for (int second = 0; second <= 100; ++second) {
        estimate.update(fullHd(1000),
                        {WorkStage::Converting, static_cast<quint64>(second / 20), 1000}, now);
        now += 1s;
    }
    QVERIFY(std::abs(estimate.framesPerSecond() - 0.05) < 0.06);
    QVERIFY(estimate.framesPerSecond() > 0);
}

void TestTimeEstimate::rateOfAStageBeginsAnew()
{
    TimeEstimate estimate;
    TimeEstimate::TimePoint now{};
    estimate.update(fullHd(10), {WorkStage::Extracting, 0, 10}, now);
    estimate.update(fullHd(10), {WorkStage::Extracting, 10, 10}, now + 1s);
    QCOMPARE(estimate.framesPerSecond(), 10.0);
    estimate.update(fullHd(10), {WorkStage::Converting, 0, 10}, now + 2s);
    QCOMPARE(estimate.framesPerSecond(), 0.0);
}

FILMWRIGHT_TEST(TestTimeEstimate, QCoreApplication)
#include "tst_timeestimate.moc"
