// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QStringList>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace filmwright {

/// The names in folders, each listed once: for many recordings that are looked at in one go.
class FolderListing
{
public:
    const std::vector<std::string> &namesIn(const std::filesystem::path &folder);
    void clear() { m_names.clear(); }

private:
    std::map<std::filesystem::path, std::vector<std::string>> m_names;
};

/// Whether the name is a recording's: its extension is "mlv" in any case.
bool isRecordingName(const QString &path);

/// The recording's file and those that it goes on in, clip.M00 to clip.M99, in any case.
QStringList recordingFiles(const QString &path);

/// Tells a recording from another one of its name, and from itself before it was changed: size,
/// time and place of each of its files.
QByteArray recordingIdentity(const QString &path);
QByteArray recordingIdentity(const QString &path, FolderListing &listing);

} // namespace filmwright
