// SPDX-License-Identifier: MIT
#include "runner/notificationcenter.h"
#include "runner/taskwrapper.h"
#include "support/events.h"
#include "support/logcapture.h"
#include "support/processes.h"
#include "support/shortgrace.h"
#include "support/testprogram.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <array>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <stdexcept>
#include <unistd.h>

using namespace filmwright;

namespace {

/// A wrapper that notes everything it says, in order.
class Recorder : public TaskWrapper
{
public:
    Recorder()
    {
        QObject::connect(&NotificationCenter::defaultCenter(), &NotificationCenter::posted, this,
                         [this](const QString &name, const QObject *sender) {
                             if (sender == this)
                                 events << name;
                         });
    }

    void runShell(const QString &script, bool wait = false)
    {
        setLaunchPath(QStringLiteral("/bin/sh"));
        setArguments({QStringLiteral("-c"), script});
        result = startAndWaitUntilExit(wait);
    }

    QStringList events;
    bool result = false;

protected:
    void taskWrapperTerminated() override { events << QStringLiteral("terminated"); }
};

class AbortListener : public TaskWrapperDelegate
{
public:
    explicit AbortListener(Recorder &recorder)
        : m_recorder(recorder)
    {
        recorder.setTaskWrapperdelegate(this);
    }
    void aborted() override { m_recorder.events << QStringLiteral("aborted"); }

protected:
    Recorder &m_recorder;
};

class LineListener : public AbortListener, public TaskWrapperLineReceiver
{
public:
    using AbortListener::AbortListener;
    void receivedLine(const QString &line, TaskWrapper &) override
    {
        m_recorder.events << QStringLiteral("line ") + line;
        if (onLine)
            onLine(line);
    }
    std::function<void(const QString &)> onLine;
};

class FullListener : public LineListener,
                     public TaskWrapperDataReceiver,
                     public TaskWrapperDrainReceiver
{
public:
    using LineListener::LineListener;
    void receivedData(const QByteArray &data, TaskWrapper &) override
    {
        m_recorder.events << QStringLiteral("data ") + QString::fromUtf8(data);
        if (onData)
            onData();
    }
    void receivedData(const QByteArray &data) override
    {
        drained += data;
        if (onData)
            onData();
    }
    QByteArray drained;
    std::function<void()> onData;
};

const QString terminateNotification = TaskWrapperTerminateNotification;
const QString errorNotification = TaskWrapperTerminateWithErrorNotification;

/// Ends a child that a wrapper has left to itself, and waits until its process object is gone too.
void endChild(qint64 child)
{
    QVERIFY(processRuns(child));
    ::kill(static_cast<pid_t>(child), SIGKILL);
    settle();
}

QStringList lines(std::initializer_list<const char *> texts)
{
    QStringList events;
    for (const char *text : texts)
        events << QStringLiteral("line ") + QString::fromUtf8(text);
    return events;
}

} // namespace

