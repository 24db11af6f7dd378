// SPDX-License-Identifier: MIT
#pragma once

#include "app/alertqueue.h"
#include "app/customtextfield.h"
#include "app/openpanel.h"
#include "app/queuetabledatasource.h"
#include "app/recentdocuments.h"
#include "app/verificationqueue.h"
#include "app/windowmemory.h"
#include "desktop/suspendinhibitor.h"
#include "mlvdump/mlvdumptask.h"
#include "project/batchprogress.h"
#include "project/moviespace.h"
#include "project/recordingfiles.h"
#include "project/recordingrun.h"
#include "runner/directorylock.h"

#include <QDialog>
#include <QList>
#include <QMainWindow>
#include <QTimer>
#include <QUrl>

#include <map>
#include <memory>
#include <vector>

class QLabel;
class QMenu;
class SLPipeline;

namespace Ui {
class CalibrationHelp;
class MainWindow;
class Preferences;
class Preprocessing;
} // namespace Ui

namespace filmwright {

class DetailsWindow;
class DevelopmentDialog;
class RowPictures;

/// The window and everything that a person does with it: the queue, the batch that runs through it,
/// the calibration recordings, the preferences. Each of these is a source file of its own.
///
/// Main thread only. Alerts and choosers run event loops of their own while they are open.
class AppDelegate : public QObject,
                    public MLVProjectControllerProtocol,
                    public MlvDumpTaskProtocol,
                    public CustomTextFieldProtocol,
                    public QueueTableDataSource
{
    Q_OBJECT

public:
    /// The alerts and choosers outlive it. Nothing is shown or touched before
    /// applicationDidFinishLaunching() or application().
    AppDelegate(AlertPresenter &alerts, OpenPanel &panel);
    /// Ends whatever runs and removes nothing; that is applicationWillTerminate()'s work.
    ~AppDelegate() override;

    QMainWindow *window() const { return m_window.get(); }
    const std::vector<std::unique_ptr<MLVProjectController>> &projectList() const
    {
        return *m_projectList;
    }
    bool isWorking() const { return m_working; }

    // Start-up and preferences (startup.cpp)

    void applicationDidFinishLaunching();
    /// The one-time set-up; later calls do nothing.
    void appInitialization();
    /// Whether the temporary directory stays at start-up and at quit.
    bool keepTempDirectory() const;
    /// The developer menu's item was chosen.
    void keepTempDirectory(QAction &sender);
    void prefTempFolderPopUpButtonChanged(int index);
    void prefTempFolderButtonClicked();
    /// Whether the window may close: not during a batch.
    bool windowShouldClose() const;
    void windowWillClose();
    /// Ends the application, after asking when a batch runs.
    void quit();
    /// Call once the event loop has ended or is about to.
    void applicationWillTerminate();

    // The batch (batch.cpp)

    /// Starts the batch, or stops it when it runs.
    void start();
    void launchWorkForNextController();
    void enableButtons(bool enable);
    /// Whether the averages that the chosen calibration recordings need are there.
    bool checkCalibrationIntegrity() const;
    void avoidSleep();
    void allowSleep();
    void controllerUpdated(MLVProjectController &controller) override;
    void imageRGBReceived(const QImage &image, MLVProjectController &forController) override;
    void controllerWorkFinished(MLVProjectController &controller) override;
    void controllerWorkError(const QString &error) override;

    // Adding files (addingfiles.cpp)

    void addMLVFile(const QString &path);
    void scanDirectoryForMLVFiles(const QString &folder);
    void openFile();
    /// Files handed over by the desktop or the command line; also before the launch has finished.
    void application(const QStringList &openFiles);
    void applicationOpenFiles(const QStringList &paths);
    /// What a drag over the window may do.
    enum DragOperation : unsigned { DragOperationNone = 0, DragOperationCopy = 1 };
    DragOperation validateDrop(const QList<QUrl> &urls) const;
    /// False when the drop is refused.
    bool acceptDrop(const QList<QUrl> &urls);

    // Removing recordings (removing.cpp); not during a batch

    void removeSelectedProjects();
    /// Those whose movies are written.
    void removeFinishedProjects();
    /// Puts those that were removed last back at their places.
    void undoRemoval();

    // Calibration recordings (calibration.cpp)

    void openDark();
    void openFlatField();
    void openFlatDarkField();
    void processingDarkFinished(MlvDumpTask &task) override;
    void processingFlatFinished(MlvDumpTask &task) override;
    void processingFlatDarkFinished(MlvDumpTask &task) override;
    void processingFlatDarkSubstractionFinished(MlvDumpTask &task) override;
    void askUserForDarkVOverwrite(const MlvDumpTask &task);
    void askUserForFlatOverwrite(const MlvDumpTask &task);
    void askUserForFlatDarkVOverwrite(const MlvDumpTask &task);
    void fieldDeleted(CustomTextField &field) override;
    void showPreprocessingPanel(const QString &text);
    void hidePreprocessingPanel();
    void showCalibrationHelp();
    void hideCalibrationHelp();
    void error(const QString &error, MlvDumpTask &forTask) override;
    /// A calibration recording was read (calibrationfit.cpp).
    void metaExtractionFinished(MlvDumpTask &task) override;
    // A calibration run has none of these ends.
    void dngExtractionFinished(MlvDumpTask &) override {}
    void dngExtractionAborted(MlvDumpTask &) override {}

    // The queue table (queuetable.cpp)

    int numberOfRowsInTableView(QueueTableView &tableView) const override;
    QString objectValueForTableColumn(const QString &column, int row) const override;
    QWidget *viewForTableColumn(QueueTableView &tableView, const QString &column, int row) override;
    QIcon pictureForRow(int row) const override;
    QString toolTipForTableColumn(const QString &column, int row) const override;
    /// For a table that draws its cells itself; takes the rows in the order of the list.
    void willDisplayCell(QLabel &cell, const QString &forTableColumn, int row) const;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    using ProjectList = std::vector<std::unique_ptr<MLVProjectController>>;
    struct RemovedRecording
    {
        std::size_t place; // in the list before the removal
        std::unique_ptr<MLVProjectController> project;
        std::unique_ptr<RecordingRun> run;
    };
    struct CalibrationKind;

    void connectWindow();
    void restoreWorkers();
    void restorePictures();
    void restoreTemporaryFolder();
    void tellUnusableTemporaryFolder();
    void tellTemporaryDirectory();
    void showStoredFolder();
    bool lockTemporaryDirectory(DirectoryLock &lock);
    void removeWork(const QString &directory);
    void showDeveloperMenu();
    void fillRecentMenu();
    void showAbout();

    void chooseMovieFolder(int index);
    void showMovieFolder();
    bool checkMovieFolder();
    void fillRecipes();
    void describeFormats();
    bool takeRecipe();
    void enableFormats();
    std::optional<Recipe> chosenRecipe() const;
    std::vector<MovieRoom> upcomingMovies() const;
    QString describeStart();
    void tellChoice();

    bool checkTools(const QStringList &names);

    void startBatch();
    void stopBatch();
    void launch(MLVProjectController &controller);
    ConversionSettings settingsFor(const MLVProjectController &controller) const;
    void watchProgress(const MLVProjectController &controller);
    void endBatch();
    void endReadingWhenAllAreRead();
    void runEnded(const RecordingRun &run);
    void tellStopped();
    void tellResult();
    void showStatus();
    void showPart(std::optional<double> part);
    QString recordingWithError(const QString &error) const;

    void addFiles(const QStringList &paths, const QString &otherButton);
    void refuseWhileWorking();
    void tellAdded(std::size_t added, const QStringList &paths, bool cancelled);
    bool welcomes(const QList<QUrl> &urls);
    bool isQueued(const QString &path) const;
    void read(RecordingRun &run);
    void replaceQueue();
    void queueChanged();
    void discard(ProjectList &projects);

    std::vector<MLVProjectController *> finishedProjects() const;
    void remove(const std::vector<MLVProjectController *> &projects);
    void select(const std::vector<MLVProjectController *> &projects);
    void forgetRemoved();

    static const CalibrationKind darkKind;
    static const CalibrationKind flatKind;
    static const CalibrationKind flatDarkKind;
    void openCalibration(const CalibrationKind &kind);
    void takeCalibration(const CalibrationKind &kind, const QString &path);
    void takeCalibrationDrops();
    void averagingFinished(MlvDumpTask &task, const CalibrationKind &kind);
    void substractWhenComplete();
    void launchAfterCalibration();
    CalibrationChoice calibration() const { return {m_darkPath, m_flatPath, m_flatDarkPath}; }
    void askUserForOverwrite(const MlvDumpTask &task, const CalibrationKind &kind);
    void checkPreprocessTask();
    void cancelPreprocessing();
    std::shared_ptr<MlvDumpTask> makeCalibrationTask();

    void readCalibration(const QString &recording);
    QString calibrationShape(const QString &recording) const;
    void tellUnfitFor(const QString &calibrationRecording);
    QStringList misfits(const MLVProjectController &project) const;
    void tellMisfits();

    MLVProjectController &projectAtRow(int row) const;
    int rowOf(std::size_t place) const;
    const RecordingRun &runOf(const MLVProjectController &project) const;
    QString stateText(const MLVProjectController &project) const;
    std::vector<MLVProjectController *> selectedProjects() const;
    void updateRecordingMenu();
    void chooseDevelopment();
    void takeDevelopment();
    void showRowMenu(const QPoint &place);
    QString movieOf(const MLVProjectController &project) const;
    void playMovie();
    void play(const QString &movie);
    void showDetails();
    void updateDetails();
    QStringList logOf(const MLVProjectController &project) const;
    void showSelected();
    void showPictures();
    void connectPictures();
    void verifySelected();
    void verificationChanged();

    void connectPreview();
    void updatePreview();
    const MLVProjectController *previewedProject() const;
    ConversionSettings previewSettings(const MLVProjectController &project) const;
    void takeMarks(const FrameSelection &selection);

    AlertQueue m_alerts;
    OpenPanel &m_panel;
    std::unique_ptr<QMainWindow> m_window;
    std::unique_ptr<Ui::MainWindow> m_ui;
    std::unique_ptr<QDialog> m_prefWindow;
    std::unique_ptr<Ui::Preferences> m_prefUi;
    std::unique_ptr<QDialog> m_calibrationHelpPanel;
    std::unique_ptr<Ui::CalibrationHelp> m_calibrationHelpUi;
    std::unique_ptr<QDialog> m_preprocessPanel;
    std::unique_ptr<Ui::Preprocessing> m_preprocessUi;
    std::unique_ptr<DevelopmentDialog> m_developmentDialog;

    WindowMemory m_memory;

    std::unique_ptr<ProjectList> m_projectList; // null before appInitialization()
    std::unique_ptr<SLPipeline> m_projectControllerPipeline;
    bool m_working = false;
    bool m_readingData = false;
    quint32 m_assertionID = 0;
    QString m_darkPath;
    QString m_flatPath;
    QString m_flatDarkPath;
    double m_globalProgress = -1.0;
    std::shared_ptr<MlvDumpTask> m_preprocessTask;

    const CalibrationKind *m_lastCalibration = nullptr; // the one that was chosen last
    std::map<QString, std::shared_ptr<MlvDumpTask>> m_calibrationReports; // by recording
    std::map<const MLVProjectController *, std::unique_ptr<RecordingRun>> m_runs;
    std::vector<RemovedRecording> m_removed;   // last, for an undo
    std::vector<const RecordingRun *> m_batch; // those launched, the running one last
    BatchMovies m_batchMovies;
    std::optional<Recipe> m_recipe; // of the batch
    QString m_movieFolder;          // empty: beside the recordings
    int m_batchNumber = 0;
    qsizetype m_duplicates = 0;         // of the last adding
    FolderListing m_listing;            // of the folders that are being added from
    bool m_stopped = false;             // the last batch was
    bool m_waitsForCalibration = false; // the next recording of the batch
    DirectoryLock m_directoryLock;
    RecentDocuments m_recentDocuments;
    std::unique_ptr<QMenu> m_rowMenu;
    std::unique_ptr<DetailsWindow> m_details;
    VerificationQueue m_verifications;
    std::unique_ptr<RowPictures> m_pictures;
    BatchProgress m_progress;
    SuspendInhibitor m_suspendInhibitor;
    QTimer m_statusTimer;
};

} // namespace filmwright
