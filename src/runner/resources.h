// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

namespace filmwright {

/// The programs that do the work, by the names under which they are looked up.
inline constexpr QLatin1String mlvDumpName("mlv_dump");
inline constexpr QLatin1String cr2hdrName("cr2hdr");
inline constexpr QLatin1String dcrawName("dcraw");
inline constexpr QLatin1String ffmpegName("ffmpeg");

/// The path of the bundled tool of that name, or a null string when it is nowhere.
///
/// Looked for, in this order, in the folder that the environment variable FILMWRIGHT_RESOURCES
/// names, in ../libexec/filmwright beside the program (installed), in ../resources beside the
/// program (built), and in the folders of PATH. Any thread, once the application object exists.
QString resourcePath(const QString &name);

/// The folders in which resourcePath() looks before PATH, for telling where a tool was missed.
QStringList resourceFolders();

/// For each of the tools that is found nowhere, a sentence that names it and where it was looked
/// for.
QStringList missingTools(const QStringList &names);

} // namespace filmwright
