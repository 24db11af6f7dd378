// SPDX-License-Identifier: MIT
#pragma once

#include "mlvdump/frameselection.h"
#include "mlvdump/mlvdumpreport.h"
#include "mlvdump/mlvdumptaskprotocol.h"
#include "mlvdump/rawcorrections.h"
#include "runner/taskwrapper.h"

#include <QTimer>

namespace filmwright {

/// The kind of run that an MlvDumpTask is in.
enum MlvDumpMode : qint32 {
    MlvDumpModeNone = 0,
    MlvDumpModeMeta = 1,
    MlvDumpModeDNG = 2,
    MlvDumpModeDark = 3,
    MlvDumpModeFlatDark = 4,
    MlvDumpModeFlat = 5,
    MlvDumpModeFlatDarkSubstraction = 6,
};

/// Runs mlv_dump on one recording: the metadata report, the extraction of frames, the averaging of
/// calibration recordings and the subtraction of one average from another. One run at a time; a
/// task is reused for run after run. Main thread only.
///
/// A run's end is recognised by a printed line that contains "Done", a failure by one that contains
/// "[ERROR]", one that concerns this recording alone by one that contains "[UNUSABLE]"; exit
/// statuses are not looked at. A report that is cut short never finishes its run: the error is in
/// the system log only.
class MlvDumpTask : public TaskWrapper, public TaskWrapperDelegate, public TaskWrapperLineReceiver
{
    Q_OBJECT

public:
    /// A task that is ready to run the bundled mlv_dump and listens to itself.
    static std::unique_ptr<MlvDumpTask> mlvDumpTask();

    MlvDumpTask();
    ~MlvDumpTask() override;

    MlvDumpTaskProtocol *delegate() const { return m_delegate; }
    void setDelegate(MlvDumpTaskProtocol *delegate) { m_delegate = delegate; }

    /// The recording, or the first calibration path that is set on a task without a recording.
    QString mlvPath() const;
    void setMlvPath(const QString &path) { m_mlvPath = path; }
    QString darkPath() const { return m_darkPath; }
    void setDarkPath(const QString &path) { m_darkPath = path; }
    QString flatPath() const { return m_flatPath; }
    void setFlatPath(const QString &path) { m_flatPath = path; }
    QString flatDarkPath() const { return m_flatDarkPath; }
    void setFlatDarkPath(const QString &path) { m_flatDarkPath = path; }

    /// What is done to the frames of later extractions beside their calibration.
    void setCorrections(const RawCorrections &corrections) { m_corrections = corrections; }

    /// Which frames later extractions are of; all after creation.
    void setFrameSelection(const FrameSelection &selection) { m_selection = selection; }
    /// How many frames the report lets expect of an extraction.
    quint64 framesToExtract() const;

    MlvDumpMode processMode() const { return m_processMode; }
    /// The last error line of the current run; null without one.
    QString error() const { return m_error; }

    /// Why the recording of the current run can't be used, a sentence; empty when it can. Such a
    /// report finishes with no frames and no values, such a frame run doesn't finish.
    QString unusableError() const { return m_unusableError; }

    /// What the report said; each value has a getter of its own, too.
    const MlvMetadata &metadata() const { return m_metadata; }
    /// What the tool has warned of since the last metadata run began, each once: sentences.
    QStringList warnings() const { return m_warnings; }
    /// What else it has noted since then, likewise: nothing is wrong with the frames.
    QStringList notes() const { return m_notes; }

    float fps() const { return m_metadata.fps; }
    float aperture() const { return m_metadata.aperture; }
    /// Frames of the recording; after a calibration run, the frames that were averaged.
    quint64 videoFrames() const { return m_metadata.videoFrames; }
    quint64 audioFrames() const { return m_metadata.audioFrames; }
    quint64 iso() const { return m_metadata.iso; }
    double shutter() const { return m_metadata.shutter; }
    QString camera() const { return m_metadata.camera; }
    QString cameraSerial() const { return m_metadata.cameraSerial; }
    QString lens() const { return m_metadata.lens; }
    QString focal() const { return m_metadata.focal; }
    QString date() const { return m_metadata.date; }
    QString time() const { return m_metadata.time; }
    QString resolution() const { return m_metadata.resolution; }
    int bitsPerSample() const { return m_metadata.bitsPerSample; }

