// SPDX-License-Identifier: MIT
#include "app/previewpane.h"

#include "app/frameslider.h"
#include "app/histogramview.h"
#include "app/imageview.h"
#include "runner/readabletext.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>

#include <algorithm>
#include <array>

namespace filmwright {

PreviewPane::PreviewPane(QWidget *parent)
    : QWidget(parent)
    , m_image(new ImageView(this))
    , m_histogram(new HistogramView(this))
    , m_slider(new FrameSlider(this))
    , m_place(new QLabel(this))
    , m_note(new QLabel(this))
{
    m_image->setObjectName(QStringLiteral("imageView"));
    m_histogram->setObjectName(QStringLiteral("histogramView"));
    m_slider->setObjectName(QStringLiteral("frameSlider"));
    m_place->setObjectName(QStringLiteral("framePlaceLabel"));
    m_note->setObjectName(QStringLiteral("frameNoteLabel"));
    for (QLabel *label : {m_place, m_note}) {
        label->setTextFormat(Qt::PlainText);
        label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    }
    m_note->setAlignment(Qt::AlignRight | Qt::AlignVCenter);

    auto *texts = new QHBoxLayout;
    texts->addWidget(m_place, 1);
    texts->addWidget(m_note, 1);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(m_image, 1);
    layout->addWidget(m_histogram);
    layout->addWidget(m_slider);
    layout->addLayout(texts);
    m_histogram->hide();
    showPlace();

    connect(m_slider, &QSlider::valueChanged, this, &PreviewPane::askForFrame);
    connect(m_image, &ImageView::actualSizeChanged, this, &PreviewPane::actualSizeChanged);
    connect(&m_frames, &FramePreview::shown, this, &PreviewPane::showFrame);
}

PreviewPane::~PreviewPane() = default;

void PreviewPane::showRecording(const PreviewedRecording &recording)
{
    const bool isOther =
        recording.path != m_recording.path || recording.frames != m_recording.frames;
    m_recording = recording;
    m_followsWork = false;
    m_slider->setSelection(recording.selection);
    if (isOther)
        m_slider->setFrames(recording.frames, recording.framesPerSecond);
    if (isOther || lookOf(chosenRequest()) != m_look)
        askForFrame();
    else
        showPlace();
}

void PreviewPane::showError(const QString &error)
{
    letGo();
    m_followsWork = false;
    m_image->setText(error);
}

void PreviewPane::followWork(const QString &text)
{
    if (!m_followsWork)
        letGo();
    m_followsWork = true;
    m_image->setText(text);
}

void PreviewPane::letGo()
{
    m_recording = {};
    m_look.clear();
    m_isQuick = false;
    m_frames.showNothing();
    m_image->setImage({});
    m_histogram->setHistogram({});
    m_slider->setFrames(1, 1);
    m_slider->setSelection({});
    showPlace();
}

void PreviewPane::showConverted(const QImage &image)
{
    if (m_followsWork)
        m_image->setImage(image);
}

quint64 PreviewPane::chosenFrame() const
{
    return static_cast<quint64>(m_slider->value());
}

/// The last frame has no neighbour behind it, and the movie none of its own for it.
FrameRequest PreviewPane::chosenRequest() const
{
    FrameRequest request{m_recording.path, chosenFrame(), m_recording.settings};
    if (request.settings.mergesNeighbours && m_recording.frames > 1)
        request.frame = std::min(request.frame, m_recording.frames - 1);
    return request;
}

void PreviewPane::askForFrame()
{
    if (!showsRecording())
        return;
    const FrameRequest request = chosenRequest();
    m_look = lookOf(request);
    m_frames.show(request);
    showPlace();
}

void PreviewPane::showFrame(const FrameRequest &request, const DevelopedFrame &frame)
{
    if (request.recording != m_recording.path)
        return;
    m_isQuick = request.quality == FrameRequest::Quick && frame.error.isEmpty();
    m_image->setText(frame.error);
    m_image->setImage(frame.image);
    m_histogram->setHistogram(frame.histogram);
    showPlace();
}

void PreviewPane::showPlace()
{
    m_slider->setEnabled(showsRecording());
    if (!showsRecording()) {
        m_place->clear();
        m_note->clear();
        return;
    }
    const double rate = m_recording.framesPerSecond;
    const double seconds = rate > 0 ? static_cast<double>(chosenFrame() - 1) / rate : 0;
    m_place->setText(QStringLiteral("Frame %1 of %2, %3")
                         .arg(chosenFrame())
                         .arg(m_recording.frames)
                         .arg(timeText(std::chrono::duration<double>(seconds))));
    m_place->setToolTip(m_place->text());
    const QString marked = m_recording.selection.text();
    if (m_isQuick)
        m_note->setText(QStringLiteral("Measuring the recording…"));
    else
        m_note->setText(marked.isEmpty() ? QString() : QStringLiteral("Movie: %1").arg(marked));
    m_note->setVisible(!m_note->text().isEmpty()); // the place may need the whole line
    m_slider->setAccessibleDescription(m_place->text());
}

void PreviewPane::setIn()
{
    FrameSelection selection = m_recording.selection;
    selection.first = chosenFrame();
    if (selection.last != 0 && selection.last < selection.first)
        selection.last = 0;
    mark(selection);
}

void PreviewPane::setOut()
{
    FrameSelection selection = m_recording.selection;
    selection.last = chosenFrame() == m_recording.frames ? 0 : chosenFrame();
    if (selection.last != 0 && selection.last < selection.first)
        selection.first = 1;
    mark(selection);
}

void PreviewPane::clearMarks()
{
    mark({});
}

void PreviewPane::mark(const FrameSelection &selection)
{
    if (!showsRecording())
        return;
    m_recording.selection = selection;
    m_slider->setSelection(selection);
    showPlace();
    Q_EMIT framesMarked(selection);
}

void PreviewPane::setActualSize(bool actualSize)
{
    m_image->setActualSize(actualSize);
}

bool PreviewPane::showsHistogram() const
{
    return !m_histogram->isHidden();
}

void PreviewPane::setHistogramShown(bool shown)
{
    m_histogram->setVisible(shown);
}

/// What the picture has no use for, the slider may have.
void PreviewPane::keyPressEvent(QKeyEvent *event)
{
    static constexpr std::array keys{Qt::Key_Left, Qt::Key_Right,  Qt::Key_Home,
                                     Qt::Key_End,  Qt::Key_PageUp, Qt::Key_PageDown};
    const bool isStep = std::find(keys.begin(), keys.end(), event->key()) != keys.end();
    if (isStep && m_image->hasFocus() && m_slider->isEnabled())
        QCoreApplication::sendEvent(m_slider, event);
    else
        QWidget::keyPressEvent(event);
}

} // namespace filmwright

#include "moc_previewpane.cpp"
