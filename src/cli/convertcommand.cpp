// SPDX-License-Identifier: MIT
#include "cli/convertcommand.h"

#include "cli/calibration.h"
#include "cli/conversionqueue.h"
#include "cli/conversionreport.h"
#include "cli/convertoptions.h"
#include "cli/exitstatus.h"
#include "cli/interruption.h"
#include "cli/missingtools.h"
#include "cli/progressdisplay.h"
#include "cli/progressjson.h"
#include "cli/recordingsearch.h"
#include "cli/workspace.h"
#include "project/mlvprojectcontroller.h"
#include "runner/temporarydirectory.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <csignal>
#include <cstdio>

namespace filmwright {

namespace {

/// The system log is standard error, too.
void logAsJson(QtMsgType, const QMessageLogContext &, const QString &message)
{
    const QByteArray line = messageJson(message);
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stderr);
}

/// Wires calibration, queue and interruption together for one run in an open workspace.
class ConvertRun : public QObject
{
public:
    ConvertRun(const ConvertOptions &options, const QStringList &recordings,
               const QList<Unreachable> &unreachable, const Workspace &workspace,
               Interruption &interruption)
        : m_options(options)
        , m_display(options.quiet, options.progress)
        , m_calibration(options.settings.calibration)
        , m_queue(recordings, unreachable, m_display)
        , m_settings(options.settings)
    {
        m_settings.keepsFinishedWork = options.keepTemporary;
        m_settings.keepsUnfinishedWork = workspace.keepsUnfinishedWork();
        connect(&m_calibration, &Calibration::averaging, this, [this](const QString &recording) {
            m_display.beginStage(recording, QStringLiteral("averaging"), 0);
        });
        connect(&m_calibration, &Calibration::ended, this, &ConvertRun::calibrated);
        connect(&m_queue, &ConversionQueue::movieFinished, this,
                [](const QString &movie) { printLine(movie); });
        connect(&m_queue, &ConversionQueue::finished, this,
                [this] { leave(m_queue.hasFailures() ? ExitFailed : ExitSuccess); });
        connect(&interruption, &Interruption::happened, this, &ConvertRun::interrupt);
    }

    int run()
    {
        if (m_settings.calibration.flat.isEmpty() && !m_settings.calibration.flatDark.isEmpty())
            m_display.warn(QStringLiteral("without a flat, the dark of the flat is not used"));
        if (isForScripts())
            qInstallMessageHandler(logAsJson);
        m_calibration.start();
        const int status = QCoreApplication::exec();
        if (m_options.keepTemporary)
            tell(QStringLiteral("temporary files are kept in %1").arg(temporaryDirectory()));
        return status;
    }

private:
    void calibrated(const QString &error)
    {
        if (!error.isEmpty()) {
            const QString sentence = QStringLiteral("calibration failed: %1").arg(error);
            m_display.warn(sentence);
            m_queue.giveUp(sentence);
            leave(ExitFailed);
            return;
        }
        m_queue.start(m_settings);
    }

    void interrupt()
    {
        if (m_ended)
            return;
        m_calibration.stop();
        m_queue.stop();
        m_display.warn(QStringLiteral("interrupted"));
        leave(ExitInterrupted);
    }

    /// Leaves the event loop once everything that is to be deleted later is deleted.
    void leave(ExitStatus status)
    {
        m_ended = true;
        status = report(status);
        QMetaObject::invokeMethod(
            this, [status] { QCoreApplication::exit(status); }, Qt::QueuedConnection);
    }

    /// Returns the run's status, which a report that can't be written spoils.
    ExitStatus report(ExitStatus status)
    {
        if (!isForScripts()) {
            m_display.tell(QString());
            for (const QString &line : outcomeTable(m_queue.outcomes()))
                m_display.tell(line);
        }
        if (m_options.report.isEmpty())
            return status;
        const QString error =
            writeReport(m_options.report, outcomeReport(m_queue.outcomes(), status, m_settings));
        if (error.isEmpty())
            return status;
        tell(error);
        return status == ExitSuccess ? ExitFailed : status;
    }

    bool isForScripts() const { return m_options.progress == ProgressStyle::Json; }

    void tell(const QString &sentence)
    {
        if (isForScripts())
            m_display.warn(sentence);
        else
            printError(sentence);
    }

    const ConvertOptions m_options;
    ProgressDisplay m_display;
    Calibration m_calibration;
    ConversionQueue m_queue;
    ConversionSettings m_settings;
    bool m_ended = false;
};

/// Before the work, not after hours of it.
bool checkRecipe(const std::optional<Recipe> &recipe)
{
    if (!recipe || recipe->keepsRawFrames())
        return true;
    const QString error = FFmpegTask::ffmpegTask()->recipeError(*recipe);
    if (!error.isEmpty())
        printError(QStringLiteral("the recipe %1 can't be used: %2").arg(recipe->id, error));
    return error.isEmpty();
}

/// Made before the work; one that can't be written stops every recording.
bool prepareOutput(const QString &folder)
{
    if (folder.isEmpty() || (QDir().mkpath(folder) && QFileInfo(folder).isWritable()))
        return true;
    printError(QStringLiteral("the folder %1 can't be written").arg(folder));
    return false;
}

} // namespace

int runConvert(const QStringList &arguments)
{
    ConvertOptions options;
    if (const auto ending = readConvertOptions(arguments, options))
        return *ending;
    const ConversionSettings &settings = options.settings;
    if (!checkTools(
            MLVProjectController::toolNames(settings.blendsAlternatingRows, settings.recipe)) ||
        !checkRecipe(settings.recipe))
        return ExitUnusable;
    QList<Unreachable> unreachable;
    // The averages and frames of an earlier run are no recordings.
    const QStringList recordings =
        findRecordings(options.paths, &unreachable, temporaryDirectoryIn(options.temporaryBase));
    if (recordings.isEmpty() && unreachable.isEmpty()) {
        printError(QStringLiteral("no recordings found"));
        return ExitUnusable;
    }
    const QString reportError =
        options.report.isEmpty() ? QString() : reportFileError(options.report);
    if (!reportError.isEmpty()) {
        printError(reportError);
        return ExitUnusable;
    }
    // Whoever read the finished movies' paths may be gone; the night's work goes on.
    std::signal(SIGPIPE, SIG_IGN);
    if (!prepareOutput(options.settings.destination.folder))
        return ExitUnusable;
    Interruption interruption;
    Workspace workspace;
    const QString error = workspace.open(options.temporaryBase, options.keepTemporary);
    if (!error.isEmpty()) {
        printError(error);
        return ExitUnusable;
    }
    return ConvertRun(options, recordings, unreachable, workspace, interruption).run();
}

} // namespace filmwright
