// SPDX-License-Identifier: MIT
#pragma once

#include "encoding/ffmpegarguments.h"
#include "flow/framepipe.h"
#include "mlvdump/frameselection.h"

#include <QSet>
#include <QStringList>
#include <QTimer>

#include <deque>
#include <functional>
#include <memory>

namespace filmwright {

class CR2HDRTask;
class MlvDumpTask;

/// Has the frames of a recording flow from the reader through the converter into the encoder, a
/// bounded number at a time, so that a recording of any length needs the room of few frames. What
/// has to be known of all frames is surveyed first; then ranges of frames are extracted, blended
/// where that is asked for, and developed, and their samples go into a pipe, in order. A range is
/// read while those before it are developed, as soon as there is room for it.
///
/// Drives the tools but isn't their delegate: whoever is tells it of each end. Main thread only.
class FrameFlow : public QObject
{
    Q_OBJECT

public:
    struct Plan
    {
        FrameSelection selection; ///< of the recording
        quint64 room = 1;         ///< frames that may lie between reader and encoder
        bool blendsRows = false;  ///< by cr2hdr
        bool mergesNeighbours = false;
        bool sixteenBits = false; ///< of the developed frames
    };

    /// The tools outlive the flow; `convert` queues the DNG of that path for its development.
    FrameFlow(const Plan &plan, MlvDumpTask &reader, CR2HDRTask &blender,
              std::function<void(const QString &path)> convert);
    ~FrameFlow() override;

    /// Begins with the survey.
    void begin();

    // Ends of work that was begun here.
    void framesExtracted();
    void framesBlended();
    void frameConverted(const QString &path);

    /// Frames of the whole flow; 0 until they are surveyed.
    quint64 frames() const { return m_frames; }
    /// Why it can't go on, a sentence; empty while it can.
    QString error() const { return m_error; }
    /// Whether it waits for a tool that doesn't run: one that ended without its last word.
    bool lacksReader() const;
    bool lacksBlender() const;

    bool hasEncoder() const { return m_pipe != nullptr; }
    /// What the encoder reads, see `encoderWanted`.
    int readEnd() const { return m_pipe->readEnd(); }

Q_SIGNALS:
    /// The survey is there.
    void surveyed();
    /// The first frame is there; the encoder is to be started with readEnd() as its standard input
    /// before this returns.
    void encoderWanted(const filmwright::RawVideo &video);
    /// error() has something to tell.
    void stuck();

private:
    enum class Step { Surveying, SurveyingRows, Extracting, Blending, Waiting };

    void surveyRows();
    void beginRanges();
    void readOn();
    void develop();
    void sendConverted();
    [[nodiscard]] bool openPipe(const QString &dngPath);
    void give(const QString &error);

    QString inFolder(const QString &name) const;
    QString survey() const { return inFolder(QStringLiteral("frames.survey")); }
    QString rowSurvey() const { return inFolder(QStringLiteral("rows.survey")); }

    const Plan m_plan;
    MlvDumpTask &m_reader;
    CR2HDRTask &m_blender;
    const std::function<void(const QString &path)> m_convert;
    Step m_step = Step::Surveying;
    quint64 m_frames = 0;
    quint64 m_read = 0;          ///< those that were asked for
    quint64 m_between = 0;       ///< those of them that aren't taken
    QStringList m_range;         ///< names of the range that is being read
    std::deque<QString> m_order; ///< paths that aren't sent
    QSet<QString> m_converted;   ///< those of them that are developed
    std::unique_ptr<FramePipe> m_pipe;
    QTimer m_readerOfPipe; ///< has closed its end and is expected to end itself
    QString m_error;
};

} // namespace filmwright
