// SPDX-License-Identifier: MIT
#include "cli/recordingsearch.h"

#include "project/recordingfiles.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <utility>
#include <vector>

namespace filmwright {

namespace {

struct Entry
{
    QByteArray name; ///< as it is on the disk, which need not be text
    QString readable;
};

/// Qt's own listings leave out names that are no UTF-8; here they must not get lost unsaid.
class Search
{
public:
    Search(QList<Unreachable> *unreachable, const QString &skipped)
        : m_unreachable(unreachable)
    {
        struct stat status = {};
        if (stat(QFile::encodeName(skipped).constData(), &status) == 0)
            m_searched << std::pair(status.st_dev, status.st_ino);
    }

    void add(const QString &path)
    {
        const QString absolute = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
        if (!m_known.contains(absolute)) {
            m_known << absolute;
            m_recordings << absolute;
        }
    }

    void searchFolder(const QByteArray &folder)
    {
        struct stat status = {};
        if (stat(folder.constData(), &status) == 0) {
            const std::pair identity(status.st_dev, status.st_ino);
            if (m_searched.contains(identity))
                return;
            m_searched << identity;
        }
        for (const Entry &entry : entriesOf(folder)) {
            const QByteArray path = folder + '/' + entry.name;
            if (stat(path.constData(), &status) == 0 && S_ISDIR(status.st_mode))
                searchFolder(path);
            else if (!isRecordingName(entry.readable))
                continue;
            else if (path.isValidUtf8())
                add(QFile::decodeName(path));
            else
                report(path, QStringLiteral("its name is no UTF-8 text; rename it"));
        }
    }

    QStringList recordings() const { return m_recordings; }

private:
    std::vector<Entry> entriesOf(const QByteArray &folder)
    {
        std::vector<Entry> entries;
        std::error_code error;
        std::filesystem::directory_iterator entry(folder.toStdString(), error);
        for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
            const auto name = QByteArray::fromStdString(entry->path().filename().native());
            entries.push_back({name, QString::fromUtf8(name)});
        }
        if (error) {
            report(folder, QStringLiteral("the folder can't be read: %1")
                               .arg(QString::fromLocal8Bit(error.message().c_str())));
        }
        std::ranges::sort(entries, {}, &Entry::readable);
        return entries;
    }

    void report(const QByteArray &path, const QString &error)
    {
        if (m_unreachable) {
            const QString absolute = QFileInfo(QString::fromUtf8(path)).absoluteFilePath();
            m_unreachable->append({QDir::cleanPath(absolute), error});
        }
    }

    QList<Unreachable> *const m_unreachable;
    QStringList m_recordings;
    QSet<QString> m_known;
    QSet<std::pair<dev_t, ino_t>> m_searched;
};

} // namespace

QStringList findRecordings(const QStringList &paths, QList<Unreachable> *unreachable,
                           const QString &skipped)
{
    Search search(unreachable, skipped);
    for (const QString &path : paths)
        if (QFileInfo(path).isDir())
            search.searchFolder(QFile::encodeName(path));
        else
            search.add(path);
    return search.recordings();
}

} // namespace filmwright