class TestTaskWrapper : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initialState();
    void startWithoutLaunchPathIsRefusedSilently();
    void missingProgramPostsTheErrorNotification();
    void programThatIsNotExecutablePostsTheErrorNotification();
    void secondStartWhileRunningIsRefusedSilently();

    void asynchronousRunReportsInOrder();
    void fastChildIsNotLost();
    void childEndedBySignalLeavesTheSignalsNumber();
    void wrapperCanBeStartedAgain();
    void bothOutputStreamsArriveMerged();
    void delegateWithoutLineReceiverGetsDataOnly();
    void linesWaitWhileTheDelegateRunsADialog();
    void newRunIsHeardWhileTheOldOnesLineRunsADialog();
    void childMayBeKilledBeforeADialog();
    void restOfAChunkIsNotTakenForTheNewRuns();
    void errorInABackgroundReadEndsTheRunSilently();

    void synchronousRunDeliversOneChunkAndAnswersFalse();
    void synchronousRunLeavesTheTerminationStatusAlone();
    void cancelEndsASynchronousRun();

    void everyKindOfLineEndEndsALine();
    void unterminatedTailPrefixesTheNextRunsFirstLine();
    void lineBeforeAPartialLineIsLost_data();
    void lineBeforeAPartialLineIsLost();
    void chunkThatEndsWithALineEndLosesNothing();
    void blankLinesAreDelivered();
    void lineThatNeverEndsIsCutOff();
    void lastOutputIsTheEndOfTheLastRun_data();
    void lastOutputIsTheEndOfTheLastRun();
    void invalidUtf8WithoutATailIsDropped();
    void invalidUtf8BehindATailIsLogged();
    void errorInTheDelegateIsLoggedAndCostsTheRestOfTheChunk();

    void stopWhileIdleDoesNothing();
    void abortWhileIdleStillTellsTheDelegate();
    void abortEndsTheChildThenTellsTheDelegate();
    void stopWithFlushDrainsThePipeUnsplit();
    void errorWhileThePipeIsDrainedEndsTheRun();
    void stopFromInsideALineKeepsDeliveringTheChunk();
    void stopInterruptsAChildThatIgnoresTermination();
    void childThatIgnoresBothSignalsIsKilled();
    void signalsReachTheChildrenOfTheChild();
    void childThatTheChildLeftBehindIsKilled_data();
    void childThatTheChildLeftBehindIsKilled();
    void childHearsSignalsThatTheApplicationBlocks();
    void killIsSilent();
    void destroyedWrapperLeavesItsChildRunning();
    void whatThatChildLeavesBehindIsKilled();
    void childDiesWithTheApplication();

    void emptyEnvironmentIsPassedOn();
    void withoutEnvironmentTheChildInherits();
    void workingDirectoryIsPassedOn();
    void standardInputIsTheNullDevice();
    void childReadsThePipeThatItIsGiven();
};

void TestTaskWrapper::initialState()
{
    const TaskWrapper wrapper;
    QVERIFY(!wrapper.isRunning());
    QCOMPARE(wrapper.terminationStatus(), 0);
    QVERIFY(wrapper.launchPath().isNull());
    QVERIFY(wrapper.lastBeginingLine().isNull());
    QVERIFY(!wrapper.environmentVariables().has_value());
}

void TestTaskWrapper::startWithoutLaunchPathIsRefusedSilently()
{
    Recorder wrapper;
    QVERIFY(!wrapper.startAndWaitUntilExit(false));
    QVERIFY(!wrapper.startAndWaitUntilExit(true));
    QCOMPARE(wrapper.events, QStringList());
}

void TestTaskWrapper::missingProgramPostsTheErrorNotification()
{
    Recorder wrapper;
    FullListener listener(wrapper);
    wrapper.setLaunchPath(QStringLiteral("/nonexistent/tool"));
    QVERIFY(!wrapper.startAndWaitUntilExit(false));
    QVERIFY(!wrapper.isRunning());
    QCOMPARE(wrapper.events, QStringList{errorNotification});
}

void TestTaskWrapper::programThatIsNotExecutablePostsTheErrorNotification()
{
    Recorder wrapper;
    wrapper.setLaunchPath(QStringLiteral("/etc/passwd"));
    QVERIFY(!wrapper.startAndWaitUntilExit(true));
    QCOMPARE(wrapper.events, QStringList{errorNotification});
}

void TestTaskWrapper::secondStartWhileRunningIsRefusedSilently()
{
    Recorder wrapper;
    wrapper.runShell(QStringLiteral("sleep 1000"));
    QVERIFY(wrapper.result);
    QVERIFY(!wrapper.startAndWaitUntilExit(false));
    QVERIFY(wrapper.isRunning());
    QCOMPARE(wrapper.events, QStringList());
    wrapper.stop(false);
}

void TestTaskWrapper::asynchronousRunReportsInOrder()
{
    Recorder wrapper;
    FullListener listener(wrapper);
    wrapper.runShell(QStringLiteral("printf 'a\\nb\\n'; exit 3"));
    QVERIFY(wrapper.result);
    QTRY_VERIFY(!wrapper.isRunning());
    QCOMPARE(wrapper.events, (QStringList{QStringLiteral("data a\nb\n"), QStringLiteral("line a"),
                                          QStringLiteral("line b"), terminateNotification,
                                          QStringLiteral("terminated")}));
    QCOMPARE(wrapper.terminationStatus(), 3);
}

void TestTaskWrapper::fastChildIsNotLost()
{
    for (int run = 0; run < 50; ++run) {
        Recorder wrapper;
        wrapper.setLaunchPath(QStringLiteral("/bin/true"));
        QVERIFY(wrapper.startAndWaitUntilExit(false));
        QTRY_COMPARE(wrapper.events,
                     (QStringList{terminateNotification, QStringLiteral("terminated")}));
    }
}