    /// Has frames and sound made into a CinemaDNG clip in that folder, which is there when they are
    /// extracted and ends with a path separator; empty: none.
    void setClipFolder(const QString &folder) { m_clipFolder = folder; }

    /// Where the runs write, ending with a path separator: the clip's folder, else the recording's
    /// own folder in the temporary directory, or that directory itself for a task without a
    /// recording. Derived anew at each call.
    QString extractionDirectory() const;
    /// The same without regard to a clip.
    QString workingFolder() const;

    /// Reads the recording's metadata, when other recordings are read maybe only after some of
    /// them; ends with metaExtractionFinished().
    void extractMeta();

    void extractDNGAtIndex(qint64 index) { extractDNGAtIndex(index, false); }
    /// Extracts the frames from `index` on; ends with dngExtractionFinished(). With index 0, frames
    /// that are all there already are used as they are; with another index, whatever the directory
    /// holds. Throws std::invalid_argument when no recording is set.
    void extractDNGAtIndex(qint64 index, bool andWaitUntilExit);

    /// Instead of extracting the frames finds out what has to be known of all of them and writes it
    /// to that file, and the sound; ends with dngExtractionFinished(). With `rowFrames` it also
    /// writes the frames that cr2hdr makes its survey of, "%06d.dng" behind that prefix. The
    /// working folder is begun anew.
    void surveyFrames(const QString &survey, const QString &rowFrames = {});
    /// How many frames the last survey is of.
    quint64 surveyedFrames() const { return m_surveyedFrames; }
    /// Extracts a part of the surveyed frames, which are numbered in their files from 0 on;
    /// `range` counts as the recording does. Ends with dngExtractionFinished().
    void extractSurveyed(const QString &survey, const FrameSelection &range);

    // Averages the dark, the dark of the flat, the flat into their files in the extraction
    // directory.
    void prepareDark();
    void prepareFlatDark();
    void prepareFlat();
    /// Subtracts the averaged dark of the flat from the averaged flat.
    void substractFlatDark();

    /// Whether a report that is sent after the current event is still to come, or the reading of
    /// the metadata waits for its turn.
    bool isReportPending() const;
    void cancelPendingReport();

    void receivedLine(const QString &line, TaskWrapper &taskWrapper) override;
    void aborted() override;

protected:
    void runEnded() override;

private:
    void beginRun(MlvDumpMode mode);
    void runSurveyed(const QStringList &options, const FrameSelection &range);
    void average(MlvDumpMode mode, const QString &recording);
    bool framesExist(qint64 index) const;
    bool allFramesExist(const QString &directory) const;
    void checkForSkippedFrame();
    void takeSentence(const QString &line);
    void takeUnusableError(const QString &line);
    void handleErrorLine(const QString &line);
    void handleEndOfWork();
    quint64 processedFrames() const;
    void finishCalibration(void (MlvDumpTaskProtocol::*report)(MlvDumpTask &));
    void tell(void (MlvDumpTaskProtocol::*report)(MlvDumpTask &));
    void tellLater(void (MlvDumpTaskProtocol::*report)(MlvDumpTask &));

    QStringList m_log;
    MlvMetadata m_metadata;
    MlvDumpMode m_processMode = MlvDumpModeNone;
    MlvDumpTaskProtocol *m_delegate = nullptr;
    QString m_mlvPath;
    QString m_darkPath;
    QString m_flatPath;
    QString m_flatDarkPath;
    QString m_clipFolder;
    RawCorrections m_corrections;
    FrameSelection m_selection;
    quint64 m_surveyedFrames = 0;
    bool m_surveys = false;    ///< the current run makes a survey
    bool m_closesGaps = false; ///< the current run extracts all frames of the working folder
    QString m_error;
    QString m_unusableError;
    QStringList m_warnings;
    QStringList m_notes;
    QTimer m_pendingReport;
    void (MlvDumpTaskProtocol::*m_laterReport)(MlvDumpTask &) = nullptr;
};

} // namespace filmwright
