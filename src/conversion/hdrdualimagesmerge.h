// SPDX-License-Identifier: MIT
#pragma once

#include "conversion/tiffbitmap.h"

#include <QDateTime>
#include <QString>

namespace filmwright {

/// Merges two TIFF frames of alternating exposure into one (see mergePixels()).
///
/// The second frame stays in memory, because it is the first of the next pair; setting
/// secondImagePath to an empty string lets go of it. Used on one thread at a time.
class HDRDualImagesMerge
{
public:
    /// The frame whose size and layout, and whose file name, are the result's.
    QString firstImagePath() const { return m_firstImagePath; }
    void setFirstImagePath(const QString &path) { m_firstImagePath = path; }

    /// A frame of the same size and layout.
    QString secondImagePath() const { return m_secondImagePath; }
    void setSecondImagePath(const QString &path);

    /// The folder, which exists, of the merged frames.
    QString extractionPath() const { return m_extractionPath; }
    void setExtractionPath(const QString &path) { m_extractionPath = path; }

    /// Whether the frames have 16 bits a sample; false after creation.
    void setSixteenBits(bool sixteenBits) { m_sixteenBits = sixteenBits; }

    /// Merges the pair, unless the result is already there. Blocks for the time of two readings and
    /// one writing; the result is written in full or not at all. What went wrong is only logged: a
    /// pair that can't be read is skipped.
    void hdrMerge();

private:
    /// A frame in memory, and the state of its file when it was read.
    struct KeptFrame
    {
        QString path;
        qint64 size = 0;
        QDateTime modified;
        TiffBitmap bitmap;
    };

    static KeptFrame readFrame(const QString &path);
    TiffBitmap takeFirstFrame();

    QString m_firstImagePath;
    QString m_secondImagePath;
    QString m_extractionPath;
    KeptFrame m_keptFrame;
    bool m_sixteenBits = false;
};

} // namespace filmwright
