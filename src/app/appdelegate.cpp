// SPDX-License-Identifier: MIT
// The window's widgets, what each of its controls does, and what it remembers of its last time.
#include "app/appdelegate.h"
#include "app/queuetableview.h"
#include "app/readablepalette.h"
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

const QString windowKey = QStringLiteral("Window");
const QString geometryKey = QStringLiteral("Geometry");
const QString splitterKey = QStringLiteral("Splitter");
const QString columnsKey = QStringLiteral("Columns");
const QString formatKey = QStringLiteral("MovieFormat");
const QString qualityKey = QStringLiteral("MovieQuality");

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
{
    registerImages();
    keepTextReadable();
    m_ui->setupUi(m_window.get());
    m_prefUi->setupUi(m_prefWindow.get());
    m_calibrationHelpUi->setupUi(m_calibrationHelpPanel.get());
    m_preprocessUi->setupUi(m_preprocessPanel.get());
    for (const QString &extension : movieExtensions())
        m_ui->movieFormatPopUpButton->addItem(extension.toUpper());
    m_statusTimer.setInterval(statusInterval);
    connectWindow();
    restoreWindow();
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
    m_failures.forgetAll();
    if (m_projectList) {
        for (const auto &project : *m_projectList)
            detach(*project);
    }
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
    command(m_ui->removeMenuItem, &AppDelegate::removeSelectedProjects);
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
    });
    connect(m_ui->blendRowsMenuItem, &QAction::triggered, this, [this](bool checked) {
        for (MLVProjectController *project : selectedProjects())
            project->setBlendsAlternatingRows(checked);
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

    connect(m_prefUi->prefTempFolderPopUpButton, &QComboBox::activated, this,
            &AppDelegate::prefTempFolderPopUpButtonChanged);
    connect(m_prefUi->prefTempFolderButton, &QPushButton::clicked, this,
            &AppDelegate::prefTempFolderButtonClicked);

    connect(m_ui->queueTableView, &QueueTableView::selectedRowsChanged, this,
            &AppDelegate::updateRecordingMenu);
    connect(m_ui->queueTableView, &QWidget::customContextMenuRequested, this,
            [this](const QPoint &place) {
                m_ui->recordingMenu->popup(m_ui->queueTableView->viewport()->mapToGlobal(place));
            });
    connect(m_ui->recordingMenu, &QMenu::aboutToShow, this, &AppDelegate::updateRecordingMenu);
    connect(&m_failures, &FailureWatch::judged, this,
            [this](MLVProjectController *project, bool stuck) { projectJudged(*project, stuck); });
    connect(&m_statusTimer, &QTimer::timeout, this, &AppDelegate::showStatus);
    m_window->installEventFilter(this);
}

bool AppDelegate::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_window.get() && event->type() == QEvent::Close) {
        event->setAccepted(windowShouldClose());
        if (event->isAccepted())
            windowWillClose();
        return true;
    }
    if (watched == m_window.get() && event->type() == QEvent::PaletteChange)
        keepTextReadable();
    return QObject::eventFilter(watched, event);
}

void AppDelegate::restoreWindow()
{
    const QVariantMap stored = userDefaultsValueForKey(windowKey).toMap();
    m_window->restoreGeometry(stored.value(geometryKey).toByteArray());
    m_ui->splitter->setSizes({3 * m_window->width() / 5, 2 * m_window->width() / 5});
    m_ui->splitter->setStretchFactor(0, 3);
    m_ui->splitter->setStretchFactor(1, 2);
    m_ui->splitter->restoreState(stored.value(splitterKey).toByteArray());
    m_ui->movieFormatPopUpButton->setCurrentIndex(stored.value(formatKey).toInt());
    m_ui->movieQualityPopUpButton->setCurrentIndex(stored.value(qualityKey).toInt());
    QHeaderView *header = m_ui->queueTableView->horizontalHeader();
    const int letter = m_window->fontMetrics().averageCharWidth();
    int column = 0;
    for (const int letters : {24, 26, 16, 18, 7})
        header->resizeSection(column++, letters * letter);
    header->restoreState(stored.value(columnsKey).toByteArray());
}

void AppDelegate::saveWindow() const
{
    setUserDefaultsValue(
        QVariantMap{{geometryKey, m_window->saveGeometry()},
                    {splitterKey, m_ui->splitter->saveState()},
                    {columnsKey, m_ui->queueTableView->horizontalHeader()->saveState()},
                    {formatKey, m_ui->movieFormatPopUpButton->currentIndex()},
                    {qualityKey, m_ui->movieQualityPopUpButton->currentIndex()}},
        windowKey);
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
    connect(m_ui->recentMenu->addAction(tr("&Clear")), &QAction::triggered, this, [this] {
        m_recentDocuments.clear();
        m_recentDocuments.save();
        fillRecentMenu();
    });
}

void AppDelegate::showAbout()
{
    runAlert(tr("Filmwright %1").arg(QCoreApplication::applicationVersion()),
             tr("Turns MLV raw video recordings into ordinary movies.\n\nFree software under the "
                "MIT licence."),
             QStringLiteral("Ok"));
}

/// What arrives while a person reads an alert waits for its answer, as if the alert had stopped the
/// application.
int AppDelegate::runAlert(const QString &title, const QString &message,
                          const QString &defaultButton, const QString &alternateButton,
                          const QString &otherButton)
{
    ++m_openAlerts;
    const int answer = m_alerts.runAlert(title, withoutDirectives(message), defaultButton,
                                         alternateButton, otherButton);
    --m_openAlerts;
    QMetaObject::invokeMethod(this, &AppDelegate::runNextDeferredCall, Qt::QueuedConnection);
    return answer;
}

void AppDelegate::runNextDeferredCall()
{
    if (m_openAlerts > 0 || m_callsAfterAlert.empty())
        return;
    const std::function<void()> call = std::move(m_callsAfterAlert.front());
    m_callsAfterAlert.pop_front();
    call();
    QMetaObject::invokeMethod(this, &AppDelegate::runNextDeferredCall, Qt::QueuedConnection);
}

void AppDelegate::whenNoAlertIsOpen(std::function<void()> call)
{
    if (m_openAlerts == 0)
        call();
    else
        m_callsAfterAlert.push_back(std::move(call));
}

bool AppDelegate::checkTools(const QStringList &names)
{
    const QStringList missing = missingTools(names);
    if (missing.isEmpty())
        return true;
    runAlert(tr("A tool is missing"), missing.join(QLatin1Char('\n')), QStringLiteral("Ok"));
    return false;
}

} // namespace filmwright
