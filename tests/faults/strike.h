// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

/// How a struck run has to end.
enum class Outcome {
    Movie,      ///< status 0 and the movie that an undisturbed run makes, to the byte
    Reason,     ///< status 1, no movie, and the reason that is expected
    Either,     ///< one of the two; the moment decides
    Interrupted ///< status 130 and no movie, or the movie if it was finished already
};

/// What happens to the run as a whole, by the side of what a tool does.
enum class Event {
    None,
    Killed,      ///< the program; the next start has to clean up
    Interrupted, ///< the program, by one of the signals that end it
    Stopped,     ///< the program, for a while
    RecordingDeleted,
    RecordingTruncated,
    RecordingClosed, ///< made unreadable
    FolderClosed,    ///< the movie's folder made read-only
    WorkRemoved,     ///< the temporary directory
    TemporaryDiskSmall,
    TemporaryDiskFills,
    MovieDiskSmall,
    MovieDiskFills,
    ClockChanged,
};

/// Small disks have to be mounted.
bool isOnTemporaryDisk(Event event);
bool isOnMovieDisk(Event event);

/// What a run is asked for.
struct Order
{
    QString format; ///< the movie's extension
    QString recipe; ///< of frames that flow; empty: none, frames go stage by stage
    int jobs = 1;
    bool mergesNeighbours = false;
    bool blendsAlternatingRows = false;
    bool hasDark = false;

    /// The options of `convert`. Those that decide what is in the movie name it.
    QStringList options() const;
    QString nameOfMovie() const;
};

/// One fault of a run, and how the run has to end. The same seed and number always give the same,
/// of either kind.
struct Strike
{
    static Strike make(quint32 seed, int number);
    /// Of a run whose frames flow.
    static Strike makeFlowing(quint32 seed, int number);

    QString name; ///< for a person
    Order order;
    QString tool;   ///< the one that is struck; empty: none
    QString script; ///< what it does, in its shell, before it becomes the real tool
    Event event = Event::None;
    int signal = 0;
    /// When it happens: after this share of the time that an undisturbed run takes.
    double moment = 0;
    /// Of the space that an undisturbed run needs, or of the recording.
    double space = 0;
    bool waitsForTool = false; ///< the event comes when the struck tool has begun
    bool keepsWork = false;    ///< the run is to be taken up again where it stopped
    Outcome outcome = Outcome::Movie;
    QString reason; ///< a regular expression
};