void TestTaskWrapper::childEndedBySignalLeavesTheSignalsNumber()
{
    Recorder wrapper;
    wrapper.runShell(QStringLiteral("kill -KILL $$"));
    QTRY_VERIFY(!wrapper.isRunning());
    QCOMPARE(wrapper.terminationStatus(), SIGKILL);
}

void TestTaskWrapper::wrapperCanBeStartedAgain()
{
    Recorder wrapper;
    LineListener listener(wrapper);
    for (int run = 0; run < 2; ++run) {
        wrapper.runShell(QStringLiteral("echo run"));
        QVERIFY(wrapper.result);
        QTRY_VERIFY(!wrapper.isRunning());
    }
    QCOMPARE(wrapper.events.count(QStringLiteral("line run")), 2);
}

void TestTaskWrapper::bothOutputStreamsArriveMerged()
{
    Recorder wrapper;
    LineListener listener(wrapper);
    wrapper.runShell(QStringLiteral("echo one; echo two >&2; echo three"), true);
    QCOMPARE(wrapper.events.mid(0, 3), lines({"one", "two", "three"}));
}

void TestTaskWrapper::delegateWithoutLineReceiverGetsDataOnly()
{
    class DataListener : public AbortListener, public TaskWrapperDataReceiver
    {
    public:
        using AbortListener::AbortListener;
        void receivedData(const QByteArray &data, TaskWrapper &) override
        {
            m_recorder.events << QString::fromUtf8(data);
        }
    };
    Recorder wrapper;
    DataListener listener(wrapper);
    wrapper.runShell(QStringLiteral("printf 'a\\nb'"), true);
    QCOMPARE(wrapper.events, (QStringList{QStringLiteral("a\nb"), errorNotification}));
    QVERIFY(wrapper.lastBeginingLine().isNull());
}

void TestTaskWrapper::linesWaitWhileTheDelegateRunsADialog()
{
    QTemporaryDir folder;
    const QString goOn = folder.filePath(QStringLiteral("go-on"));
    Recorder wrapper;
    LineListener listener(wrapper);
    listener.onLine = [&](const QString &line) {
        if (line != QLatin1String("question"))
            return;
        QVERIFY(QFile(goOn).open(QIODevice::WriteOnly));
        settle();
        wrapper.events << QStringLiteral("answered");
    };
    wrapper.runShell(
        QStringLiteral(
            "printf 'question\\nsame chunk\\n'; until test -e '%1'; do sleep 0.01; done; "
            "echo later")
            .arg(goOn));
    QTRY_VERIFY(!wrapper.isRunning());
    QCOMPARE(wrapper.events,
             (QStringList{QStringLiteral("line question"), QStringLiteral("answered"),
                          QStringLiteral("line same chunk"), QStringLiteral("line later"),
                          terminateNotification, QStringLiteral("terminated")}));
}

void TestTaskWrapper::newRunIsHeardWhileTheOldOnesLineRunsADialog()
{
    QTemporaryDir folder;
    const QString heard = folder.filePath(QStringLiteral("heard"));
    Recorder wrapper;
    LineListener listener(wrapper);
    listener.onLine = [&](const QString &line) {
        if (line == QLatin1String("new"))
            QVERIFY(QFile(heard).open(QIODevice::WriteOnly));
        if (line != QLatin1String("old"))
            return;
        wrapper.stop(false);
        wrapper.runShell(QStringLiteral("echo new; until test -e '%1'; do sleep 0.01; done; "
                                        "echo last")
                             .arg(heard));
        QTRY_VERIFY(!wrapper.isRunning());
        wrapper.events << QStringLiteral("answered");
    };
    wrapper.runShell(QStringLiteral("echo old; exec sleep 1000"));
    QTRY_VERIFY(wrapper.events.contains(QStringLiteral("answered")));
    QCOMPARE(wrapper.events,
             (QStringList{QStringLiteral("line old"), terminateNotification,
                          QStringLiteral("terminated"), QStringLiteral("line new"),
                          QStringLiteral("line last"), terminateNotification,
                          QStringLiteral("terminated"), QStringLiteral("answered")}));
}

