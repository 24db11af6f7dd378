// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>
#include <QWidget>

namespace filmwright {

/// Shows an image as large as it fits, in its proportions, sharp on any screen. However fast images
/// are set, only the newest is drawn, once a repaint.
class ImageView : public QWidget
{
    Q_OBJECT

public:
    explicit ImageView(QWidget *parent = nullptr);

    QImage image() const { return m_image; }
    /// A null image shows the empty view.
    void setImage(const QImage &image);

    QSize sizeHint() const override { return {480, 320}; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QPixmap scaledImage();

    QImage m_image;
    QPixmap m_scaled; // of m_image for the view's size; null when that has changed
};

} // namespace filmwright
