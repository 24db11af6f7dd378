// SPDX-License-Identifier: MIT
#pragma once

#include "conversion/cr2hdrtask.h"
#include "conversion/hdrdualimagesmerge.h"
#include "encoding/ffmpegtask.h"
#include "flow/frameflow.h"
#include "mlvdump/mlvdumptask.h"
#include "project/mlvprojectcontrollerprotocol.h"

#include <QMap>
#include <QObject>
#include <QScopedPointer>
#include <QTimer>

#include <deque>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

class SLUnitProcessManager;

namespace filmwright {

class DCRawProcess;
class MovieMark;
enum class MovieKind;

/// The stage that a project is in.
enum MLVProjectMode : qint32 {
    MLVProjectModeIdle = -1,         ///< new, stopped, aborted or without a recording
    MLVProjectModeReadingData = 0,   ///< mlv_dump reads the metadata
    MLVProjectModeReady = 1,         ///< metadata read
    MLVProjectModePending = 2,       ///< queued for a batch run, not started
    MLVProjectModeExtracting = 3,    ///< mlv_dump extracts the frames
    MLVProjectModeRGBConversion = 4, ///< dcraw converts the frames; passed by raw ones
    MLVProjectModeBuildingMovie = 5, ///< ffmpeg builds the movie
    MLVProjectModeFinished = 6,      ///< the movie is written, the working folder removed
};

/// The text that stands for a mode. While frames are extracted it depends on what mlv_dump does;
/// for a calibration run there is none (null).
QString stateText(MLVProjectMode mode, MlvDumpMode processMode);

/// One queued recording and everything that is done to it: metadata, frames, conversion, movie.
/// Each stage is started by the end of the one before; no event looks at the current mode. With a
/// frame buffer a recipe's frames flow through extraction, conversion and encoding at the same
/// time: the mode is the first of them that isn't over.
///
/// Main thread only, with an event loop. Failures of the tools other than mlv_dump's error lines
/// are not told by the delegate calls; ProjectMonitor finds them.
class MLVProjectController : public QObject,
                             public MlvDumpTaskProtocol,
                             public CR2HDRTaskProtocol,
                             public FFmpegTaskProtocol
{
    Q_OBJECT

public:
    /// A project whose metadata is being read.
    static std::unique_ptr<MLVProjectController> projectWithMLVFile(const QString &path);

    /// The tools that make a movie of a recording, to be looked for before the work.
    static QStringList toolNames(bool blendsAlternatingRows,
                                 const std::optional<Recipe> &recipe = std::nullopt);

    MLVProjectController();
    /// Ends a running frame conversion and waits for it; other tools end with the application.
    ~MLVProjectController() override;

    /// Not owned; cleared by its owner before it goes away.
    MLVProjectControllerProtocol *delegate() const { return m_delegate; }
    void setDelegate(MLVProjectControllerProtocol *delegate) { m_delegate = delegate; }

    QString mlvPath() const { return m_mlvPath; }
    /// Starts reading the recording's metadata. An empty path clears the recording and leaves
    /// everything else as it is. The delegate isn't told of either change of mode.
    void setMlvPath(const QString &path);

    // The averaged calibration recordings; an empty string means none.
    QString darkPath() const { return m_darkPath; }
    void setDarkPath(const QString &path) { m_darkPath = path; }
    QString flatPath() const { return m_flatPath; }
    void setFlatPath(const QString &path) { m_flatPath = path; }

    /// A MovieFormat.
    qint32 movieFormat() const { return m_movieFormat; }
    void setMovieFormat(qint32 format) { m_movieFormat = format; }
    /// A MovieQuality.
    qint32 movieQuality() const { return m_movieQuality; }
    void setMovieQuality(qint32 quality) { m_movieQuality = quality; }

    /// How the movie is made in place of format and quality; nothing after creation. Not between
    /// launchDNGExtraction() and the end of the conversion; a recipe that develops frames in
    /// another way waits for a frame that a stopped run is still converting.
    const std::optional<Recipe> &recipe() const { return m_recipe; }
    void setRecipe(const std::optional<Recipe> &recipe);

    /// Whether neighbouring frames are merged into HDR frames, of which the movie is then made,
    /// one frame shorter and without sound; false after creation.
    bool dualISO() const { return m_dualISO; }
    void setDualISO(bool dualISO) { m_dualISO = dualISO; }

    /// Whether all extracted frames go through cr2hdr before they are converted, for recordings
    /// whose rows alternate between two sensitivities; false after creation.
    bool blendsAlternatingRows() const { return m_blendsAlternatingRows; }
    void setBlendsAlternatingRows(bool blends) { m_blendsAlternatingRows = blends; }

    /// What is done to frames beside their calibration; nothing after creation. Not between
    /// launchDNGExtraction() and the end of the conversion; another exposure waits for a frame that
    /// a stopped run is still converting.
    const RawCorrections &rawCorrections() const { return m_corrections; }
    void setRawCorrections(const RawCorrections &corrections);

    /// Which frames later extractions are of; all after creation.
    const FrameSelection &frameSelection() const { return m_frames; }
    void setFrameSelection(const FrameSelection &selection);

    /// A table of colours that the frames of a recipe go through, a .cube file; none after
    /// creation. Before the movie is begun.
    void setLut(const QString &path) { m_lut = path; }

    /// How many bytes the frames between reader and encoder may take, though never less than one
    /// frame; 0, as after creation: all of them are extracted, then converted, then encoded. Only
    /// for movies that a recipe makes. Before the extraction is launched.
    void setFrameBuffer(qint64 bytes) { m_frameBuffer = bytes; }
    qint64 frameBuffer() const { return m_frameBuffer; }
    bool flows() const;
    /// What flows; null before the launch, after the end, and where all goes stage by stage.
    const FrameFlow *flow() const { return m_flow.get(); }

    /// Whether the working folder of a finished movie stays, for whoever wants to look into it.
    bool keepsTmpFiles() const { return m_keepsTmpFiles; }
    void setKeepsTmpFiles(bool keeps) { m_keepsTmpFiles = keeps; }

    /// How many frames are converted at once, at least 1, each by a dcraw and a worker thread of
    /// its own; 1 after creation. The images come in the order in which they are ready. Not between
    /// launchDNGExtraction() and the end of the conversion; waits for a frame that a stopped run is
    /// still converting.
    int conversionWorkers() const { return static_cast<int>(m_dcRawProcesses.size()); }
    void setConversionWorkers(int workers);

    // What the report says of the recording; 0 or "" before it was read.
    const MlvMetadata &metadata() const { return m_mlvDumptask->metadata(); }
    float fps() const { return m_mlvDumptask->fps(); }
    quint64 videoFrames() const { return m_mlvDumptask->videoFrames(); }
    /// Those of them that the movie is made of, as far as the report tells.
    quint64 framesToExtract() const { return m_mlvDumptask->framesToExtract(); }
    quint64 audioFrames() const { return m_mlvDumptask->audioFrames(); }
    quint64 iso() const { return m_mlvDumptask->iso(); }
    double shutter() const { return m_mlvDumptask->shutter(); }
    float aperture() const { return m_mlvDumptask->aperture(); }
    QString camera() const { return m_mlvDumptask->camera(); }
    QString cameraSerial() const { return m_mlvDumptask->cameraSerial(); }
    QString lens() const { return m_mlvDumptask->lens(); }
    QString focal() const { return m_mlvDumptask->focal(); }
    QString date() const { return m_mlvDumptask->date(); }
    QString time() const { return m_mlvDumptask->time(); }
    QString resolution() const { return m_mlvDumptask->resolution(); }
    int bitsPerSample() const { return m_mlvDumptask->bitsPerSample(); }
    /// What mlv_dump has warned of, sentences: a recording that is cut off, sound that can't be
    /// read.
    QStringList warnings() const { return m_mlvDumptask->warnings(); }
    /// What mlv_dump has noted beside, sentences: a level that can't be true, filled gaps.
    QStringList notes() const { return m_mlvDumptask->notes(); }
    /// Why the recording can't be used, as mlv_dump's last run told; empty when it can.
    QString unusableError() const { return m_mlvDumptask->unusableError(); }
    /// Where the frames are extracted, ending with a path separator: the working folder, or where
    /// they stay raw the unfinished movie.
    QString extractionDirectory() const;
    /// The project's folder in the temporary directory, ending with a path separator.
    QString workingFolder() const { return m_mlvDumptask->workingFolder(); }

    MLVProjectMode mlvProjectMode() const { return m_mode; }
    QString state() const { return stateText(m_mode, m_mlvDumptask->processMode()); }

    /// Where the movie goes: beside the recording, by the current format or recipe, unless another
    /// path is set.
    QString moviePath() const;
    void setMoviePath(const QString &path) { m_moviePath = path; }
    MovieKind movieKind() const;

    /// Frames handed to the conversion in this run, and those of them that are still out.
    int framesToConvert() const { return m_framesToConvert; }
    int dngToProcess() const { return m_dngToProcess; }
    /// Frames that the movie of this run has to have: merging neighbours costs one.
    int framesOfMovie() const;
    /// Frames of this run that an earlier one had converted.
    int convertedBefore() const { return m_convertedBefore; }

    /// Pairs of neighbouring frames that are still to be merged.
    int pairsToMerge() const { return static_cast<int>(m_pairsToMerge.size()); }

    /// Why this run doesn't get to write its movie: another run writes it, its folder can't be
    /// written, or its table of colours is gone. Empty while nothing hinders it. Known when the
    /// extraction is launched, where it can be; the stage's tool is then not started.
    QString movieError() const { return m_movieError; }
    /// The mark of the movie that was begun last, null before. It is removed with an aborted movie;
    /// whoever judges a movie that is finished settles it.
    std::shared_ptr<MovieMark> movieMark() const { return m_movieMark; }
    /// Removes a finished movie that isn't whole, with its mark.
    void removeMovie();

    /// Whether a stage's tool runs or its report is still to come (the conversion not counted).
    bool isToolBusy() const;
    /// Whether a notification about a tool of that address is about one of this project.
    bool isTool(const QObject *sender) const;
    /// ffmpeg: frames encoded in this run, exit status of the last run, what it printed.
    const FFmpegTask &encoder() const { return *m_ffmpegTask; }
    /// cr2hdr: exit status of the last run, what it printed.
    const CR2HDRTask &blender() const { return *m_cr2hdrTask; }
    /// The last lines that each tool printed in this run (dcraw: on a frame that it could not
    /// convert), by the tool's name, at most ten each; tools that said nothing are left out.
    QMap<QString, QStringList> lastToolLines() const;
    /// The folder of the frames that the movie is made of, ending with a path separator.
    QString tiffsDirectory() const;

    // One batch run: readyToGo() on every project, then formats, calibration and
    // launchDNGExtraction() on the one whose turn it is.
    void readyToGo();
    void launchDNGExtraction();
    /// Ends whatever runs; nothing more is delivered or launched. A dcraw that is converting a
    /// frame ends by itself and its frame is kept, unless frames flow: then it is ended, too.
    void stop();
    /// Ends the frames that a stopped run is still converting and waits for that.
    void endConversions();
    /// Removes the working folder with everything in it.
    void cleanTmpFiles();

    void metaExtractionFinished(MlvDumpTask &task) override;
    void dngExtractionFinished(MlvDumpTask &task) override;
    void dngExtractionAborted(MlvDumpTask &task) override;
    void processingDarkFinished(MlvDumpTask &) override {}
    void processingFlatFinished(MlvDumpTask &) override {}
    void processingFlatDarkFinished(MlvDumpTask &) override {}
    void processingFlatDarkSubstractionFinished(MlvDumpTask &) override {}
    void error(const QString &error, MlvDumpTask &forTask) override;
    void blendFinished(CR2HDRTask &task) override;
    void movieExtractionFinished(FFmpegTask &task) override;
    void movieExtractionAborted(FFmpegTask &task) override;

    /// One frame has come back from the conversion.
    void imageRGBReceived(const QImage &image);

private:
    void setMode(MLVProjectMode mode);
    void createConversionUnits(int count);
    [[nodiscard]] QString clearUnfinishedMovies() const;
    [[nodiscard]] QString beginFrameFolder();
    void takeFrames(const QString &directory);
    void finishFrameFolder(const QString &directory);
    void replaceMlvDumpTask();
    void launchFlow();
    void takeSurvey();
    void endFlow();
    void launchRGBExtraction(const QString &directory);
    void endOldConversions();
    QByteArray lastConversionError() const;
    void launchBlend(const QString &directory);
    void launchHDRExtraction();
    void mergeNextPair();
    std::optional<RecipeMovie> recipeMovie() const;
    QString lutCopy() const;
    [[nodiscard]] QString copyLut() const;
    void launchMovieExtraction();
    void launchFlowingMovie(const RawVideo &video);
    void launchMovie();

    /// It may be in the middle of a call to this object when it goes.
    template <typename Task>
    using TaskPointer = std::unique_ptr<Task, QScopedPointerDeleteLater>;

    MLVProjectControllerProtocol *m_delegate = nullptr;
    TaskPointer<MlvDumpTask> m_mlvDumptask;
    std::vector<std::shared_ptr<DCRawProcess>>
        m_dcRawProcesses; // they share the paths of the first
    std::unique_ptr<SLUnitProcessManager> m_dcRawPorcessManager;
    TaskPointer<CR2HDRTask> m_cr2hdrTask;
    HDRDualImagesMerge m_hdrMerge;
    TaskPointer<FFmpegTask> m_ffmpegTask;
    std::unique_ptr<FrameFlow> m_flow; // uses the tasks
    QTimer m_afterLastFrame;
    QTimer m_nextMerge;
    std::deque<std::pair<QString, QString>> m_pairsToMerge;
    std::shared_ptr<MovieMark> m_movieMark;
    QString m_movieError;
    QString m_mlvPath;
    QString m_moviePath;
    QString m_darkPath;
    QString m_flatPath;
    qint32 m_movieFormat = MovieFormatAVI;
    qint32 m_movieQuality = MovieQualityMaximum;
    MLVProjectMode m_mode = MLVProjectModeIdle;
    std::optional<Recipe> m_recipe;
    FrameSelection m_frames;
    QString m_lut;
    RawCorrections m_corrections;
    qint64 m_frameBuffer = 0;
    bool m_dualISO = false;
    bool m_blendsAlternatingRows = false;
    bool m_keepsTmpFiles = false;
    bool m_writesFrameFolder = false;
    int m_framesToConvert = 0;
    int m_convertedBefore = 0;
    int m_dngToProcess = 0;
};

} // namespace filmwright
