// SPDX-License-Identifier: MIT
#include "mlvdump/recordingcheck.h"

#include "runner/resources.h"

#include <QRegularExpression>

namespace filmwright {

QStringList CheckResult::errors() const
{
    return (error.isEmpty() ? QStringList() : QStringList{error}) + losses;
}

RecordingCheck::RecordingCheck()
{
    setLaunchPath(resourcePath(mlvDumpName));
    setTaskWrapperdelegate(this);
}

RecordingCheck::~RecordingCheck()
{
    setTaskWrapperdelegate(nullptr);
    disconnect();
    stop(false);
}

void RecordingCheck::check(const QString &recording, Depth depth)
{
    m_result = {};
    m_bytesDone = 0;
    m_bytes = 0;
    m_isComplete = false;
    setArguments(
        {depth == Survey ? QStringLiteral("--survey") : QStringLiteral("--verify"), recording});
    start();
    if (!isRunning())
        QMetaObject::invokeMethod(this, &RecordingCheck::finish, Qt::QueuedConnection);
}

void RecordingCheck::receivedLine(const QString &line, TaskWrapper &)
{
    const auto behind = [&line](const char *mark) {
        const QLatin1String prefix(mark);
        return line.startsWith(prefix) ? line.sliced(prefix.size()) : QString();
    };
    if (const QString loss = behind("[LOST] "); !loss.isEmpty())
        m_result.losses << loss;
    else if (const QString remark = behind("[WARNING] ") + behind("[NOTE] "); !remark.isEmpty())
        m_result.remarks << remark;
    else if (const QString error = behind("[UNUSABLE] ") + behind("[ERROR] "); !error.isEmpty())
        m_result.error = error;
    else if (line == QLatin1String("Done"))
        m_isComplete = true;
    static const QRegularExpression counts(
        QStringLiteral("^Checked (\\d+) of (\\d+) bytes$|^Processed (\\d+) "));
    const auto match = counts.match(line);
    if (!match.captured(2).isEmpty()) {
        m_bytesDone = match.captured(1).toULongLong();
        m_bytes = match.captured(2).toULongLong();
        Q_EMIT progressed();
    }
    if (!match.captured(3).isEmpty())
        m_result.frames = match.captured(3).toULongLong();
}

void RecordingCheck::taskWrapperTerminated()
{
    if (!isAborting())
        finish();
}

void RecordingCheck::finish()
{
    if (!m_isComplete && m_result.error.isEmpty())
        m_result.error = QStringLiteral("mlv_dump ended before it had read the recording");
    if (!m_result.error.isEmpty())
        m_result.verdict = CheckResult::Unusable;
    else
        m_result.verdict = m_result.losses.isEmpty() ? CheckResult::Whole : CheckResult::Lossy;
    Q_EMIT ended();
}

} // namespace filmwright

#include "moc_recordingcheck.cpp"
