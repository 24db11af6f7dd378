// SPDX-License-Identifier: MIT
#pragma once

#include "preview/framepreview.h"

#include <QCache>
#include <QPixmap>

namespace filmwright {

/// Pictures of recordings' first frames, by which a person tells them apart: made one at a time,
/// only of those that are in sight, when the preview wants nothing. Main thread only.
class RowPictures : public QObject
{
    Q_OBJECT

public:
    /// The frames outlive it.
    explicit RowPictures(FramePreview &frames);

    /// The recordings that are in sight, in the order in which they are wanted, in place of those
    /// of the last call. Pictures have this size, in device pixels; those of another one are made
    /// anew.
    void show(const QStringList &recordings, const QSize &size, double devicePixelRatio);

    /// Of that size, the frame in its middle; null when there is none yet, or none to be had.
    QPixmap pictureOf(const QString &recording) const;
    /// Whether it has been looked at, with or without success.
    bool isKnown(const QString &recording) const;

    /// The recording may have changed.
    void forget(const QString &recording);

Q_SIGNALS:
    /// pictureOf() answers otherwise than before.
    void changed(const QString &recording);

private:
    void take(const FrameRequest &request, const DevelopedFrame &frame);

    FramePreview &m_frames;
    QCache<QString, QPixmap> m_pictures; // those without a frame are null
    QSize m_size;
    double m_devicePixelRatio = 1;
};

} // namespace filmwright
