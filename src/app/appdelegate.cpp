// SPDX-License-Identifier: MIT
// The window's widgets and what each of its controls does.
#include "app/appdelegate.h"
#include "app/detailswindow.h"
#include "app/developmentdialog.h"
#include "app/filedrop.h"
#include "app/queuetableview.h"
#include "app/readablepalette.h"
#include "app/rowpictures.h"
#include "app/statusline.h"
#include "encoding/ffmpegarguments.h"
#include "mlvdump/mlvdumptask.h"
#include "runner/notificationcenter.h"
#include "runner/resources.h"
#include "runner/systemlog.h"
#include "runner/userdefaults.h"
#include "sluice/slpipeline.h"
#include "ui_calibrationhelp.h"
#include "ui_mainwindow.h"
#include "ui_preferences.h"
#include "ui_preprocessing.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QFileInfo>
#include <QHeaderView>

#include <chrono>

using namespace std::chrono_literals;

/// The images are in a static library, whose resources nobody registers by themselves.
static void registerImages()
{
    Q_INIT_RESOURCE(images);
}

namespace filmwright {

namespace {

constexpr auto statusInterval = 500ms;

} // namespace

AppDelegate::AppDelegate(AlertPresenter &alerts, OpenPanel &panel)
    : m_alerts(alerts)
    , m_panel(panel)
    , m_window(std::make_unique<QMainWindow>())
    , m_ui(std::make_unique<Ui::MainWindow>())
    , m_prefWindow(std::make_unique<QDialog>(m_window.get()))
    , m_prefUi(std::make_unique<Ui::Preferences>())
    , m_calibrationHelpPanel(std::make_unique<QDialog>(m_window.get()))
    , m_calibrationHelpUi(std::make_unique<Ui::CalibrationHelp>())
    , m_preprocessPanel(std::make_unique<QDialog>(m_window.get()))
    , m_preprocessUi(std::make_unique<Ui::Preprocessing>())
    , m_developmentDialog(std::make_unique<DevelopmentDialog>(m_window.get()))
    , m_memory(*m_window, *m_ui)
    , m_rowMenu(std::make_unique<QMenu>(m_window.get()))
    , m_details(std::make_unique<DetailsWindow>(m_window.get()))
{
    registerImages();
    keepTextReadable();
    m_ui->setupUi(m_window.get());
    m_prefUi->setupUi(m_prefWindow.get());
    m_calibrationHelpUi->setupUi(m_calibrationHelpPanel.get());
    m_preprocessUi->setupUi(m_preprocessPanel.get());
    m_ui->devMenu->menuAction()->setObjectName(QStringLiteral("devMenuItem"));
    m_rowMenu->setObjectName(QStringLiteral("rowMenu"));
    for (const QString &extension : movieExtensions())
        m_ui->movieFormatPopUpButton->addItem(extension.toUpper());
    fillRecipes();
    m_statusTimer.setInterval(statusInterval);
    connectWindow();
    m_memory.restore();
    m_movieFolder = WindowMemory::movieFolder();
    showMovieFolder();
    describeFormats();
    m_recentDocuments.restore();
    fillRecentMenu();
    updateRecordingMenu();
}

AppDelegate::~AppDelegate()
{
    allowSleep();
    if (m_preprocessTask) {
        m_preprocessTask->setDelegate(nullptr);
        m_preprocessTask->stop(false);
    }
    m_ui->queueTableView->setDataSource(nullptr);
    for (const auto &[project, run] : m_runs)
        run->detach();
    forgetRemoved();
}

void AppDelegate::connectWindow()
{
    const auto command = [this](QAction *action, void (AppDelegate::*operation)()) {
        connect(action, &QAction::triggered, this, [this, operation] { (this->*operation)(); });
    };
    command(m_ui->sourceItem, &AppDelegate::openFile);
    command(m_ui->startStopItem, &AppDelegate::start);
    command(m_ui->quitMenuItem, &AppDelegate::quit);
    command(m_ui->playMovieMenuItem, &AppDelegate::playMovie);
    command(m_ui->showMenuItem, &AppDelegate::showSelected);
    command(m_ui->detailsMenuItem, &AppDelegate::showDetails);
    command(m_ui->verifyMenuItem, &AppDelegate::verifySelected);
    connect(m_ui->stopVerifyingMenuItem, &QAction::triggered, &m_verifications,
            &VerificationQueue::stop);
    connect(&m_verifications, &VerificationQueue::changed, this, &AppDelegate::verificationChanged);
    command(m_ui->developmentMenuItem, &AppDelegate::chooseDevelopment);
    connect(m_developmentDialog.get(), &QDialog::accepted, this, &AppDelegate::takeDevelopment);
    command(m_ui->removeMenuItem, &AppDelegate::removeSelectedProjects);
    command(m_ui->removeFinishedMenuItem, &AppDelegate::removeFinishedProjects);
    command(m_ui->undoRemovalMenuItem, &AppDelegate::undoRemoval);
    // Delete is the table's alone: elsewhere it is pressed for something else.
    m_ui->queueTableView->addAction(m_ui->removeMenuItem);
    m_ui->removeMenuItem->setShortcutContext(Qt::WidgetShortcut);
    command(m_ui->calibrationHelpMenuItem, &AppDelegate::showCalibrationHelp);
    command(m_ui->aboutMenuItem, &AppDelegate::showAbout);
    connect(m_ui->preferencesMenuItem, &QAction::triggered, m_prefWindow.get(), &QDialog::show);
    connect(m_ui->keepTempDirectoryMenuItem, &QAction::triggered, this, [this](bool checked) {
        // Qt has changed the item's state already; the operation does that itself.
        m_ui->keepTempDirectoryMenuItem->setChecked(!checked);
        keepTempDirectory(*m_ui->keepTempDirectoryMenuItem);
    });
    connect(m_ui->mergeNeighboursMenuItem, &QAction::triggered, this, [this](bool checked) {
        for (MLVProjectController *project : selectedProjects())
            project->setDualISO(checked);
        m_ui->queueTableView->reloadData();
        updatePreview();
    });
    connect(m_ui->blendRowsMenuItem, &QAction::triggered, this, [this](bool checked) {
        for (MLVProjectController *project : selectedProjects())
            project->setBlendsAlternatingRows(checked);
        m_ui->queueTableView->reloadData();
        updatePreview();
    });

    connect(m_ui->darkButton, &QPushButton::clicked, this, &AppDelegate::openDark);
    connect(m_ui->flatButton, &QPushButton::clicked, this, &AppDelegate::openFlatField);
    connect(m_ui->flatDarkButton, &QPushButton::clicked, this, &AppDelegate::openFlatDarkField);
    connect(m_ui->calibrationHelpButton, &QToolButton::clicked, this,
            &AppDelegate::showCalibrationHelp);
    connect(m_calibrationHelpUi->calibrationHelpButtons, &QDialogButtonBox::rejected, this,
            &AppDelegate::hideCalibrationHelp);
    connect(m_preprocessPanel.get(), &QDialog::rejected, this, &AppDelegate::cancelPreprocessing);
    connect(&NotificationCenter::defaultCenter(), &NotificationCenter::posted, this,
            &AppDelegate::checkPreprocessTask, Qt::QueuedConnection);

    connect(m_ui->movieRecipePopUpButton, &QComboBox::currentIndexChanged, this,
            &AppDelegate::enableFormats);
    for (const QComboBox *choice : {m_ui->movieFormatPopUpButton, m_ui->movieQualityPopUpButton,
                                    m_ui->movieRecipePopUpButton}) {
        connect(choice, &QComboBox::currentIndexChanged, this, &AppDelegate::tellChoice);
        connect(choice, &QComboBox::currentIndexChanged, this, &AppDelegate::describeFormats);
    }
    connect(m_ui->movieFolderPopUpButton, &QComboBox::activated, this,
            &AppDelegate::chooseMovieFolder);
    connect(m_prefUi->prefTempFolderPopUpButton, &QComboBox::activated, this,
            &AppDelegate::prefTempFolderPopUpButtonChanged);
    connect(m_prefWindow.get(), &QDialog::finished, this, &AppDelegate::showStoredFolder);
    connect(m_prefUi->prefTempFolderButton, &QPushButton::clicked, this,
            &AppDelegate::prefTempFolderButtonClicked);

    connect(m_ui->queueTableView, &QueueTableView::selectedRowsChanged, this,
            &AppDelegate::updateRecordingMenu);
    connect(m_ui->queueTableView, &QWidget::customContextMenuRequested, this,
            &AppDelegate::showRowMenu);
    connect(m_ui->queueTableView, &QTableView::doubleClicked, this,
            [this](const QModelIndex &cell) {
                const QString movie = movieOf(projectAtRow(cell.row()));
                if (movie.isEmpty())
                    showDetails();
                else
                    play(movie);
            });
    connect(m_ui->recordingMenu, &QMenu::aboutToShow, this, &AppDelegate::updateRecordingMenu);
    connect(&m_statusTimer, &QTimer::timeout, this, &AppDelegate::showStatus);
    m_window->installEventFilter(this);
    new FileDrop(
        *m_window, [this](const QList<QUrl> &urls) { return welcomes(urls); },
        [this](const QList<QUrl> &urls) { return acceptDrop(urls); },
        [this](bool over) { m_ui->queueTableView->showDropHighlight(over); });
    takeCalibrationDrops();
    connectPictures();
    connectPreview();
}

bool AppDelegate::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_window.get() && event->type() == QEvent::Close) {
        event->setAccepted(windowShouldClose());
        if (event->isAccepted())
            windowWillClose();
        else
            m_ui->statusTextField->tell(
                QStringLiteral("The window stays while a batch runs: stop it, or quit"));
        return true;
    }
    if (watched == m_window.get() && event->type() == QEvent::PaletteChange)
        keepTextReadable();
    return QObject::eventFilter(watched, event);
}

