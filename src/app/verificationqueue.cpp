// SPDX-License-Identifier: MIT
#include "app/verificationqueue.h"

#include "runner/readabletext.h"

#include <QFileInfo>

namespace filmwright {

VerificationQueue::VerificationQueue()
{
    connect(&m_check, &RecordingCheck::progressed, this, &VerificationQueue::changed);
    connect(&m_check, &RecordingCheck::ended, this, &VerificationQueue::noteResult,
            Qt::QueuedConnection); // the tool can be started again then
}

void VerificationQueue::add(const QStringList &recordings)
{
    const bool idle = !isRunning();
    for (const QString &recording : recordings) {
        if (!m_waiting.contains(recording)) {
            m_results.remove(recording);
            m_waiting << recording;
        }
    }
    if (idle)
        next();
    Q_EMIT changed();
}

void VerificationQueue::stop()
{
    m_waiting.clear();
    m_check.abort();
    Q_EMIT changed();
}

void VerificationQueue::next()
{
    if (isRunning())
        m_check.check(m_waiting.constFirst(), RecordingCheck::Everything);
}

void VerificationQueue::noteResult()
{
    if (!isRunning() || m_check.isRunning())
        return; // it was stopped meanwhile
    m_results.insert(m_waiting.takeFirst(), m_check.result());
    next();
    Q_EMIT changed();
}

QString VerificationQueue::part() const
{
    return percentText(static_cast<double>(m_check.bytesDone()),
                       static_cast<double>(m_check.bytes()));
}

QString VerificationQueue::stateText(const QString &recording) const
{
    if (isRunning() && recording == m_waiting.constFirst())
        return QStringLiteral("Verifying, %1").arg(part());
    if (m_waiting.contains(recording))
        return QStringLiteral("Waiting for verification");
    const auto found = result(recording);
    if (!found)
        return {};
    switch (found->verdict) {
    case CheckResult::Whole:
        return QStringLiteral("Verified: whole");
    case CheckResult::Lossy:
        return QStringLiteral("Verified: not whole");
    case CheckResult::Unusable:
        break;
    }
    return QStringLiteral("Verified: unreadable");
}

std::optional<CheckResult> VerificationQueue::result(const QString &recording) const
{
    const auto found = m_results.constFind(recording);
    return found == m_results.cend() ? std::nullopt : std::optional(*found);
}

QString VerificationQueue::statusText() const
{
    if (!isRunning())
        return {};
    const QString status = QStringLiteral("Verifying %1, %2")
                               .arg(QFileInfo(m_waiting.constFirst()).fileName())
                               .arg(part());
    const qsizetype more = m_waiting.size() - 1;
    return more == 0 ? status : QStringLiteral("%1, %2 more").arg(status).arg(more);
}

} // namespace filmwright

#include "moc_verificationqueue.cpp"
