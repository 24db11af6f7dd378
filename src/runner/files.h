// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

namespace filmwright {

/// The names of everything directly in the folder, hidden entries too, in ascending order of their
/// names; empty when the folder can't be read.
QStringList folderEntries(const QString &folder);

/// The path with its last extension replaced: a.b.MLV gives a.b.mov. A path without an extension
/// gets one.
QString pathWithExtension(const QString &path, const QString &extension);

/// Creates the folder and its missing parents, each readable by the user alone (mode 0700): footage
/// must not be readable by others. True when the folder is there afterwards.
bool createPrivateFolder(const QString &path);

/// Removes the folder with everything in it. Links are removed themselves and never followed, also
/// one at the folder's place; a file at its place stays. What can't be removed stays too.
void removeFolder(const QString &path);

/// The bytes that the user may still write in the folder, or in the first one above it that is
/// there; infinite where the system doesn't tell.
double freeSpace(const QString &folder);

} // namespace filmwright
