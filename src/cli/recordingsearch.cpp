// SPDX-License-Identifier: MIT
#include "cli/recordingsearch.h"

#include "runner/files.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

namespace filmwright {

namespace {

class Search
{
public:
    void add(const QString &path)
    {
        const QString absolute = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
        if (!m_known.contains(absolute)) {
            m_known << absolute;
            m_recordings << absolute;
        }
    }

    void searchFolder(const QString &folder)
    {
        const QString canonical = QFileInfo(folder).canonicalFilePath();
        if (m_searched.contains(canonical))
            return;
        m_searched << canonical;
        for (const QString &name : folderEntries(folder)) {
            const QString path = QDir(folder).filePath(name);
            if (QFileInfo(path).isDir())
                searchFolder(path);
            else if (isRecordingName(path))
                add(path);
        }
    }

    QStringList recordings() const { return m_recordings; }

private:
    QStringList m_recordings;
    QSet<QString> m_known;
    QSet<QString> m_searched;
};

} // namespace

bool isRecordingName(const QString &path)
{
    return QFileInfo(path).suffix().compare(QLatin1String("mlv"), Qt::CaseInsensitive) == 0;
}

QStringList findRecordings(const QStringList &paths)
{
    Search search;
    for (const QString &path : paths) {
        if (QFileInfo(path).isDir())
            search.searchFolder(path);
        else
            search.add(path);
    }
    return search.recordings();
}

} // namespace filmwright
