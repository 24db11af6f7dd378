// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace filmwright {

// Where frames, sound and averaged calibration recordings are kept while a movie is made.
// Main thread only.

/// The per-user temporary folder: $TMPDIR when it is the user's own and closed to others, else the
/// user's cache folder, because frames need a real disk and must not be readable by others.
QString userTemporaryFolder();

/// For files that live for moments: $XDG_RUNTIME_DIR, which is in memory, when it is the user's
/// own, closed to others and has room for so many bytes, else userTemporaryFolder().
QString fastTemporaryFolder(qint64 bytes);

/// The working directory, derived anew at each call: the base joined with "FilmwrightTmp", or,
/// while no base is set, the per-user temporary folder joined with "Filmwright". It isn't created
/// here; who writes into it creates it.
QString temporaryDirectory();

/// The path of a file or folder in it.
QString inTemporaryDirectory(const QString &name);

/// What it is with this base; a null string for no base.
QString temporaryDirectoryIn(const QString &base);

/// The base that was chosen, or a null string.
QString baseTemporaryDirectory();

/// Chooses the base, creating it when it doesn't exist; a null string returns to the per-user
/// folder. False, and the base stays what it was, when the path is no writable directory.
bool setBaseTemporaryDirectory(const QString &path);

/// Makes the working directory ready for work, before anything is read, written or removed in it:
/// creates it when it isn't there, closes it to others, and removes links from it at any depth,
/// because tools would write through them. Returns why it can't be used, or an empty string: a name
/// in a folder that others can write too may have been taken by a link or by someone else's folder.
[[nodiscard]] QString prepareTemporaryDirectory();

} // namespace filmwright
