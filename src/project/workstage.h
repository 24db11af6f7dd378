// SPDX-License-Identifier: MIT
#pragma once

#include "project/conversionsettings.h"

#include <QString>
#include <QtGlobal>

namespace filmwright {

class MLVProjectController;

/// What is being done to a recording; finer than MLVProjectMode, which stays the same while frames
/// are blended, converted and merged.
enum class WorkStage {
    Waiting,
    Reading,
    Extracting,
    Blending,
    Converting,
    Merging,
    Encoding,
    Finished
};

/// "converting", for people and scripts.
QString stageName(WorkStage stage);

/// How far a stage is.
struct StagePosition
{
    WorkStage stage = WorkStage::Waiting;
    quint64 done = 0;   ///< frames
    quint64 frames = 0; ///< of the stage; 0: it isn't counted in frames
    quint64 reused = 0; ///< the first frames that cost no time: an earlier run left them
};

/// What the time that a recording takes depends on.
struct RecordingWork
{
    quint64 frames = 0;    ///< 0: not known yet
    double megapixels = 1; ///< of a frame
    ConversionSettings settings;
};

/// The work that a project whose metadata has been read has before it.
RecordingWork workOf(const MLVProjectController &project);

/// Counts the frames of the stage that a project is in. Main thread only; the project outlives it.
class StageCounter
{
public:
    explicit StageCounter(const MLVProjectController &project);

    /// While frames are extracted, looks for their files.
    StagePosition position();

private:
    StagePosition encoding() const;
    StagePosition conversion();
    quint64 extractedFrames();

    const MLVProjectController &m_project;
    quint64 m_extractedFrames = 0;
    bool m_merging = false;
};

} // namespace filmwright
