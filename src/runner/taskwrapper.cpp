// SPDX-License-Identifier: MIT
#include "runner/taskwrapper.h"

#include "runner/notificationcenter.h"
#include "runner/systemlog.h"

#include <QDeadlineTimer>
#include <QProcess>
#include <QScopedValueRollback>

#include <chrono>
#include <csignal>
#include <stdexcept>
#include <sys/prctl.h>
#include <unistd.h>
#include <utility>

using namespace std::chrono_literals;

namespace filmwright {

namespace {

constexpr std::chrono::milliseconds cancelPollInterval = 100ms;
constexpr qsizetype keptOutput = 4096;
/// A tool that floods its output without a line end must not flood the memory too.
constexpr qsizetype maxLineLength = qsizetype(1) << 20;

int milliseconds(std::chrono::milliseconds duration)
{
    return static_cast<int>(duration.count());
}

void signalProcessGroup(const QProcess &child, int signal)
{
    const auto leader = static_cast<pid_t>(child.processId());
    if (leader > 0)
        ::kill(-leader, signal);
}

/// A child of the tool that outlives it would go on writing where nobody expects it any more. While
/// one lives, the group's number belongs to it.
void endGroup(pid_t group)
{
    if (group > 0)
        ::kill(-group, SIGKILL);
}

/// A QProcess kills its child when it is destroyed.
void deleteAfterExit(QProcess *child)
{
    if (child->state() == QProcess::NotRunning)
        child->deleteLater();
    else
        QObject::connect(child, &QProcess::finished, child, &QObject::deleteLater);
}

/// Runs in the child between fork and exec, where only async-signal-safe calls are allowed.
void prepareChild(pid_t application, int standardInput)
{
    if (standardInput >= 0 && dup2(standardInput, STDIN_FILENO) < 0)
        _exit(EXIT_FAILURE);
    setpgid(0, 0);
    // What the application waits for in its own way would reach no child.
    sigset_t none;
    sigemptyset(&none);
    pthread_sigmask(SIG_SETMASK, &none, nullptr);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    // The application may have died before the death signal was asked for.
    if (getppid() != application)
        _exit(EXIT_FAILURE);
}

} // namespace

TaskWrapper::TaskWrapper() = default;

TaskWrapper::~TaskWrapper()
{
    releaseChild();
}

void TaskWrapper::start()
{
    startAndWaitUntilExit(false);
}

bool TaskWrapper::startAndWaitUntilExit(bool wait)
{
    if (m_running || m_launchPath.isNull())
        return false;
    createChild();
    bool stillRunning = false;
    try {
        stillRunning = launch();
        if (wait) {
            if (stillRunning)
                runUntilExit();
            stillRunning = false;
        }
    } catch (const std::exception &) {
        stillRunning = false;
    }
    if (!stillRunning) {
        releaseAfterFailedStart();
        return false;
    }
    m_running = true;
    connect(m_internalTask.get(), &QProcess::readyRead, this, &TaskWrapper::completeBackgroundRead);
    connect(m_internalTask.get(), &QProcess::finished, this, &TaskWrapper::completeBackgroundRead);
    return true;
}

void TaskWrapper::createChild()
{
    releaseChild();
    ++m_run;
    m_lastOutput.clear();
    m_internalTask = std::make_unique<QProcess>();
    m_internalTask->setProgram(m_launchPath);
    m_internalTask->setArguments(m_arguments);
    m_internalTask->setProcessChannelMode(QProcess::MergedChannels);
    m_internalTask->setStandardInputFile(QProcess::nullDevice());
    m_internalTask->setChildProcessModifier(
        [application = getpid(), input = m_standardInput] { prepareChild(application, input); });
    if (!m_currentDirectoryPath.isNull())
        m_internalTask->setWorkingDirectory(m_currentDirectoryPath);
    if (m_environmentVariables)
        m_internalTask->setProcessEnvironment(*m_environmentVariables);
}

bool TaskWrapper::launch()
{
    m_internalTask->start(QIODevice::ReadOnly);
    const bool started = m_internalTask->waitForStarted(-1);
    m_group = static_cast<pid_t>(m_internalTask->processId());
    return started && m_internalTask->state() == QProcess::Running;
}

void TaskWrapper::runUntilExit()
{
    while (m_internalTask->state() != QProcess::NotRunning &&
           !m_internalTask->waitForFinished(milliseconds(cancelPollInterval))) {
        if (m_cancelRequested) {
            signalProcessGroup(*m_internalTask, SIGTERM);
            interruptAndReap();
        }
    }
    const QByteArray output = m_internalTask->readAll();
    if (!output.isEmpty())
        deliver(output);
}

void TaskWrapper::releaseAfterFailedStart()
{
    endGroup(std::exchange(m_group, 0));
    releaseChild();
    m_running = false;
    NotificationCenter::defaultCenter().post(TaskWrapperTerminateWithErrorNotification, this);
}

void TaskWrapper::endRun()
{
    m_running = false;
    runEnded();
}

/// The pipe is read only when the run's last chunk has been dealt with, so that a delegate that
/// runs a dialog keeps the order of the lines. A run that the delegate starts meanwhile has its
/// own.
void TaskWrapper::completeBackgroundRead()
{
    if (m_delivering == m_run || !m_running)
        return;
    QProcess *const child = m_internalTask.get();
    {
        const QScopedValueRollback delivering(m_delivering, m_run);
        const QByteArray data = child->readAll();
        if (!data.isEmpty() || child->state() == QProcess::NotRunning)
            onEventData(data);
    }
    if (child != m_internalTask.get())
        deleteAfterExit(child);
    else if (m_running && (child->bytesAvailable() > 0 || child->state() == QProcess::NotRunning))
        QMetaObject::invokeMethod(this, &TaskWrapper::completeBackgroundRead, Qt::QueuedConnection);
}

/// No data means the end of the output.
void TaskWrapper::onEventData(const QByteArray &data)
{
    if (!m_running)
        return;
    const quint64 run = m_run;
    try {
        if (data.isEmpty())
            stop(false);
        else
            deliver(data);
    } catch (const std::exception &) {
        if (m_running && run == m_run)
            endRun();
    }
}

void TaskWrapper::deliver(const QByteArray &data)
{
    const quint64 run = m_run;
    m_lastOutput = (m_lastOutput + data.right(keptOutput)).right(keptOutput);
    if (auto *receiver = dynamic_cast<TaskWrapperDataReceiver *>(m_taskWrapperdelegate))
        receiver->receivedData(data, *this);
    if (run == m_run && dynamic_cast<TaskWrapperLineReceiver *>(m_taskWrapperdelegate))
        sendDataAsLines(data);
}

void TaskWrapper::sendDataAsLines(const QByteArray &data)
{
    try {
        if (!data.isValidUtf8()) {
            if (!m_lastBeginingLine.isEmpty())
                throw std::invalid_argument("The output is not valid UTF-8");
            return;
        }
        // More of a line that is cut off already: a flood isn't worth a copy of it a chunk.
        if (m_lastBeginingLine.size() >= maxLineLength && !data.contains('\n') &&
            !data.contains('\r'))
            return;
        QString text = m_lastBeginingLine + QString::fromUtf8(data);
        text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
        text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
        QStringList lines = text.split(QLatin1Char('\n'));
        m_lastBeginingLine = lines.takeLast().left(maxLineLength);
        // The complete line in front of a partial one is dropped on purpose: the callers' texts are
        // laid out for it, and the bundled tools never let a chunk end inside a line.
        if (!m_lastBeginingLine.isEmpty() && !lines.isEmpty())
            lines.removeLast();
        if (m_lastBeginingLine.isNull())
            m_lastBeginingLine = QLatin1String("");
        const quint64 run = m_run;
        for (const QString &line : std::as_const(lines)) {
            if (run != m_run)
                return; // the delegate has started another run, whose lines these are not
            if (auto *receiver = dynamic_cast<TaskWrapperLineReceiver *>(m_taskWrapperdelegate))
                receiver->receivedLine(line, *this);
        }
    } catch (const std::exception &error) {
        systemLog(QString::fromUtf8(error.what()));
    }
}

void TaskWrapper::stop(bool flush)
{
    if (!m_running)
        return;
    m_internalTask->disconnect(this);
    signalProcessGroup(*m_internalTask, SIGTERM);
    try {
        if (flush)
            drain();
        interruptAndReap();
        m_terminationStatus = m_internalTask->exitCode();
    } catch (const std::exception &) {
        // The delegate's own: the run ends all the same, its child by itself.
    }
    releaseChild();
    endRun();
    NotificationCenter::defaultCenter().post(TaskWrapperTerminateNotification, this);
    taskWrapperTerminated();
}

void TaskWrapper::drain()
{
    const QDeadlineTimer deadline(gracePeriod());
    do {
        const QByteArray data = m_internalTask->readAll();
        auto *receiver = dynamic_cast<TaskWrapperDrainReceiver *>(m_taskWrapperdelegate);
        if (receiver && !data.isEmpty())
            receiver->receivedData(data);
    } while (m_internalTask->bytesAvailable() > 0 ||
             m_internalTask->waitForReadyRead(static_cast<int>(deadline.remainingTime())));
}

void TaskWrapper::interruptAndReap()
{
    signalProcessGroup(*m_internalTask, SIGINT);
    if (m_internalTask->state() != QProcess::NotRunning &&
        !m_internalTask->waitForFinished(milliseconds(gracePeriod()))) {
        signalProcessGroup(*m_internalTask, SIGKILL);
        m_internalTask->waitForFinished(-1);
    }
    endGroup(std::exchange(m_group, 0));
}

void TaskWrapper::abort()
{
    {
        const QScopedValueRollback aborting(m_aborting, true);
        stop(false);
    }
    if (m_taskWrapperdelegate)
        m_taskWrapperdelegate->aborted();
}

void TaskWrapper::kill()
{
    if (!m_running)
        return;
    signalProcessGroup(*m_internalTask, SIGTERM);
    signalProcessGroup(*m_internalTask, SIGINT);
    releaseChild();
    endRun();
}

/// A child that still runs is left to itself, unread; what it has left behind is killed at its end.
void TaskWrapper::releaseChild()
{
    if (!m_internalTask)
        return;
    m_internalTask->disconnect(this);
    QProcess *const child = m_internalTask.release();
    const pid_t group = std::exchange(m_group, 0);
    const bool hasExited = child->state() == QProcess::NotRunning;
    if (hasExited) {
        endGroup(group);
    } else {
        child->closeReadChannel(QProcess::StandardOutput);
        connect(child, &QProcess::finished, child, [group] { endGroup(group); });
    }
    if (m_delivering == m_run)
        return; // one of its signals is on the stack, where it is deleted at the end
    if (hasExited)
        delete child;
    else
        deleteAfterExit(child);
}

} // namespace filmwright

#include "moc_taskwrapper.cpp"