void TestTaskWrapper::childMayBeKilledBeforeADialog()
{
    Recorder wrapper;
    LineListener listener(wrapper);
    listener.onLine = [&](const QString &line) {
        const qint64 child = line.toLongLong();
        wrapper.kill();
        QTRY_VERIFY(!processRuns(child));
        settle(); // what waits for its deletion is deleted
        wrapper.events << QStringLiteral("answered");
    };
    wrapper.runShell(QStringLiteral("echo $$; exec sleep 1000"));
    QTRY_COMPARE(wrapper.events.value(1), QStringLiteral("answered"));
    QCOMPARE(wrapper.events.size(), 2);
    QVERIFY(!wrapper.isRunning());
}

void TestTaskWrapper::restOfAChunkIsNotTakenForTheNewRuns()
{
    Recorder wrapper;
    FullListener listener(wrapper);
    listener.onLine = [&](const QString &line) {
        if (line != QLatin1String("old"))
            return;
        wrapper.stop(false);
        wrapper.events.clear();
        wrapper.runShell(QStringLiteral("echo new"));
    };
    wrapper.runShell(QStringLiteral("printf 'old\\nrest\\n'; exec sleep 1000"));
    QTRY_COMPARE(wrapper.events,
                 (QStringList{QStringLiteral("data new\n"), QStringLiteral("line new"),
                              terminateNotification, QStringLiteral("terminated")}));
    listener.onLine = nullptr;
    listener.onData = [&] {
        listener.onData = nullptr;
        wrapper.stop(false);
        wrapper.events.clear();
        wrapper.runShell(QStringLiteral("echo newest"));
    };
    wrapper.runShell(QStringLiteral("echo old; exec sleep 1000"));
    QTRY_COMPARE(wrapper.events,
                 (QStringList{QStringLiteral("data newest\n"), QStringLiteral("line newest"),
                              terminateNotification, QStringLiteral("terminated")}));
}

void TestTaskWrapper::errorInABackgroundReadEndsTheRunSilently()
{
    Recorder wrapper;
    FullListener listener(wrapper);
    listener.onData = [] { throw std::runtime_error("no more"); };
    wrapper.runShell(QStringLiteral("echo $$; exec sleep 1000"));
    QTRY_VERIFY(!wrapper.isRunning());
    QCOMPARE(wrapper.events.size(), 1);
    const qint64 child = wrapper.events.takeFirst().mid(5).trimmed().toLongLong();
    QCOMPARE(wrapper.terminationStatus(), 0);
    listener.onData = nullptr;
    wrapper.runShell(QStringLiteral("echo again"));
    QTRY_COMPARE(wrapper.events,
                 (QStringList{QStringLiteral("data again\n"), QStringLiteral("line again"),
                              terminateNotification, QStringLiteral("terminated")}));
    endChild(child);
}

void TestTaskWrapper::synchronousRunDeliversOneChunkAndAnswersFalse()
{
    Recorder wrapper;
    FullListener listener(wrapper);
    wrapper.runShell(QStringLiteral("echo a; sleep 0.05; echo b"), true);
    QVERIFY(!wrapper.result);
    QVERIFY(!wrapper.isRunning());
    QCOMPARE(wrapper.events, (QStringList{QStringLiteral("data a\nb\n"), QStringLiteral("line a"),
                                          QStringLiteral("line b"), errorNotification}));
}

void TestTaskWrapper::synchronousRunLeavesTheTerminationStatusAlone()
{
    Recorder wrapper;
    wrapper.runShell(QStringLiteral("exit 7"), true);
    QCOMPARE(wrapper.terminationStatus(), 0);
}

void TestTaskWrapper::cancelEndsASynchronousRun()
{
    Recorder wrapper;
    const std::unique_ptr<QThread> canceller(QThread::create([&wrapper] {
        while (childProcesses() == 0)
            QThread::yieldCurrentThread();
        wrapper.requestCancel();
    }));
    canceller->start();
    wrapper.runShell(QStringLiteral("sleep 1000"), true);
    QVERIFY(wrapper.isCancelRequested());
    canceller->wait();
    wrapper.runShell(QStringLiteral("sleep 1000"), true);
    QCOMPARE(wrapper.events, (QStringList{errorNotification, errorNotification}));
}

