// SPDX-License-Identifier: MIT
#include "conversion/hdrdualimagesmerge.h"

#include "conversion/mergebitmaps.h"
#include "runner/systemlog.h"

#include <QDir>
#include <QFileInfo>

#include <utility>

namespace filmwright {

void HDRDualImagesMerge::setSecondImagePath(const QString &path)
{
    m_secondImagePath = path;
    if (path.isEmpty())
        m_keptFrame = {};
}

void HDRDualImagesMerge::hdrMerge()
{
    const QString outputPath =
        QDir(m_extractionPath).filePath(QFileInfo(m_firstImagePath).fileName());
    if (QFileInfo::exists(outputPath))
        return;
    if (m_extractionPath.isEmpty()) {
        systemLog(QStringLiteral("No extraction path defined."));
        return;
    }
    // The result is built in the first frame: nothing else needs its samples any more.
    TiffBitmap merged = takeFirstFrame();
    m_keptFrame = readFrame(m_secondImagePath);
    const auto merge = m_sixteenBits ? mergeDeepBitmaps : mergeBitmaps;
    if (!merge(&merged, m_keptFrame.bitmap)) {
        systemLog(
            QStringLiteral("Unable to merge %1 and %2").arg(m_firstImagePath, m_secondImagePath));
        return;
    }
    if (!merged.write(outputPath))
        systemLog(QStringLiteral("Unable to write %1").arg(outputPath));
}

HDRDualImagesMerge::KeptFrame HDRDualImagesMerge::readFrame(const QString &path)
{
    const QFileInfo file(path);
    return {path, file.size(), file.lastModified(), TiffBitmap::read(path)};
}

/// The kept frame, unless it is another one or its file has been written again since.
TiffBitmap HDRDualImagesMerge::takeFirstFrame()
{
    KeptFrame kept = std::exchange(m_keptFrame, {});
    const QFileInfo file(m_firstImagePath);
    if (kept.path == m_firstImagePath && kept.size == file.size() &&
        kept.modified == file.lastModified())
        return std::move(kept.bitmap);
    kept = {};
    return TiffBitmap::read(m_firstImagePath);
}

} // namespace filmwright
