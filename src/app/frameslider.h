// SPDX-License-Identifier: MIT
#pragma once

#include "mlvdump/frameselection.h"

#include <QSlider>

namespace filmwright {

/// Chooses a frame of a recording, from 1 on, and shows which of them the movie is made of. A press
/// anywhere takes the handle there.
class FrameSlider : public QSlider
{
    Q_OBJECT

public:
    explicit FrameSlider(QWidget *parent = nullptr);

    /// Shows the frames of another recording and goes to its first; Page moves by a second.
    void setFrames(quint64 frames, double framesPerSecond);

    const FrameSelection &selection() const { return m_selection; }
    void setSelection(const FrameSelection &selection);

    /// Where the frames of the selection are, in the slider's coordinates; empty for all frames.
    QRect placeOfSelection() const;

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    QRect span() const;
    int positionOf(int frame) const;

    FrameSelection m_selection;
};

} // namespace filmwright