void TestTaskWrapper::everyKindOfLineEndEndsALine()
{
    Recorder wrapper;
    LineListener listener(wrapper);
    wrapper.runShell(QStringLiteral("printf 'x\\r\\ny\\rz\\n'"), true);
    QCOMPARE(wrapper.events.mid(0, 3), lines({"x", "y", "z"}));
    QCOMPARE(wrapper.lastBeginingLine(), QString());
    QVERIFY(!wrapper.lastBeginingLine().isNull());
}

void TestTaskWrapper::unterminatedTailPrefixesTheNextRunsFirstLine()
{
    Recorder wrapper;
    LineListener listener(wrapper);
    wrapper.runShell(QStringLiteral("printf abc"), true);
    QCOMPARE(wrapper.lastBeginingLine(), QStringLiteral("abc"));
    QCOMPARE(wrapper.events, QStringList{errorNotification});
    wrapper.events.clear();
    wrapper.runShell(QStringLiteral("printf 'def\\n'"), true);
    QCOMPARE(wrapper.events.value(0), QStringLiteral("line abcdef"));
}

void TestTaskWrapper::lineBeforeAPartialLineIsLost_data()
{
    QTest::addColumn<QByteArrayList>("chunks");
    QTest::addColumn<QStringList>("delivered");
    QTest::newRow("two lines and a piece")
        << QByteArrayList{"a\nb\nc", "d\n"} << lines({"a", "cd"});
    QTest::newRow("numbers") << QByteArrayList{"1\n2\n3", "4\n"} << lines({"1", "34"});
    QTest::newRow("one line and a piece") << QByteArrayList{"a\nb", "\n"} << lines({"b"});
    QTest::newRow("a piece alone") << QByteArrayList{"a", "b", "c\n"} << lines({"abc"});
}

void TestTaskWrapper::lineBeforeAPartialLineIsLost()
{
    QFETCH(QByteArrayList, chunks);
    Recorder wrapper;
    LineListener listener(wrapper);
    for (const QByteArray &chunk : std::as_const(chunks))
        wrapper.sendDataAsLines(chunk);
    QTEST(wrapper.events, "delivered");
}

void TestTaskWrapper::chunkThatEndsWithALineEndLosesNothing()
{
    Recorder wrapper;
    LineListener listener(wrapper);
    wrapper.sendDataAsLines("1\n2\n3\n");
    QCOMPARE(wrapper.events, lines({"1", "2", "3"}));
}

void TestTaskWrapper::blankLinesAreDelivered()
{
    Recorder wrapper;
    LineListener listener(wrapper);
    wrapper.sendDataAsLines("\na\n\n");
    QCOMPARE(wrapper.events, lines({"", "a", ""}));
}

void TestTaskWrapper::lineThatNeverEndsIsCutOff()
{
    Recorder wrapper;
    LineListener listener(wrapper);
    const QByteArray chunk(1 << 20, 'x');
    for (int n = 0; n < 4; ++n)
        wrapper.sendDataAsLines(chunk);
    QCOMPARE(wrapper.lastBeginingLine().size(), 1 << 20);
    wrapper.sendDataAsLines("\nnext\n");
    QCOMPARE(wrapper.events.size(), 2);
    QCOMPARE(wrapper.events.last(), QStringLiteral("line next"));
}

void TestTaskWrapper::lastOutputIsTheEndOfTheLastRun_data()
{
    QTest::addColumn<bool>("wait");
    QTest::newRow("asynchronous") << false;
    QTest::newRow("synchronous") << true;
}

void TestTaskWrapper::lastOutputIsTheEndOfTheLastRun()
{
    QFETCH(bool, wait);
    Recorder wrapper;
    wrapper.runShell(QStringLiteral("head -c 10000 /dev/zero | tr '\\0' x; printf 'last words'"),
                     wait);
    QTRY_VERIFY(!wrapper.events.isEmpty());
    QCOMPARE(wrapper.lastOutput(), QByteArray(4096 - 10, 'x') + "last words");
    wrapper.runShell(QStringLiteral("echo again"), wait);
    QTRY_COMPARE(wrapper.lastOutput(), QByteArray("again\n"));
}

void TestTaskWrapper::invalidUtf8WithoutATailIsDropped()
{
    Recorder wrapper;
    LineListener listener(wrapper);
    const LogCapture log;
    wrapper.sendDataAsLines("caf\xe9\n");
    QCOMPARE(wrapper.events, QStringList());
    QCOMPARE(LogCapture::lines(), QStringList());
    QVERIFY(wrapper.lastBeginingLine().isNull());
}

