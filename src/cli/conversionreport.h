// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

#include <chrono>

namespace filmwright {

/// What became of one recording.
struct RecordingOutcome
{
    enum Result {
        NotBegun,    ///< the run ended before its turn
        Interrupted, ///< the run was ended while it was being converted
        Failed,
        Finished, ///< its movie is there
    };

    QString recording;
    Result result = NotBegun;
    QString movie;                        ///< its path; only when finished
    int frames = 0;                       ///< of the movie; 0 without one
    std::chrono::milliseconds duration{}; ///< from its beginning to its end
    QString reason;                       ///< why it failed, a sentence for a person
    QStringList warnings;                 ///< what the movie lacks, sentences
    QMap<QString, QStringList> toolLines; ///< the last lines of each tool; only when it failed
};

/// The table at the end of a run: a heading, then a line a recording. The recordings are named from
/// the folder on that they have in common; what a terminal would take for a command is replaced.
QStringList outcomeTable(const QList<RecordingOutcome> &outcomes);

/// The same as JSON: an object with the run's exit status ("status") and an array ("recordings") of
/// objects with "recording", "result" ("finished", "failed", "interrupted", "not begun"), "movie"
/// (null without one), "frames", "seconds", "reason" (null without one), "warnings" (an array) and
/// "tools" (an object: for each tool its last lines).
QByteArray outcomeReport(const QList<RecordingOutcome> &outcomes, int status);

/// Returns why a file can't be written there, or an empty string. What is there stays as it is.
QString reportHindrance(const QString &path);

/// Writes the whole file or leaves what was there. Returns why it couldn't, or an empty string.
QString writeReport(const QString &path, const QByteArray &report);

} // namespace filmwright
