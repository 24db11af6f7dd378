// SPDX-License-Identifier: MIT
#include "mlvdump/mlvdumptask.h"

#include "mlvdump/mlvdumparguments.h"
#include "mlvdump/reportqueue.h"
#include "runner/files.h"
#include "runner/resources.h"
#include "runner/temporarydirectory.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <chrono>

using namespace std::chrono_literals;

namespace filmwright {

namespace {

/// The file that an averaging run writes; null for every other run.
QString averageName(MlvDumpMode mode)
{
    switch (mode) {
    case MlvDumpModeDark:
        return averagedDarkName;
    case MlvDumpModeFlat:
        return averagedFlatName;
    case MlvDumpModeFlatDark:
        return averagedFlatDarkName;
    default:
        return {};
    }
}

} // namespace

std::unique_ptr<MlvDumpTask> MlvDumpTask::mlvDumpTask()
{
    auto task = std::make_unique<MlvDumpTask>();
    task->setLaunchPath(resourcePath(mlvDumpName));
    task->setTaskWrapperdelegate(task.get());
    return task;
}

MlvDumpTask::MlvDumpTask()
{
    m_pendingReport.setSingleShot(true);
    connect(&m_pendingReport, &QTimer::timeout, this, [this] { tell(m_laterReport); });
}

MlvDumpTask::~MlvDumpTask()
{
    ReportQueue::instance().leave(this);
    setTaskWrapperdelegate(nullptr);
}

QString MlvDumpTask::mlvPath() const
{
    for (const QString &path : {m_mlvPath, m_darkPath, m_flatPath})
        if (!path.isNull())
            return path;
    return m_flatDarkPath;
}

QString MlvDumpTask::extractionDirectory() const
{
    return m_clipFolder.isEmpty() ? workingFolder() : m_clipFolder;
}

QString MlvDumpTask::workingFolder() const
{
    const QString name = QFileInfo(m_mlvPath).fileName();
    const QString base = temporaryDirectory();
    return (name.isEmpty() ? base : QDir(base).filePath(name)) + QLatin1Char('/');
}

void MlvDumpTask::beginRun(MlvDumpMode mode)
{
    ReportQueue::instance().leave(this);
    m_processMode = mode;
    m_surveys = false;
    m_closesGaps = false;
    m_log.clear();
    m_error = QString();
    m_unusableError.clear();
}

void MlvDumpTask::extractMeta()
{
    beginRun(MlvDumpModeMeta);
    m_metadata = MlvMetadata();
    m_warnings.clear();
    m_notes.clear();
    setArguments(metaArguments(mlvPath()));
    ReportQueue::instance().enter(this, [this] {
        start();
        if (!isRunning())
            ReportQueue::instance().leave(this);
    });
}

void MlvDumpTask::runEnded()
{
    ReportQueue::instance().leave(this);
}

bool MlvDumpTask::isReportPending() const
{
    return m_pendingReport.isActive() || ReportQueue::instance().isWaiting(this);
}

void MlvDumpTask::cancelPendingReport()
{
    m_pendingReport.stop();
    if (ReportQueue::instance().isWaiting(this))
        ReportQueue::instance().leave(this);
}

void MlvDumpTask::extractDNGAtIndex(qint64 index, bool andWaitUntilExit)
{
    beginRun(MlvDumpModeDNG);
    QStringList options = m_corrections.arguments();
    if (!m_clipFolder.isEmpty()) {
        options << QStringLiteral("--cinema-dng");
    } else if (framesExist(index)) {
        m_processMode = MlvDumpModeNone;
        tellLater(&MlvDumpTaskProtocol::dngExtractionFinished);
        return;
    } else {
        removeFolder(workingFolder());
        createPrivateFolder(workingFolder());
        m_closesGaps = true;
    }
    setArguments(frameArguments(m_mlvPath, index, m_darkPath, m_flatPath, extractionDirectory(),
                                options, m_selection));
    startAndWaitUntilExit(andWaitUntilExit);
}

void MlvDumpTask::surveyFrames(const QString &survey, const QString &rowFrames)
{
    removeFolder(workingFolder());
    createPrivateFolder(workingFolder());
    m_surveyedFrames = 0;
    QStringList options{QStringLiteral("--write-survey"), survey};
    if (!rowFrames.isEmpty())
        options << QStringLiteral("--survey-frames") << rowFrames;
    runSurveyed(options, m_selection);
    m_surveys = true;
}

void MlvDumpTask::extractSurveyed(const QString &survey, const FrameSelection &range)
{
    runSurveyed({QStringLiteral("--use-survey"), survey}, range);
}

void MlvDumpTask::runSurveyed(const QStringList &options, const FrameSelection &range)
{
    beginRun(MlvDumpModeDNG);
    setArguments(frameArguments(m_mlvPath, 0, m_darkPath, m_flatPath, extractionDirectory(),
                                m_corrections.arguments() + options, range));
    start();
}

bool MlvDumpTask::framesExist(qint64 index) const
{
    const QString directory = workingFolder();
    const bool knowsFrames = index == 0 && m_metadata.videoFrames != 0;
    return QFileInfo::exists(directory) && (!knowsFrames || allFramesExist(directory));
}

/// Of a whole recording those that were recorded; filled gaps come on top.
quint64 MlvDumpTask::framesToExtract() const
{
    return m_selection.isWhole() ? m_metadata.videoFrames
                                 : m_selection.countOf(m_metadata.movieFrames());
}

bool MlvDumpTask::allFramesExist(const QString &directory) const
{
    for (quint64 number = 0; number < framesToExtract(); ++number)
        if (!QFileInfo::exists(directory + frameName(number)))
            return false;
    return true;
}

void MlvDumpTask::prepareDark()
{
    average(MlvDumpModeDark, m_darkPath);
}

void MlvDumpTask::prepareFlatDark()
{
    average(MlvDumpModeFlatDark, m_flatDarkPath);
}

void MlvDumpTask::prepareFlat()
{
    average(MlvDumpModeFlat, m_flatPath);
}

void MlvDumpTask::average(MlvDumpMode mode, const QString &recording)
{
    beginRun(mode);
    const QString directory = extractionDirectory();
    createPrivateFolder(directory);
    setArguments(averageArguments(recording, directory + averageName(mode)));
    start();
}

void MlvDumpTask::substractFlatDark()
{
    // The dark is asked for, not the dark of the flat: the calibration sets the flat in any case.
    if (m_darkPath.isEmpty() && m_flatPath.isEmpty())
        return;
    beginRun(MlvDumpModeFlatDarkSubstraction);
    const QString directory = extractionDirectory();
    createPrivateFolder(directory);
    setArguments(flatDarkSubstractionArguments(directory));
    start();
}

void MlvDumpTask::receivedLine(const QString &line, TaskWrapper &)
{
    m_log << line;
    takeSentence(line);
    takeUnusableError(line);
    if (line.contains(QLatin1String("[ERROR]")))
        handleErrorLine(line);
    if (line.contains(QLatin1String("Done")))
        handleEndOfWork();
}

/// The report and the extraction often warn of the same.
void MlvDumpTask::takeSentence(const QString &line)
{
    const QString sentence = line.section(QLatin1Char(' '), 1);
    if (line.startsWith(QLatin1String("[WARNING]")) && !m_warnings.contains(sentence))
        m_warnings << sentence;
    if (line.startsWith(QLatin1String("[NOTE]")) && !m_notes.contains(sentence))
        m_notes << sentence;
}

void MlvDumpTask::takeUnusableError(const QString &line)
{
    const QLatin1String mark("[UNUSABLE]");
    if (const qsizetype at = line.indexOf(mark); at >= 0)
        m_unusableError = line.sliced(at + mark.size()).trimmed();
}

void MlvDumpTask::handleErrorLine(const QString &line)
{
    m_error = line;
    const QString output = averageName(m_processMode);
    if (!output.isNull())
        QFile::remove(extractionDirectory() + output);
    if (m_delegate)
        m_delegate->error(line, *this);
}

void MlvDumpTask::handleEndOfWork()
{
    switch (m_processMode) {
    case MlvDumpModeMeta:
        // The report of a recording that can't be used may end anywhere.
        if (m_unusableError.isEmpty())
            readReport(m_log, m_metadata);
        m_processMode = MlvDumpModeNone;
        tell(&MlvDumpTaskProtocol::metaExtractionFinished);
        break;
    case MlvDumpModeDNG:
        stop(false);
        m_processMode = MlvDumpModeNone;
        if (m_surveys)
            m_surveyedFrames = processedFrames();
        else if (m_closesGaps)
            checkForSkippedFrame();
        tell(&MlvDumpTaskProtocol::dngExtractionFinished);
        break;
    case MlvDumpModeDark:
        finishCalibration(&MlvDumpTaskProtocol::processingDarkFinished);
        break;
    case MlvDumpModeFlatDark:
        finishCalibration(&MlvDumpTaskProtocol::processingFlatDarkFinished);
        break;
    case MlvDumpModeFlat:
        finishCalibration(&MlvDumpTaskProtocol::processingFlatFinished);
        break;
    case MlvDumpModeFlatDarkSubstraction:
        finishCalibration(&MlvDumpTaskProtocol::processingFlatDarkSubstractionFinished);
        break;
    case MlvDumpModeNone:
        break;
    }
    m_log.clear();
}

/// The line before the last tells how many frames there were: "Processed 8 video frames …".
quint64 MlvDumpTask::processedFrames() const
{
    const QString processed = entryAt(m_log, m_log.size() - 2);
    const QString count = entryAt(processed.split(QLatin1Char(' ')), 1);
    return static_cast<quint64>(leadingInteger(count));
}

void MlvDumpTask::finishCalibration(void (MlvDumpTaskProtocol::*report)(MlvDumpTask &))
{
    m_metadata.videoFrames = processedFrames();
    tell(report);
}

/// Closes gaps in the numbering of the frame files. The number counts all entries of the folder,
/// not the frames alone: a folder with other files in it keeps being treated as it always was.
void MlvDumpTask::checkForSkippedFrame()
{
    const QString directory = extractionDirectory();
    const QStringList entries = folderEntries(directory);
    const auto isFrame = [](const QString &name) {
        return QFileInfo(name).suffix().compare(QLatin1String("dng"), Qt::CaseInsensitive) == 0;
    };
    const auto frames = std::count_if(entries.cbegin(), entries.cend(), isFrame);
    for (qsizetype number = 0; number < frames; ++number) {
        const QString expected = frameName(static_cast<quint64>(number));
        if (entries.at(number) != expected)
            QFile::rename(directory + entries.at(number), directory + expected);
    }
}

void MlvDumpTask::aborted()
{
    ReportQueue::instance().leave(this); // it may still wait for its turn
    m_log.clear();
    m_error = QString();
    tellLater(&MlvDumpTaskProtocol::dngExtractionAborted);
}

void MlvDumpTask::tell(void (MlvDumpTaskProtocol::*report)(MlvDumpTask &))
{
    if (m_delegate)
        (m_delegate->*report)(*this);
}

/// After the current event, so that no report arrives inside the caller's own call.
void MlvDumpTask::tellLater(void (MlvDumpTaskProtocol::*report)(MlvDumpTask &))
{
    m_laterReport = report;
    m_pendingReport.start(0ms);
}

} // namespace filmwright

#include "moc_mlvdumptask.cpp"
