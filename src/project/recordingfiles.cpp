// SPDX-License-Identifier: MIT
#include "project/recordingfiles.h"

#include <QDateTime>
#include <QFileInfo>

namespace filmwright {

bool isRecordingName(const QString &path)
{
    return QFileInfo(path).suffix().compare(QLatin1String("mlv"), Qt::CaseInsensitive) == 0;
}

QStringList recordingFiles(const QString &path)
{
    constexpr int mostChunks = 100;
    QStringList files{path};
    const QString stem = path.chopped(QFileInfo(path).suffix().size());
    for (int number = 0; number < mostChunks; ++number) {
        for (const char *letter : {"M", "m"}) {
            const QString chunk = stem + QLatin1String(letter) +
                                  QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
            if (QFileInfo::exists(chunk))
                files << chunk;
        }
    }
    return files;
}

QByteArray recordingIdentity(const QString &path)
{
    QByteArray identity;
    for (const QString &name : recordingFiles(path)) {
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