void TestTaskWrapper::invalidUtf8BehindATailIsLogged()
{
    Recorder wrapper;
    LineListener listener(wrapper);
    const LogCapture log;
    wrapper.sendDataAsLines("tail");
    wrapper.sendDataAsLines("caf\xe9\n");
    QCOMPARE(wrapper.events, QStringList());
    QCOMPARE(LogCapture::lines(), QStringList{QStringLiteral("The output is not valid UTF-8")});
    QCOMPARE(wrapper.lastBeginingLine(), QStringLiteral("tail"));
}

void TestTaskWrapper::errorInTheDelegateIsLoggedAndCostsTheRestOfTheChunk()
{
    Recorder wrapper;
    LineListener listener(wrapper);
    listener.onLine = [](const QString &line) {
        if (line == QLatin1String("2"))
            throw std::out_of_range("index 1 beyond bounds");
    };
    const LogCapture log;
    wrapper.sendDataAsLines("1\n2\n3\n");
    wrapper.sendDataAsLines("4\n");
    QCOMPARE(wrapper.events, lines({"1", "2", "4"}));
    QCOMPARE(LogCapture::lines(), QStringList{QStringLiteral("index 1 beyond bounds")});
}

void TestTaskWrapper::stopWhileIdleDoesNothing()
{
    Recorder wrapper;
    AbortListener listener(wrapper);
    wrapper.stop(false);
    wrapper.stop(true);
    wrapper.kill();
    QCOMPARE(wrapper.events, QStringList());
}

void TestTaskWrapper::abortWhileIdleStillTellsTheDelegate()
{
    Recorder wrapper;
    AbortListener listener(wrapper);
    wrapper.abort();
    QCOMPARE(wrapper.events, QStringList{QStringLiteral("aborted")});
}

void TestTaskWrapper::abortEndsTheChildThenTellsTheDelegate()
{
    Recorder wrapper;
    LineListener listener(wrapper);
    wrapper.runShell(QStringLiteral("echo up; exec sleep 1000"));
    QTRY_COMPARE(wrapper.events, lines({"up"}));
    wrapper.events.clear();
    wrapper.abort();
    QCOMPARE(wrapper.events, (QStringList{terminateNotification, QStringLiteral("terminated"),
                                          QStringLiteral("aborted")}));
    QCOMPARE(wrapper.terminationStatus(), SIGTERM);
    QVERIFY(!wrapper.isRunning());
}

void TestTaskWrapper::stopWithFlushDrainsThePipeUnsplit()
{
    Recorder wrapper;
    FullListener listener(wrapper);
    wrapper.runShell(QStringLiteral("trap 'echo last words; exit' TERM; echo up; "
                                    "while :; do :; done"));
    QTRY_VERIFY(wrapper.events.contains(QStringLiteral("line up")));
    wrapper.events.clear();
    wrapper.stop(true);
    QCOMPARE(listener.drained, QByteArray("last words\n"));
    QCOMPARE(wrapper.events, (QStringList{terminateNotification, QStringLiteral("terminated")}));
}

void TestTaskWrapper::errorWhileThePipeIsDrainedEndsTheRun()
{
    Recorder wrapper;
    FullListener listener(wrapper);
    wrapper.runShell(QStringLiteral("trap 'echo last words; exec sleep 1000' TERM; echo $$; "
                                    "while :; do :; done"));
    QTRY_COMPARE(wrapper.events.size(), 2);
    const qint64 child = wrapper.events.last().mid(5).toLongLong();
    wrapper.events.clear();
    listener.onData = [] { throw std::runtime_error("no more"); };
    wrapper.stop(true);
    QVERIFY(!wrapper.isRunning());
    QCOMPARE(listener.drained, QByteArray("last words\n"));
    QCOMPARE(wrapper.terminationStatus(), 0);
    QCOMPARE(wrapper.events, (QStringList{terminateNotification, QStringLiteral("terminated")}));
    endChild(child);
}

void TestTaskWrapper::stopInterruptsAChildThatIgnoresTermination()
{
    Recorder wrapper;
    LineListener listener(wrapper);
    // A shell that is about to start a program when the signal comes would wait for its end.
    wrapper.runShell(
        QStringLiteral("trap '' TERM; trap 'exit 7' INT; echo up; while :; do :; done"));
    QTRY_COMPARE(wrapper.events, lines({"up"}));
    wrapper.stop(false);
    QCOMPARE(wrapper.terminationStatus(), 7);
}

