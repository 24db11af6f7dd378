// SPDX-License-Identifier: MIT
#pragma once

#include "mlvdump/recordingcheck.h"

#include <QMap>
#include <QObject>
#include <QStringList>

#include <optional>

namespace filmwright {

/// Verifies recordings, one after the other. Main thread only.
class VerificationQueue : public QObject
{
    Q_OBJECT

public:
    VerificationQueue();

    /// Adds recordings behind those that wait; what was found of them before is forgotten.
    void add(const QStringList &recordings);
    /// Ends the one in work and forgets those that wait.
    void stop();
    bool isRunning() const { return !m_waiting.isEmpty(); }

    /// For the recording's row; empty when it was never verified.
    QString stateText(const QString &recording) const;
    /// What was found; nothing before its end.
    std::optional<CheckResult> result(const QString &recording) const;
    /// "Verifying clip.MLV, 43 %, 2 more"; empty when idle.
    QString statusText() const;

Q_SIGNALS:
    /// A text or a result is another than before.
    void changed();

private:
    void next();
    void noteResult();
    QString part() const;

    RecordingCheck m_check;
    QStringList m_waiting; ///< the first one is in work
    QMap<QString, CheckResult> m_results;
};

} // namespace filmwright
