// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace filmwright {

class MLVProjectController;

/// The bytes that the project's frames take where they are extracted, the temporary directory or
/// the movie's folder, and those of them that are there already.
struct SpaceNeed
{
    /// Of the whole recording, DNG files, TIFF files, merged frames; or of those that flow at a
    /// time, and the sound.
    double frames = 0;
    double there = 0;
};

/// Needs the metadata; 0 where the report doesn't tell resolution or frame count.
SpaceNeed spaceNeed(const MLVProjectController &project);

/// How many of its frames, each extracted and developed, fit into the project's frame buffer and
/// into half of what is free in the temporary directory; at least 1.
quint64 framesInBuffer(const MLVProjectController &project);

/// Whether the project's frames fit into the file system where they are extracted: asked before the
/// extraction is launched. An empty string when they do, else a sentence for a person with both
/// figures and what to do. Main thread only.
QString spaceError(const MLVProjectController &project);

/// The same for a need and a space in the temporary directory, in bytes.
QString spaceError(const SpaceNeed &need, double free, const QString &folder);

/// A failure's error, with the full file system named in front of it that lies behind it: by what
/// the tools printed, or by what is free at this moment. So it has to be asked before anything is
/// tidied up. Any other error comes back as it is. Main thread only.
QString withFullDisk(const QString &error, const MLVProjectController &project);

/// Whether the temporary directory's file system has no room for another frame of the project.
bool isTemporaryDirectoryFull(const MLVProjectController &project);

} // namespace filmwright
