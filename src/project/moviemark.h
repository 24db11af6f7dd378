// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>

namespace filmwright {

struct Recipe;

/// What a movie is for the file system.
enum class MovieKind {
    File,
    Folder, ///< of raw frames, see framefolder.h
};

/// That of a recipe, or of a movie without one.
MovieKind movieKindOf(const std::optional<Recipe> &recipe);

/// Tells a movie that is still being written from a whole one: ffmpeg writes under the movie's
/// final name, and whoever finds the file there can't see whether its writer was killed half-way.
///
/// The mark is a hidden file beside the movie, there from just before ffmpeg starts until the movie
/// is on the disk, and locked by the run that writes. One that nobody locks belongs to a run that
/// died; the movie beside it isn't whole. (A folder is written under another name, which tells that
/// by itself; there the mark only keeps other runs away.)
///
/// Any thread, one at a time. A file system that has no locks can't tell the living from the dead:
/// there a second run on the same recording isn't noticed.
class MovieMark
{
public:
    /// The mark's own path for a movie.
    static QString pathFor(const QString &moviePath);

    /// Removes what a run that died left of this movie; a whole movie stays. Returns why the movie
    /// can't be written now ("its movie is being written by another run", a folder of its name, a
    /// folder without write access), or an empty string.
    [[nodiscard]] static QString clear(const QString &moviePath, MovieKind kind = MovieKind::File);

    explicit MovieMark(const QString &moviePath);
    /// A mark that is still there stays, without its lock: the movie was not finished.
    ~MovieMark();
    MovieMark(const MovieMark &) = delete;
    MovieMark &operator=(const MovieMark &) = delete;

    /// Makes the mark, locks it and brings it to the disk. Returns what hinders it, or an empty
    /// string.
    [[nodiscard]] QString set();
    /// Whether it is there and locked by this object.
    bool isSet() const { return m_descriptor >= 0; }
    /// Removes the mark: there is no movie, or none that is unfinished.
    void remove();
    /// Waits until the movie is on the disk and removes the mark. Returns why that failed (the mark
    /// stays), or an empty string. Slow: a disk may be busy with the movie for seconds.
    [[nodiscard]] QString settle();

private:
    [[nodiscard]] QString keep();

    const QString m_moviePath;
    int m_descriptor = -1;
};

} // namespace filmwright
