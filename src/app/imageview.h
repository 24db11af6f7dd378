// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>
#include <QPixmap>
#include <QWidget>

namespace filmwright {

/// Shows an image as large as it fits, in its proportions, sharp on any screen; or, after a click,
/// a part of it with one pixel of the image on each of the screen, which is moved by dragging or by
/// Shift and the arrows. However fast images are set, only the newest is drawn, once a repaint.
class ImageView : public QWidget
{
    Q_OBJECT

public:
    explicit ImageView(QWidget *parent = nullptr);

    QImage image() const { return m_image; }
    /// A null image shows the text.
    void setImage(const QImage &image);

    /// What is shown in place of an image.
    QString text() const { return m_text; }
    void setText(const QString &text);

    bool isActualSize() const { return m_actualSize; }
    /// Shows the middle.
    void setActualSize(bool actualSize);
    /// The pixel of the image that is shown in the middle of the view in actual size.
    QPoint centre() const { return m_centre; }

    QSize sizeHint() const override { return {480, 320}; }

Q_SIGNALS:
    /// By a click or a key, too.
    void actualSizeChanged(bool actualSize);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    const QPixmap &scaledImage();
    QSize sizeInPixels() const;
    QRectF placeOfImage() const;
    void look(const QPoint &centre, bool actualSize);
    void updateCursor();

    QImage m_image;
    QPixmap m_scaled; // of m_image for the view's size; null when that has changed
    QString m_text;
    bool m_actualSize = false;
    QPoint m_centre; // in pixels of the image, kept so that the view is filled
    QPoint m_pressed;
    QPoint m_centreWhenPressed;
    bool m_isDragged = false;
};

} // namespace filmwright