void TestTaskWrapper::stopFromInsideALineKeepsDeliveringTheChunk()
{
    Recorder wrapper;
    LineListener listener(wrapper);
    listener.onLine = [&](const QString &line) {
        if (line == QLatin1String("Done"))
            wrapper.stop(false);
    };
    wrapper.runShell(QStringLiteral("printf 'Done\\nafter\\n'; exec sleep 1000"));
    QTRY_VERIFY(!wrapper.isRunning());
    QCOMPARE(wrapper.events,
             (QStringList{QStringLiteral("line Done"), terminateNotification,
                          QStringLiteral("terminated"), QStringLiteral("line after")}));
}

void TestTaskWrapper::childThatIgnoresBothSignalsIsKilled()
{
    QCOMPARE(TaskWrapper::gracePeriod(), std::chrono::seconds(5));
    const ShortGrace grace;
    Recorder wrapper;
    LineListener listener(wrapper);
    wrapper.runShell(QStringLiteral("trap '' TERM INT; echo up; while :; do sleep 1; done"));
    QTRY_COMPARE(wrapper.events, lines({"up"}));
    wrapper.stop(false);
    QCOMPARE(wrapper.terminationStatus(), SIGKILL);
}

void TestTaskWrapper::signalsReachTheChildrenOfTheChild()
{
    Recorder wrapper;
    LineListener listener(wrapper);
    wrapper.runShell(QStringLiteral("sleep 1000 & echo $!; wait"));
    QTRY_COMPARE(wrapper.events.size(), 1);
    const qint64 grandchild = wrapper.events.first().mid(5).toLongLong();
    QVERIFY(processRuns(grandchild));
    wrapper.stop(false);
    QTRY_VERIFY(!processRuns(grandchild));
}

void TestTaskWrapper::childThatTheChildLeftBehindIsKilled_data()
{
    QTest::addColumn<bool>("wait");
    QTest::newRow("asynchronous") << false;
    QTest::newRow("synchronous") << true;
}

void TestTaskWrapper::childThatTheChildLeftBehindIsKilled()
{
    QFETCH(bool, wait);
    Recorder wrapper;
    LineListener listener(wrapper);
    // It keeps the pipe open and hears no signal that can be ignored.
    wrapper.runShell(QStringLiteral("trap '' TERM INT HUP; sleep 1000 & echo $!"), wait);
    QTRY_COMPARE(wrapper.events.size(), wait ? 2 : 3);
    const qint64 leftBehind = wrapper.events.first().mid(5).toLongLong();
    QVERIFY(leftBehind > 0);
    QTRY_VERIFY(!processRuns(leftBehind));
}

void TestTaskWrapper::childHearsSignalsThatTheApplicationBlocks()
{
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, SIGTERM);
    sigset_t before;
    QVERIFY(pthread_sigmask(SIG_BLOCK, &ending, &before) == 0);
    Recorder wrapper;
    wrapper.runShell(QStringLiteral("exec sleep 1000"));
    QVERIFY(pthread_sigmask(SIG_SETMASK, &before, nullptr) == 0);
    wrapper.stop(false);
    QCOMPARE(wrapper.terminationStatus(), SIGTERM);
}

void TestTaskWrapper::killIsSilent()
{
    Recorder wrapper;
    LineListener listener(wrapper);
    wrapper.runShell(QStringLiteral("echo $$; exec sleep 1000"));
    QTRY_COMPARE(wrapper.events.size(), 1);
    const qint64 child = wrapper.events.takeFirst().mid(5).toLongLong();
    wrapper.kill();
    QVERIFY(!wrapper.isRunning());
    QCOMPARE(wrapper.events, QStringList());
    QCOMPARE(wrapper.terminationStatus(), 0);
    QTRY_VERIFY(!processRuns(child));
}

void TestTaskWrapper::destroyedWrapperLeavesItsChildRunning()
{
    QTemporaryDir folder;
    const QString goOn = folder.filePath(QStringLiteral("go-on"));
    const QString survived = folder.filePath(QStringLiteral("survived"));
    {
        Recorder wrapper;
        LineListener listener(wrapper);
        wrapper.runShell(
            QStringLiteral("echo up; until test -e '%1'; do sleep 0.01; done; : > '%2'")
                .arg(goOn, survived));
        QTRY_COMPARE(wrapper.events, lines({"up"}));
    }
    QVERIFY(QFile(goOn).open(QIODevice::WriteOnly));
    QTRY_VERIFY(QFile::exists(survived));
}

