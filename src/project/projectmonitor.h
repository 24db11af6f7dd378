// SPDX-License-Identifier: MIT
#pragma once

#include <QFutureWatcher>
#include <QImage>
#include <QObject>
#include <QString>
#include <QStringList>

namespace filmwright {

class MLVProjectController;

/// The sentence in an error line of mlv_dump.
QString reasonOf(const QString &errorLine);

/// What a movie lacks that is made all the same, as sentences: frames and sound that couldn't be
/// read. Known once the frames are extracted.
QStringList shortcomingsOf(const MLVProjectController &project);

/// Finds out that a recording will not become a whole movie: the stages themselves judge nothing
/// but mlv_dump's error lines. Whoever drives a project makes one for each run and hands on what
/// the project tells its delegate.
///
/// Main thread only; the project outlives it.
class ProjectMonitor : public QObject
{
    Q_OBJECT

public:
    explicit ProjectMonitor(MLVProjectController &project);

    // The project's delegate calls, handed on as they come.
    void controllerUpdated();
    void imageRGBReceived(const QImage &image);
    void controllerWorkError(const QString &error);
    void controllerWorkFinished();

Q_SIGNALS:
    /// The run ends here, once, after the current event: with no reason the movie is whole and on
    /// the disk; otherwise the project still has to be stopped. `reason` is a sentence for a
    /// person; a full disk behind it is named.
    void ended(const QString &reason);

private:
    void checkLater();
    void check();
    void checkConversion();
    void dropEarlierMerges();
    void checkFrames();
    void checkMergedFrames(int pairs);
    void checkMovie();
    QString encodingFailure() const;
    void endWithMovie(const QString &failure);
    void fail(const QString &reason);
    void end(const QString &reason);

    MLVProjectController &m_project;
    QFutureWatcher<QString> m_settling;
    int m_missingFrames = 0;
    bool m_ended = false;
};

} // namespace filmwright
