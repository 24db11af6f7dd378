// SPDX-License-Identifier: MIT
#pragma once

#include "runner/taskwrapperdelegate.h"

#include <QObject>
#include <QProcessEnvironment>
#include <QStringList>

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <sys/types.h>

class QProcess;

namespace filmwright {

/// Posted with the wrapper as sender each time a running wrapper is stopped, by whatever means.
inline constexpr QLatin1String TaskWrapperTerminateNotification("TaskWrapperTerminateNotification");

/// Posted with the wrapper as sender when a launch failed, and after every synchronous run.
inline constexpr QLatin1String
    TaskWrapperTerminateWithErrorNotification("TaskWrapperTerminateWithErrorNotification");

/// Runs one external tool at a time as a child process and turns what it prints (standard output
/// and standard error merged) into calls on a delegate.
///
/// The child reads the null device unless it is given something to read, leads a process group of
/// its own, so that signals reach its children too, hears every signal, also those that the
/// application blocks, and dies with the application; what it has started and left behind is killed
/// at its end. How a run ended is never judged here: subclasses recognise failures from the tool's
/// text.
///
/// A wrapper is driven from one thread, on which all delegate calls arrive; only requestCancel()
/// may come from another. An asynchronous run needs that thread's event loop. A wrapper may be
/// stopped and started again inside its own delegate calls, but not destroyed (use deleteLater()).
class TaskWrapper : public QObject
{
    Q_OBJECT

public:
    TaskWrapper();
    /// Doesn't kill a child that still runs; it ends by itself, or with the application.
    ~TaskWrapper() override;

    QStringList arguments() const { return m_arguments; }
    void setArguments(const QStringList &arguments) { m_arguments = arguments; }

    /// Absolute path of the tool; while it is null, nothing starts.
    QString launchPath() const { return m_launchPath; }
    void setLaunchPath(const QString &launchPath) { m_launchPath = launchPath; }

    /// The child's whole environment; without a value it inherits the application's.
    std::optional<QProcessEnvironment> environmentVariables() const
    {
        return m_environmentVariables;
    }
    void setEnvironmentVariables(std::optional<QProcessEnvironment> environmentVariables)
    {
        m_environmentVariables = std::move(environmentVariables);
    }

    /// The child's working directory; a null string is the application's.
    QString currentDirectoryPath() const { return m_currentDirectoryPath; }
    void setCurrentDirectoryPath(const QString &path) { m_currentDirectoryPath = path; }

    /// What children read as their standard input, an open descriptor that stays the caller's; -1:
    /// the null device.
    void setStandardInput(int descriptor) { m_standardInput = descriptor; }

    /// Not owned; cleared by its owner before it goes away.
    TaskWrapperDelegate *taskWrapperdelegate() const { return m_taskWrapperdelegate; }
    void setTaskWrapperdelegate(TaskWrapperDelegate *delegate) { m_taskWrapperdelegate = delegate; }

    /// The exit status as read by stop(): the tool's own, or the number of the signal that ended
    /// it.
    int terminationStatus() const { return m_terminationStatus; }

    /// The end of what the current or last run has printed, at most 4096 bytes, as it came: for
    /// whoever has to tell what a tool said before it failed.
    QByteArray lastOutput() const { return m_lastOutput; }

    /// True from a successful asynchronous launch to the end of that run.
    bool isRunning() const { return m_running; }

    /// Asynchronous start; a failed launch is only told by the notification.
    virtual void start();

    /// With `wait` false: launches the child and returns; true when it runs. With `wait` true:
    /// blocks until the child has exited and delivers its whole output in one chunk.
    ///
    /// A synchronous run always answers false, posts TaskWrapperTerminateWithErrorNotification and
    /// leaves terminationStatus() alone: it reports by its output only.
    virtual bool startAndWaitUntilExit(bool wait);

    /// Ends a running child (termination signal, then interrupt; killed when it ignores both for
    /// the grace period), reads its status, posts TaskWrapperTerminateNotification and calls
    /// taskWrapperTerminated(). With `flush`, what the pipe still holds is delivered first. Does
    /// nothing while idle. Blocks until the child has exited.
    void stop(bool flush);

    /// How long a child that should end by itself is waited for, of all wrappers; 5 s unless set.
    /// May be set at any time, on any thread; a wait that has begun keeps its own.
    static std::chrono::milliseconds gracePeriod() { return s_gracePeriod; }
    static void setGracePeriod(std::chrono::milliseconds period) { s_gracePeriod = period; }

    /// stop(false), then aborted() on the delegate, also when there was nothing to stop.
    void abort();

    /// Ends a running child without waiting for it, reading its status or telling anyone.
    void kill();

    /// Makes the current and every later synchronous run of this wrapper end its child soon. May be
    /// called on any thread.
    void requestCancel() { m_cancelRequested = true; }
    /// Lets synchronous runs start as usual again. On the thread that drives the wrapper.
    void clearCancelRequest() { m_cancelRequested = false; }
    bool isCancelRequested() const { return m_cancelRequested; }

    /// Splits output at CR LF, LF or CR and delivers the complete lines. When the chunk ends in the
    /// middle of a line, that piece is carried over to the next chunk and the complete line before
    /// it is dropped. Of a line that doesn't end for more than 1,048,576 characters, the rest is
    /// dropped. So are the lines behind one in whose delivery a new run was started.
    void sendDataAsLines(const QByteArray &data);

    /// The unterminated tail of the output so far, also of earlier runs; null before any output.
    QString lastBeginingLine() const { return m_lastBeginingLine; }

protected:
    /// Called at the very end of stop(), after the notification.
    virtual void taskWrapperTerminated() {}

    /// Called as soon as an asynchronous run has ended, by whatever means, the silent ones
    /// included.
    virtual void runEnded() {}

    /// True inside abort(), for a subclass that reports either an end or an abort, never both.
    bool isAborting() const { return m_aborting; }

private:
    inline static std::atomic<std::chrono::milliseconds> s_gracePeriod{std::chrono::seconds(5)};

    void createChild();
    bool launch();
    void runUntilExit();
    void releaseAfterFailedStart();
    void completeBackgroundRead();
    void endRun();
    void onEventData(const QByteArray &data);
    void deliver(const QByteArray &data);
    void drain();
    void interruptAndReap();
    void releaseChild();

    QStringList m_arguments;
    QString m_launchPath;
    std::unique_ptr<QProcess> m_internalTask;
    TaskWrapperDelegate *m_taskWrapperdelegate = nullptr;
    std::optional<QProcessEnvironment> m_environmentVariables;
    QString m_currentDirectoryPath;
    int m_standardInput = -1;
    QString m_lastBeginingLine;
    QByteArray m_lastOutput;
    pid_t m_group = 0; ///< the child's process group; 0 when none is to be ended
    bool m_running = false;
    quint64 m_run = 0;        ///< the number of the current or last run, from 1
    quint64 m_delivering = 0; ///< the run whose output is being delivered; 0 for none
    bool m_aborting = false;
    int m_terminationStatus = 0;
    std::atomic<bool> m_cancelRequested = false;
};

} // namespace filmwright
