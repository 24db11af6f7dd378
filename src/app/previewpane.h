// SPDX-License-Identifier: MIT
#pragma once

#include "preview/framepreview.h"

#include <QWidget>

class QLabel;

namespace filmwright {

class FrameSlider;
class HistogramView;
class ImageView;

/// A recording of which any frame can be looked at.
struct PreviewedRecording
{
    QString path;
    quint64 frames = 0; ///< of a movie of the whole recording
    double framesPerSecond = 0;
    FrameSelection selection;    ///< which of them its movie is made of
    ConversionSettings settings; ///< how that looks
};

/// Shows a frame of a recording as its movie will have it, and lets a person choose which, look
/// closer, and mark the part that becomes the movie; or shows the frames that a batch converts.
/// Main thread only.
class PreviewPane : public QWidget
{
    Q_OBJECT

public:
    explicit PreviewPane(QWidget *parent = nullptr);
    ~PreviewPane() override;

    /// Shows the first frame of another recording; of the same one, the frame that was chosen, as
    /// it looks now.
    void showRecording(const PreviewedRecording &recording);
    /// Shows why a recording can't be seen.
    void showError(const QString &error);
    /// Shows frames that are converted from now on, and before the first one the text.
    void followWork(const QString &text);
    /// A frame that has been converted.
    void showConverted(const QImage &image);

    // Where the movie of the shown recording begins and ends: at the frame that is shown.
    void setIn();
    void setOut();
    void clearMarks();

    void setActualSize(bool actualSize);
    bool showsHistogram() const;
    void setHistogramShown(bool shown);

    /// Where pictures of other recordings can be asked for, too.
    FramePreview &frames() { return m_frames; }

Q_SIGNALS:
    /// The person has marked which frames of the shown recording become the movie.
    void framesMarked(const filmwright::FrameSelection &selection);
    void actualSizeChanged(bool actualSize);

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    bool showsRecording() const { return !m_recording.path.isEmpty(); }
    void letGo();
    FrameRequest chosenRequest() const;
    void askForFrame();
    void showFrame(const FrameRequest &request, const DevelopedFrame &frame);
    void showPlace();
    void mark(const FrameSelection &selection);
    quint64 chosenFrame() const;

    ImageView *m_image;
    HistogramView *m_histogram;
    FrameSlider *m_slider;
    QLabel *m_place;
    QLabel *m_note;
    FramePreview m_frames;
    PreviewedRecording m_recording; // without a path: none
    bool m_followsWork = true;
    QByteArray m_look;      // of what was asked for last
    bool m_isQuick = false; // the frame that is shown isn't yet as in the movie
};

} // namespace filmwright
