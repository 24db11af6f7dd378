// SPDX-License-Identifier: MIT
#include "commandline.h"

#include <QDeadlineTimer>
#include <QDir>

#include <chrono>
#include <csignal>

using namespace std::chrono_literals;

namespace {

constexpr std::chrono::milliseconds limit = 2min;

} // namespace

CommandLine::CommandLine()
    : program(QStringLiteral(FILMWRIGHT_CLI))
{
}

bool CommandLine::run(const QStringList &arguments)
{
    start(arguments);
    return waitForEnd();
}

void CommandLine::start(const QStringList &arguments)
{
    m_output.clear();
    m_messages.clear();
    environment.insert(QStringLiteral("TMPDIR"), m_temporaryFolder.path());
    constexpr char resources[] = "FILMWRIGHT_RESOURCES";
    if (qEnvironmentVariableIsSet(resources))
        environment.insert(QLatin1String(resources), qEnvironmentVariable(resources));
    m_process.setProcessEnvironment(environment);
    m_process.start(program, arguments, QIODevice::ReadOnly);
    m_process.waitForStarted();
}

bool CommandLine::waitForEnd()
{
    const bool ended = m_process.state() == QProcess::NotRunning ||
                       m_process.waitForFinished(static_cast<int>(limit.count()));
    readAll();
    return ended;
}

bool CommandLine::waitForMessage(const QString &text)
{
    const QDeadlineTimer deadline(limit);
    m_process.setReadChannel(QProcess::StandardError);
    while (!m_messages.contains(text.toUtf8())) {
        if (!m_process.waitForReadyRead(static_cast<int>(deadline.remainingTime())))
            return false;
        readAll();
    }
    return true;
}

void CommandLine::sendSignal(int signal)
{
    ::kill(static_cast<pid_t>(m_process.processId()), signal);
}

QStringList CommandLine::temporaryEntries() const
{
    return QDir(m_temporaryFolder.path())
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

QStringList CommandLine::lines(const QByteArray &text)
{
    return QString::fromUtf8(text).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

qsizetype CommandLine::tableStart() const
{
    const qsizetype start = m_messages.indexOf("\nrecording ");
    return start < 0 ? m_messages.size() : start + 1;
}

void CommandLine::readAll()
{
    m_output += m_process.readAllStandardOutput();
    m_messages += m_process.readAllStandardError();
}
