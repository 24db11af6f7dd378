// SPDX-License-Identifier: MIT
#include "project/mlvprojectcontroller.h"

#include "conversion/dcrawarguments.h"
#include "conversion/dcrawprocess.h"
#include "conversion/tiffbitmap.h"
#include "encoding/cubelut.h"
#include "project/framefolder.h"
#include "project/moviefacts.h"
#include "project/moviemark.h"
#include "project/spacecheck.h"
#include "runner/files.h"
#include "runner/resources.h"
#include "runner/wholefiles.h"
#include "sluice/slunitprocessmanager.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <chrono>
#include <cmath>

using namespace std::chrono_literals;

namespace filmwright {

namespace {

/// Lets the callback that delivered the last frame return before the next stage starts.
constexpr auto pauseAfterLastFrame = 100ms;

/// Whether an earlier run has converted the frame. A conversion that was killed leaves the
/// beginning of a TIFF; it must not be taken for a frame and is removed.
bool wasConverted(const QString &dngPath)
{
    const QString tiff = tiffPathFor(dngPath);
    if (!QFileInfo::exists(tiff))
        return false;
    return TiffBitmap::isWhole(tiff) || !QFile::remove(tiff);
}

/// Extracted frames carry this extension in lower case; a ".DNG" is no frame of ours.
QStringList extractedFrames(const QString &directory)
{
    static const QRegularExpression dngName(QStringLiteral("\\.dng$"));
    return folderEntries(directory).filter(dngName);
}

QStringList lastLines(const QByteArray &output)
{
    constexpr qsizetype kept = 10;
    static const QRegularExpression lineEnd(QStringLiteral("[\r\n]+"));
    const QStringList lines = QString::fromUtf8(output).split(lineEnd, Qt::SkipEmptyParts);
    return lines.mid(std::max<qsizetype>(0, lines.size() - kept));
}

} // namespace

std::unique_ptr<MLVProjectController> MLVProjectController::projectWithMLVFile(const QString &path)
{
    auto controller = std::make_unique<MLVProjectController>();
    controller->setMlvPath(path);
    return controller;
}

MLVProjectController::MLVProjectController()
    : m_mlvDumptask(MlvDumpTask::mlvDumpTask().release())
    , m_cr2hdrTask(CR2HDRTask::cr2hdrTask().release())
    , m_ffmpegTask(FFmpegTask::ffmpegTask().release())
{
    createConversionUnits(1);
    m_afterLastFrame.setSingleShot(true);
    m_afterLastFrame.setInterval(pauseAfterLastFrame);
    connect(&m_afterLastFrame, &QTimer::timeout, this, [this] {
        if (m_dualISO)
            launchHDRExtraction();
        else
            launchMovieExtraction();
    });
    m_nextMerge.setSingleShot(true);
    connect(&m_nextMerge, &QTimer::timeout, this, &MLVProjectController::mergeNextPair);
    m_cr2hdrTask->setDelegate(this);
}

MLVProjectController::~MLVProjectController()
{
    if (m_flow && m_ffmpegTask->isRunning())
        m_ffmpegTask->abort(); // it would make a movie of the frames that it has
    m_ffmpegTask->setDelegate(nullptr);
    m_cr2hdrTask->setDelegate(nullptr);
    m_mlvDumptask->setDelegate(nullptr);
    for (const auto &unit : m_dcRawProcesses)
        unit->outputForKey(QStringLiteral("Image"))->setTarget(nullptr);
    m_dcRawPorcessManager->stop();
}

void MLVProjectController::setConversionWorkers(int workers)
{
    const int count = std::max(1, workers);
    if (count != conversionWorkers())
        createConversionUnits(count);
}

void MLVProjectController::setRecipe(const std::optional<Recipe> &recipe)
{
    const QStringList develop = m_recipe ? m_recipe->develop : QStringList();
    m_recipe = recipe;
    if ((m_recipe ? m_recipe->develop : QStringList()) != develop)
        createConversionUnits(conversionWorkers());
    m_hdrMerge.setSixteenBits(m_recipe && m_recipe->developsSixteenBits());
}

void MLVProjectController::setRawCorrections(const RawCorrections &corrections)
{
    m_mlvDumptask->setCorrections(corrections);
    if (std::exchange(m_corrections, corrections).exposure != corrections.exposure)
        createConversionUnits(conversionWorkers());
}

void MLVProjectController::setFrameSelection(const FrameSelection &selection)
{
    m_frames = selection;
    m_mlvDumptask->setFrameSelection(selection);
}

QString MLVProjectController::moviePath() const
{
    if (!m_moviePath.isEmpty())
        return m_moviePath;
    return m_recipe ? moviePathFor(m_mlvPath, *m_recipe) : moviePathFor(m_mlvPath, m_movieFormat);
}

MovieKind MLVProjectController::movieKind() const
{
    return movieKindOf(m_recipe);
}

QString MLVProjectController::extractionDirectory() const
{
    return movieKind() == MovieKind::Folder ? unfinishedFolder(moviePath()) : workingFolder();
}

int MLVProjectController::framesOfMovie() const
{
    return std::max(0, m_framesToConvert - (m_dualISO ? 1 : 0));
}

void MLVProjectController::endConversions()
{
    createConversionUnits(conversionWorkers());
}

/// The end of the units that were there waits for their frames.
void MLVProjectController::createConversionUnits(int count)
{
    m_dcRawPorcessManager = std::make_unique<SLUnitProcessManager>();
    m_dcRawProcesses.clear();
    for (int i = 0; i < count; ++i) {
        auto unit = std::make_shared<DCRawProcess>();
        if (i > 0)
            unit->sharePathsOf(*m_dcRawProcesses.front());
        if (m_recipe)
            unit->setDevelop(m_recipe->develop);
        unit->setExposure(static_cast<float>(std::exp2(m_corrections.exposure)));
        SLOutlet *image = unit->outputForKey(QStringLiteral("Image"));
        image->setTarget(this);
        image->setSelector(&MLVProjectController::imageRGBReceived);
        m_dcRawPorcessManager->addUnitProcess(unit);
        m_dcRawProcesses.push_back(std::move(unit));
    }
}

void MLVProjectController::setMlvPath(const QString &path)
{
    if (path.isEmpty()) {
        m_mlvPath = QString();
        m_mode = MLVProjectModeIdle;
        return;
    }
    m_mlvPath = path;
    replaceMlvDumpTask();
    m_mlvDumptask->extractMeta();
    m_mode = MLVProjectModeReadingData;
}

void MLVProjectController::replaceMlvDumpTask()
{
    m_mlvDumptask->stop(false);
    m_mlvDumptask->setDelegate(nullptr);
    m_mlvDumptask.reset(MlvDumpTask::mlvDumpTask().release());
    m_mlvDumptask->setMlvPath(m_mlvPath);
    m_mlvDumptask->setCorrections(m_corrections);
    m_mlvDumptask->setFrameSelection(m_frames);
    m_mlvDumptask->setDelegate(this);
}

void MLVProjectController::setMode(MLVProjectMode mode)
{
    m_mode = mode;
    if (m_delegate)
        m_delegate->controllerUpdated(*this);
}

QString stateText(MLVProjectMode mode, MlvDumpMode processMode)
{
    switch (mode) {
    case MLVProjectModeReadingData:
        return QStringLiteral("Reading data");
    case MLVProjectModePending:
        return QStringLiteral("Pending");
    case MLVProjectModeExtracting:
        switch (processMode) {
        case MlvDumpModeNone:
            return QStringLiteral("Waiting for mlv_dump");
        case MlvDumpModeMeta:
            return QStringLiteral("Meta extraction");
        case MlvDumpModeDNG:
            return QStringLiteral("Extracting DNG");
        default:
            return {};
        }
    case MLVProjectModeRGBConversion:
        return QStringLiteral("RGB conversion");
    case MLVProjectModeBuildingMovie:
        return QStringLiteral("Building movie");
    case MLVProjectModeFinished:
        return QStringLiteral("Finished");
    case MLVProjectModeIdle:
    case MLVProjectModeReady:
        break;
    }
    return QStringLiteral("Ready");
}

bool MLVProjectController::isToolBusy() const
{
    return m_mlvDumptask->isRunning() || m_mlvDumptask->isReportPending() ||
           m_cr2hdrTask->isRunning() || m_ffmpegTask->isRunning();
}

bool MLVProjectController::isTool(const QObject *sender) const
{
    return sender == m_mlvDumptask.get() || sender == m_cr2hdrTask.get() ||
           sender == m_ffmpegTask.get();
}

void MLVProjectController::readyToGo()
{
    setMode(MLVProjectModePending);
}

void MLVProjectController::launchDNGExtraction()
{
    m_mode = MLVProjectModeExtracting;
    m_mlvDumptask->stop(false); // the tool that printed the report may not have exited yet
    m_mlvDumptask->cancelPendingReport(); // of an extraction that was aborted
    m_mlvDumptask->setDarkPath(m_darkPath);
    m_mlvDumptask->setFlatPath(m_flatPath);
    m_movieMark.reset(); // of an earlier run; nobody writes that movie any more
    m_movieError = clearUnfinishedMovies();
    const bool keepsRaw = movieKind() == MovieKind::Folder;
    m_mlvDumptask->setClipFolder(keepsRaw ? extractionDirectory() : QString());
    if (m_movieError.isEmpty() && keepsRaw)
        m_movieError = beginFrameFolder();
    if (m_movieError.isEmpty()) {
        if (flows())
            launchFlow();
        else
            m_mlvDumptask->extractDNGAtIndex(0);
    }
    setMode(MLVProjectModeExtracting);
}

bool MLVProjectController::flows() const
{
    return m_frameBuffer > 0 && m_recipe && movieKind() == MovieKind::File;
}

void MLVProjectController::launchFlow()
{
    endConversions();
    m_framesToConvert = m_dngToProcess = m_convertedBefore = 0;
    const FrameFlow::Plan plan{m_frames, framesInBuffer(*this), m_blendsAlternatingRows, m_dualISO,
                               m_recipe->developsSixteenBits()};
    m_flow = std::make_unique<FrameFlow>(
        plan, *m_mlvDumptask, *m_cr2hdrTask,
        [this](const QString &path) { m_dcRawProcesses.front()->addFilePath(path); });
    for (const auto &unit : m_dcRawProcesses) {
        SLOutlet *path = unit->addPathOutput();
        path->setTarget(m_flow.get());
        path->setSelector(&FrameFlow::frameConverted);
    }
    connect(m_flow.get(), &FrameFlow::surveyed, this, &MLVProjectController::takeSurvey);
    connect(m_flow.get(), &FrameFlow::encoderWanted, this,
            &MLVProjectController::launchFlowingMovie);
    connect(
        m_flow.get(), &FrameFlow::stuck, this, [this] { setMode(m_mode); }, Qt::QueuedConnection);
    m_dcRawPorcessManager->execute();
    m_flow->begin();
}

void MLVProjectController::takeSurvey()
{
    m_framesToConvert = m_dngToProcess = static_cast<int>(m_flow->frames());
}

/// The encoder has to be gone before: it takes the end of the pipe for the end of the movie.
void MLVProjectController::endFlow()
{
    if (!m_flow)
        return;
    m_flow.reset();
    endConversions();
}

/// Marked before the first frame, so that of two runs one leaves the folder alone.
QString MLVProjectController::beginFrameFolder()
{
    m_movieMark = std::make_shared<MovieMark>(moviePath());
    QString error = m_movieMark->set();
    if (!error.isEmpty())
        return error;
    error = makeUnfinishedFolder(moviePath());
    if (error.isEmpty())
        m_writesFrameFolder = true;
    else
        m_movieMark->remove();
    return error;
}

QStringList MLVProjectController::toolNames(bool blendsAlternatingRows,
                                            const std::optional<Recipe> &recipe)
{
    QStringList names{mlvDumpName};
    if (!recipe || !recipe->keepsRawFrames())
        names << dcrawName << ffmpegName;
    if (blendsAlternatingRows)
        names << cr2hdrName;
    return names;
}

/// A run that died may have been asked for another format. Returns the error of this run's.
QString MLVProjectController::clearUnfinishedMovies() const
{
    for (const QString &extension : movieExtensions())
        if (const QString movie = pathWithExtension(m_mlvPath, extension); movie != moviePath())
            static_cast<void>(MovieMark::clear(movie)); // concerns that movie alone
    return MovieMark::clear(moviePath(), movieKind());
}

void MLVProjectController::stop()
{
    m_dcRawPorcessManager->stop();
    m_afterLastFrame.stop();
    m_nextMerge.stop();
    m_pairsToMerge.clear();
    m_hdrMerge.setSecondImagePath(QString()); // lets go of the frame in memory
    m_mlvDumptask->cancelPendingReport();
    if (m_mlvDumptask->isRunning())
        m_mlvDumptask->abort();
    m_cr2hdrTask->abort();
    if (m_ffmpegTask->isRunning())
        m_ffmpegTask->abort();
    endFlow();
    if (std::exchange(m_writesFrameFolder, false))
        removeMovie();
    setMode(MLVProjectModeIdle);
}

void MLVProjectController::removeMovie()
{
    if (movieKind() == MovieKind::Folder)
        removeUnfinishedFolder(moviePath());
    else
        QFile::remove(moviePath());
    m_movieMark->remove();
}

void MLVProjectController::cleanTmpFiles()
{
    removeFolder(workingFolder());
}

void MLVProjectController::metaExtractionFinished(MlvDumpTask &)
{
    setMode(MLVProjectModeReady);
}

void MLVProjectController::dngExtractionFinished(MlvDumpTask &task)
{
    if (m_flow)
        m_flow->framesExtracted();
    else if (m_blendsAlternatingRows)
        launchBlend(task.extractionDirectory());
    else
        takeFrames(task.extractionDirectory());
}

void MLVProjectController::launchBlend(const QString &directory)
{
    m_framesToConvert = 0;
    m_cr2hdrTask->blend(directory, extractedFrames(directory));
    setMode(MLVProjectModeRGBConversion);
}

/// Frames that couldn't be blended aren't converted: a later run would take them for blended ones.
/// Whoever watches judges the run.
void MLVProjectController::blendFinished(CR2HDRTask &task)
{
    if (task.terminationStatus() != 0)
        setMode(MLVProjectModeRGBConversion);
    else if (m_flow)
        m_flow->framesBlended();
    else
        takeFrames(extractionDirectory());
}

void MLVProjectController::dngExtractionAborted(MlvDumpTask &)
{
    setMode(MLVProjectModeIdle);
}

void MLVProjectController::error(const QString &error, MlvDumpTask &)
{
    if (m_delegate)
        m_delegate->controllerWorkError(error);
}

void MLVProjectController::takeFrames(const QString &directory)
{
    if (movieKind() == MovieKind::Folder)
        finishFrameFolder(directory);
    else
        launchRGBExtraction(directory);
}

/// Frames that stay raw are neither developed nor encoded: with the last one the movie is written.
void MLVProjectController::finishFrameFolder(const QString &directory)
{
    m_framesToConvert = static_cast<int>(extractedFrames(directory).size());
    m_convertedBefore = 0;
    m_dngToProcess = 0;
    setMode(MLVProjectModeRGBConversion);
    if (!std::exchange(m_writesFrameFolder, false))
        return; // whoever was told has stopped the work
    setMode(MLVProjectModeFinished);
    if (m_delegate)
        m_delegate->controllerWorkFinished(*this);
}

void MLVProjectController::launchRGBExtraction(const QString &directory)
{
    m_mode = MLVProjectModeRGBConversion;
    endOldConversions();
    m_dngToProcess = 0;
    m_convertedBefore = 0;
    for (const QString &name : extractedFrames(directory)) {
        const QString path = QDir(directory).filePath(name);
        if (wasConverted(path))
            ++m_convertedBefore;
        m_dcRawProcesses.front()->addFilePath(path);
        ++m_dngToProcess;
    }
    m_framesToConvert = m_dngToProcess;
    m_dcRawPorcessManager->execute();
    setMode(MLVProjectModeRGBConversion);
}

/// A single unit finishes the frame of a stopped run before it takes the first of the next. With
/// several, others would have to wait for that frame.
void MLVProjectController::endOldConversions()
{
    if (conversionWorkers() == 1)
        return;
    m_dcRawPorcessManager->stop();
    for (const auto &unit : m_dcRawProcesses)
        unit->interrupt();
}

void MLVProjectController::imageRGBReceived(const QImage &image)
{
    const bool flowing = m_flow != nullptr;
    if (flowing && m_mode == MLVProjectModeExtracting)
        setMode(MLVProjectModeRGBConversion);
    if (m_delegate)
        m_delegate->imageRGBReceived(image, *this);
    if (flowing && !m_flow)
        return; // whoever was told has stopped the work
    if (--m_dngToProcess > 0)
        return;
    if (flowing)
        setMode(MLVProjectModeBuildingMovie);
    else if (m_dngToProcess == 0)
        m_afterLastFrame.start();
}

void MLVProjectController::launchHDRExtraction()
{
    // A ".TIFF" is a frame here, though a ".DNG" isn't one above: kept so on purpose.
    static const QRegularExpression tiffName(QStringLiteral("\\.tiff$"),
                                             QRegularExpression::CaseInsensitiveOption);
    const QDir folder(extractionDirectory());
    const QStringList frames = folderEntries(folder.path()).filter(tiffName);
    QDir().mkdir(tiffsDirectory(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    m_hdrMerge.setExtractionPath(tiffsDirectory());
    for (qsizetype second = 1; second < frames.size(); ++second) {
        m_pairsToMerge.emplace_back(folder.filePath(frames.at(second - 1)),
                                    folder.filePath(frames.at(second)));
    }
    mergeNextPair();
}

/// One pair an event, so that the application answers between two merges.
void MLVProjectController::mergeNextPair()
{
    if (m_pairsToMerge.empty()) {
        m_hdrMerge.setSecondImagePath(QString()); // lets go of the last frame
        launchMovieExtraction();
        return;
    }
    m_hdrMerge.setFirstImagePath(m_pairsToMerge.front().first);
    m_hdrMerge.setSecondImagePath(m_pairsToMerge.front().second);
    m_pairsToMerge.pop_front();
    m_hdrMerge.hdrMerge();
    m_nextMerge.start(0ms);
}

/// Of any worker: what hinders one dcraw mostly hinders all.
QByteArray MLVProjectController::lastConversionError() const
{
    for (const auto &unit : m_dcRawProcesses)
        if (QByteArray error = unit->lastError(); !error.isEmpty())
            return error;
    return {};
}

QMap<QString, QStringList> MLVProjectController::lastToolLines() const
{
    const std::pair<QString, QByteArray> outputs[] = {
        {mlvDumpName, m_mlvDumptask->lastOutput()},
        {cr2hdrName, m_cr2hdrTask->lastOutput()},
        {dcrawName, lastConversionError()},
        {ffmpegName, m_ffmpegTask->lastOutput()},
    };
    QMap<QString, QStringList> lines;
    for (const auto &[tool, output] : outputs)
        if (!output.isEmpty())
            lines.insert(tool, lastLines(output));
    return lines;
}

QString MLVProjectController::tiffsDirectory() const
{
    return m_dualISO ? extractionDirectory() + QStringLiteral("hdr/") : extractionDirectory();
}

std::optional<RecipeMovie> MLVProjectController::recipeMovie() const
{
    if (!m_recipe)
        return std::nullopt;
    return RecipeMovie{*m_recipe, factsOf(m_mlvPath, metadata(), m_frames.first),
                       static_cast<quint64>(framesOfMovie()), lutCopy()};
}

/// ffmpeg reads a copy: in the one form that all versions know, and under a name with the extension
/// that tells them what it is. Empty without a table.
QString MLVProjectController::lutCopy() const
{
    return m_lut.isEmpty() || !m_recipe ? QString()
                                        : extractionDirectory() + QStringLiteral("colours.cube");
}

/// Returns what hinders it.
QString MLVProjectController::copyLut() const
{
    const QString path = lutCopy();
    if (path.isEmpty())
        return {};
    const CubeLut lut = readCubeLut(m_lut);
    if (!lut.error.isEmpty())
        return lut.error;
    const QString error = writeFile(path, lut.text);
    return error.isEmpty() ? error : QStringLiteral("%1: %2").arg(path, error);
}

void MLVProjectController::launchMovieExtraction()
{
    setMode(MLVProjectModeBuildingMovie);
    m_ffmpegTask->setRawVideo(std::nullopt);
    m_ffmpegTask->setStandardInput(-1);
    launchMovie();
}

/// Beside extraction and conversion, whose modes go on.
void MLVProjectController::launchFlowingMovie(const RawVideo &video)
{
    m_ffmpegTask->setRawVideo(video);
    m_ffmpegTask->setStandardInput(m_flow->readEnd());
    launchMovie();
}

void MLVProjectController::launchMovie()
{
    m_ffmpegTask->setTiffsDirectory(tiffsDirectory());
    m_ffmpegTask->setDelegate(this);
    m_ffmpegTask->setMlvPath(m_mlvPath);
    m_ffmpegTask->setFps(fps());
    m_ffmpegTask->setFormat(m_movieFormat);
    m_ffmpegTask->setQuality(m_movieQuality);
    m_ffmpegTask->setMoviePath(m_moviePath);
    m_ffmpegTask->setRecipeMovie(recipeMovie());
    m_movieMark = std::make_shared<MovieMark>(moviePath());
    m_movieError = copyLut();
    if (m_movieError.isEmpty())
        m_movieError = m_movieMark->set();
    if (!m_movieError.isEmpty())
        return;
    m_ffmpegTask->buildMovie();
    if (!m_ffmpegTask->isRunning())
        m_movieMark->remove();
}

void MLVProjectController::movieExtractionFinished(FFmpegTask &)
{
    if (m_flow) { // not all may have been needed
        m_mlvDumptask->stop(false);
        m_cr2hdrTask->abort();
        endFlow();
    }
    if (!m_keepsTmpFiles)
        cleanTmpFiles();
    setMode(MLVProjectModeFinished);
    if (m_delegate)
        m_delegate->controllerWorkFinished(*this);
}

void MLVProjectController::movieExtractionAborted(FFmpegTask &)
{
    if (m_movieMark)
        m_movieMark->remove();
    setMode(MLVProjectModeIdle);
}

} // namespace filmwright

#include "moc_mlvprojectcontroller.cpp"