void TestTaskWrapper::whatThatChildLeavesBehindIsKilled()
{
    QTemporaryDir folder;
    const QString goOn = folder.filePath(QStringLiteral("go-on"));
    qint64 leftBehind = 0;
    {
        Recorder wrapper;
        LineListener listener(wrapper);
        wrapper.runShell(QStringLiteral("trap '' TERM INT HUP; sleep 1000 & echo $!; "
                                        "until test -e '%1'; do sleep 0.01; done")
                             .arg(goOn));
        QTRY_COMPARE(wrapper.events.size(), 1);
        leftBehind = wrapper.events.first().mid(5).toLongLong();
    }
    QVERIFY(processRuns(leftBehind));
    QVERIFY(QFile(goOn).open(QIODevice::WriteOnly));
    QTRY_VERIFY(!processRuns(leftBehind));
}

void TestTaskWrapper::childDiesWithTheApplication()
{
    QProcess application;
    application.start(QStringLiteral(DYING_APPLICATION), QStringList());
    QVERIFY(application.waitForStarted());
    QTRY_VERIFY(application.canReadLine());
    const qint64 child = application.readLine().trimmed().toLongLong();
    QVERIFY(processRuns(child));
    application.kill();
    QVERIFY(application.waitForFinished());
    QTRY_VERIFY(!processRuns(child));
}

void TestTaskWrapper::emptyEnvironmentIsPassedOn()
{
    Recorder wrapper;
    LineListener listener(wrapper);
    wrapper.setEnvironmentVariables(QProcessEnvironment());
    wrapper.runShell(QStringLiteral("/usr/bin/tr '\\0' '\\n' < /proc/$$/environ; echo end"), true);
    QCOMPARE(wrapper.events, (QStringList{QStringLiteral("line end"), errorNotification}));
}

void TestTaskWrapper::withoutEnvironmentTheChildInherits()
{
    qputenv("FILMWRIGHT_TEST_VARIABLE", "inherited");
    Recorder wrapper;
    LineListener listener(wrapper);
    wrapper.runShell(QStringLiteral("echo $FILMWRIGHT_TEST_VARIABLE"), true);
    QCOMPARE(wrapper.events.value(0), QStringLiteral("line inherited"));
}

void TestTaskWrapper::workingDirectoryIsPassedOn()
{
    QTemporaryDir folder;
    Recorder wrapper;
    LineListener listener(wrapper);
    wrapper.setCurrentDirectoryPath(folder.path());
    wrapper.runShell(QStringLiteral("pwd -P"), true);
    QCOMPARE(wrapper.events.value(0),
             QStringLiteral("line ") + QFileInfo(folder.path()).canonicalFilePath());
}

void TestTaskWrapper::standardInputIsTheNullDevice()
{
    Recorder wrapper;
    LineListener listener(wrapper);
    wrapper.runShell(QStringLiteral("readlink /proc/self/fd/0; cat"), true);
    QCOMPARE(wrapper.events.value(0), QStringLiteral("line /dev/null"));
}

void TestTaskWrapper::childReadsThePipeThatItIsGiven()
{
    std::array<int, 2> ends{};
    QCOMPARE(pipe2(ends.data(), O_CLOEXEC), 0);
    QCOMPARE(::write(ends[1], "frames\n", 7), 7);
    close(ends[1]);
    Recorder wrapper;
    LineListener listener(wrapper);
    wrapper.setStandardInput(ends[0]);
    wrapper.runShell(QStringLiteral("cat"), true);
    close(ends[0]);
    QCOMPARE(wrapper.events.value(0), QStringLiteral("line frames"));
    wrapper.setStandardInput(-1);
    wrapper.events.clear();
    wrapper.runShell(QStringLiteral("readlink /proc/self/fd/0"), true);
    QCOMPARE(wrapper.events.value(0), QStringLiteral("line /dev/null"));
}

FILMWRIGHT_TEST(TestTaskWrapper, QCoreApplication)
#include "tst_taskwrapper.moc"
