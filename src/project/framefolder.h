// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>

namespace filmwright {

// The movie of a recipe that keeps raw frames is a folder, clip, with clip_000000.dng … and
// clip.wav. While they are written, frames and sound have the names that mlv_dump gives them, in a
// folder beside it, clip.unfinished, which gets the movie's name when it is whole. Who writes one
// holds the movie's MovieMark.
//
// Files that Filmwright didn't write are never removed: a folder with one of them is left as it is.
// Ours are known by name and, where they are whole, by what they say of the program that wrote
// them. Any thread.

/// "clip.unfinished", beside the movie and ending with a path separator.
QString unfinishedFolder(const QString &movie);

/// Makes the unfinished folder, empty: what a run that died has left there is removed. Returns why
/// it can't be made, or why the movie couldn't be put in its place; empty when it is there.
[[nodiscard]] QString makeUnfinishedFolder(const QString &movie);

/// Removes the unfinished folder with what was written.
void removeUnfinishedFolder(const QString &movie);

/// Names the frames and the sound of the unfinished folder after the movie, brings all to the disk
/// and puts the folder in the movie's place, where an older one is removed. Returns why that
/// failed, or an empty string. Slow: a disk may be busy with the frames for seconds.
[[nodiscard]] QString finishFrameFolder(const QString &movie);

/// How many frames and sounds a finished folder has, going by their names.
qsizetype filesOfFolder(const QString &movie);

/// How many frames a finished folder has. Nothing when a number is missing between them or when a
/// frame or the sound is cut off.
std::optional<quint64> framesOfFolder(const QString &movie);

} // namespace filmwright
