// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

class QSaveFile;

namespace filmwright {

// Files that are there in whole or not at all, also after a power cut. Any thread.

/// Gives the file its name when everything is in it. QSaveFile::commit() alone overlooks a failing
/// flush of its own.
[[nodiscard]] bool commitFile(QSaveFile &file);

/// Puts the content in the file's place. Returns why that failed (the system's words; what was
/// there stays), or an empty string.
[[nodiscard]] QString writeFile(const QString &path, const QByteArray &content);

// What the system still holds back is brought to the disk; slow. False, with errno set, when it
// could not be.

/// Of a file; one on a file system without a disk behind it is as safe as it can be.
[[nodiscard]] bool syncFile(int descriptor);
[[nodiscard]] bool syncFile(const QString &path);
/// Of everything on the file system of the folder: a call for each of thousands of files takes much
/// longer.
[[nodiscard]] bool syncDiskOf(const QString &folder);

/// The names in the folder; one that may not be read is left to the system.
void syncFolder(const QString &folder);

} // namespace filmwright
