// SPDX-License-Identifier: MIT
#include "project/recordingfiles.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <filesystem>
#include <string_view>
#include <system_error>

namespace filmwright {

namespace {

/// Whether a file is one of stem.M00 to stem.M99, in any case.
bool isPartOf(std::string_view stem, std::string_view name)
{
    constexpr std::size_t extensionLength = 4;
    if (name.size() != stem.size() + extensionLength || !name.starts_with(stem))
        return false;
    const std::string_view extension = name.substr(stem.size());
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    return (extension.starts_with(".M") || extension.starts_with(".m")) && isDigit(extension[2]) &&
           isDigit(extension[3]);
}

QStringList filesOf(const QString &path, FolderListing &listing)
{
    const QFileInfo recording(path);
    const std::string stem = QFile::encodeName(recording.completeBaseName()).toStdString();
    QStringList parts;
    for (const std::string &name : listing.namesIn(recording.dir().filesystemPath()))
        if (isPartOf(stem, name))
            parts << recording.dir().filePath(QFile::decodeName(name.c_str()));
    parts.sort(Qt::CaseInsensitive);
    return QStringList{path} + parts;
}

} // namespace

bool isRecordingName(const QString &path)
{
    return QFileInfo(path).suffix().compare(QLatin1String("mlv"), Qt::CaseInsensitive) == 0;
}

/// Listed, because two hundred questions for names would take a second on a network drive.
const std::vector<std::string> &FolderListing::namesIn(const std::filesystem::path &folder)
{
    const auto [listed, isNew] = m_names.try_emplace(folder);
    std::error_code error;
    std::filesystem::directory_iterator entry;
    if (isNew)
        entry = std::filesystem::directory_iterator(folder, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error))
        listed->second.push_back(entry->path().filename().native());
    return listed->second;
}

QStringList recordingFiles(const QString &path)
{
    FolderListing listing;
    return filesOf(path, listing);
}

QByteArray recordingIdentity(const QString &path)
{
    FolderListing listing;
    return recordingIdentity(path, listing);
}

QByteArray recordingIdentity(const QString &path, FolderListing &listing)
{
    QByteArray identity;
    for (const QString &name : filesOf(path, listing)) {
        const QFileInfo file(name);
        identity += QStringLiteral("%1 %2 %3\n")
                        .arg(file.size())
                        .arg(file.lastModified().toMSecsSinceEpoch())
                        .arg(file.canonicalFilePath())
                        .toUtf8();
    }
    return identity;
}

} // namespace filmwright
