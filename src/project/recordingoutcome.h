// SPDX-License-Identifier: MIT
#pragma once

#include <QMap>
#include <QMetaType>
#include <QString>
#include <QStringList>

#include <chrono>

namespace filmwright {

/// Why a recording has no whole movie.
struct Failure
{
    QString error{};     ///< a sentence for a person; empty: nothing failed
    QString tool{};      ///< the tool that failed; empty: none did
    QStringList lines{}; ///< what that tool printed last, where the error doesn't say it
    /// An "[ERROR]" line told of it: hardly any other recording of the batch would survive it.
    bool concernsBatch = false;

    bool isEmpty() const { return error.isEmpty(); }
};

/// What became of one recording.
struct RecordingOutcome
{
    enum Result {
        NotBegun,    ///< its turn hasn't come, or the batch ended before
        Interrupted, ///< it was stopped while it was being converted
        Failed,
        Finished, ///< its movie is there
        Skipped,  ///< its movie was there before
    };

    QString recording;
    Result result = NotBegun;
    QString movie;                        ///< its path; only when finished or skipped
    int frames = 0;                       ///< of the movie; 0 without one
    std::chrono::milliseconds duration{}; ///< from its beginning to its end
    Failure failure;
    QStringList warnings;                 ///< what the movie lacks, sentences
    QStringList notes;                    ///< what the movie doesn't lack, sentences
    QMap<QString, QStringList> toolLines; ///< the last lines of each tool; only when it failed

    /// Everything that is wrong with the recording, for a person: the error, what the movie lacks,
    /// the tool's lines; empty when nothing is.
    QStringList errors() const
    {
        QStringList all = failure.isEmpty() ? QStringList() : QStringList{failure.error};
        return all + warnings + failure.lines;
    }
};

} // namespace filmwright

Q_DECLARE_METATYPE(filmwright::Failure)