void AppDelegate::fillRecentMenu()
{
    m_ui->recentMenu->clear();
    const QStringList documents = m_recentDocuments.paths();
    m_ui->recentMenu->menuAction()->setEnabled(!documents.isEmpty());
    for (const QString &path : documents) {
        QString name = QFileInfo(path).fileName();
        QAction *action =
            m_ui->recentMenu->addAction(name.replace(QLatin1Char('&'), QLatin1String("&&")));
        action->setToolTip(path);
        connect(action, &QAction::triggered, this, [this, path] { application({path}); });
    }
    m_ui->recentMenu->addSeparator();
    connect(m_ui->recentMenu->addAction(QStringLiteral("&Clear")), &QAction::triggered, this,
            [this] {
                m_recentDocuments.clear();
                m_recentDocuments.save();
                fillRecentMenu();
            });
}

void AppDelegate::showAbout()
{
    m_alerts.runAlert(
        QStringLiteral("Filmwright %1").arg(QCoreApplication::applicationVersion()),
        QStringLiteral(
            "Turns MLV raw video recordings into ordinary movies.\n\nFree software under the "
            "MIT licence."),
        QStringLiteral("Ok"));
}

bool AppDelegate::checkTools(const QStringList &names)
{
    const QStringList missing = missingTools(names);
    if (missing.isEmpty())
        return true;
    m_alerts.runAlert(QStringLiteral("A tool is missing"), missing.join(QLatin1Char('\n')),
                      QStringLiteral("Ok"));
    return false;
}

} // namespace filmwright

#include "moc_appdelegate.cpp"
