// SPDX-License-Identifier: MIT
#include "preview/previewfolder.h"

#include "runner/files.h"
#include "runner/temporarydirectory.h"

#include <QDir>

namespace filmwright {

namespace {

// Two frames of the largest sensors, raw and developed with 16 bits a sample.
constexpr qint64 room = qint64(512) * 1024 * 1024;

const QString prefix = QStringLiteral("filmwright-preview-");

QString newFolder()
{
    const QString base = fastTemporaryFolder(room);
    createPrivateFolder(base);
    removeAbandonedDirectories(base, prefix);
    return QDir(base).filePath(prefix + QStringLiteral("XXXXXX"));
}

} // namespace

PreviewFolder::PreviewFolder()
    : m_folder(newFolder())
{
    if (m_folder.isValid())
        static_cast<void>(m_lock.take(m_folder.path())); // a new folder is nobody else's
}

QString PreviewFolder::error() const
{
    return m_folder.isValid()
               ? QString()
               : QStringLiteral("no folder for frames can be made: %1").arg(m_folder.errorString());
}

} // namespace filmwright
