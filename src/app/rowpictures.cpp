// SPDX-License-Identifier: MIT
#include "app/rowpictures.h"

#include <QPainter>

namespace filmwright {

namespace {

/// Room for more than a thousand on a usual screen, for hundreds on a dense one.
constexpr int mostKilobytes = 32 * 1024;

} // namespace

RowPictures::RowPictures(FramePreview &frames)
    : m_frames(frames)
    , m_pictures(mostKilobytes)
{
    connect(&m_frames, &FramePreview::fetched, this, &RowPictures::take);
}

void RowPictures::show(const QStringList &recordings, const QSize &size, double devicePixelRatio)
{
    if (size != m_size || devicePixelRatio != m_devicePixelRatio)
        m_pictures.clear();
    m_size = size;
    m_devicePixelRatio = devicePixelRatio;
    QList<FrameRequest> missing;
    for (const QString &recording : recordings)
        if (!isKnown(recording))
            missing << FrameRequest{recording, 1, {}, FrameRequest::Small};
    m_frames.fetch(missing);
}

QPixmap RowPictures::pictureOf(const QString &recording) const
{
    const QPixmap *picture = m_pictures.object(recording);
    return picture ? *picture : QPixmap();
}

bool RowPictures::isKnown(const QString &recording) const
{
    return m_pictures.contains(recording);
}

void RowPictures::forget(const QString &recording)
{
    m_pictures.remove(recording);
}

void RowPictures::take(const FrameRequest &request, const DevelopedFrame &frame)
{
    auto picture = std::make_unique<QPixmap>();
    int kilobytes = 1;
    if (!frame.image.isNull() && !m_size.isEmpty()) {
        const QImage scaled =
            frame.image.scaled(m_size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        *picture = QPixmap(m_size);
        picture->fill(Qt::transparent);
        QPainter(picture.get())
            .drawImage((m_size.width() - scaled.width()) / 2,
                       (m_size.height() - scaled.height()) / 2, scaled);
        picture->setDevicePixelRatio(m_devicePixelRatio);
        kilobytes += m_size.width() * m_size.height() * picture->depth() / 8 / 1024;
    }
    m_pictures.insert(request.recording, picture.release(), kilobytes);
    Q_EMIT changed(request.recording);
}

} // namespace filmwright

#include "moc_rowpictures.cpp"
