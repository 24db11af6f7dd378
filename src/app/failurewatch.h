// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QImage>
#include <QObject>

#include <map>
#include <memory>

namespace filmwright {

class MLVProjectController;
class ProjectMonitor;

/// Watches the projects of the queue for failures that no stage reports, and keeps what went wrong
/// with each until its next run. Main thread only.
class FailureWatch : public QObject
{
    Q_OBJECT

public:
    FailureWatch();
    ~FailureWatch() override;

    /// A run of the project begins now: what was known of it is forgotten.
    void watch(MLVProjectController &project);
    /// The project is about to go away.
    void forget(MLVProjectController &project);
    void forgetAll();

    // The project's delegate calls, handed on as they come; unwatched projects are ignored.
    void controllerUpdated(MLVProjectController &project);
    void imageRGBReceived(const QImage &image, MLVProjectController &project);
    void controllerWorkFinished(MLVProjectController &project);

    /// Adds what was found elsewhere.
    void note(MLVProjectController &project, const QString &failure);

    /// What went wrong with the project, one sentence a line, then the last lines of the tool; null
    /// when nothing did.
    QString failure(const MLVProjectController &project) const;

    /// Whether the last word on a finished project is still to come.
    bool isPending(const MLVProjectController &project) const;

Q_SIGNALS:
    /// The run has been judged; `stuck` when it would never end by itself.
    void judged(MLVProjectController *project, bool stuck);

private:
    void end(MLVProjectController &project, const QString &reason);

    std::map<const MLVProjectController *, std::unique_ptr<ProjectMonitor>> m_monitors;
    QHash<const MLVProjectController *, QString> m_failures;
};

} // namespace filmwright
