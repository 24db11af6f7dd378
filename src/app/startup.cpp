// SPDX-License-Identifier: MIT
// How the application comes up and ends, and the preferences.
#include "app/appdelegate.h"
#include "app/queuetableview.h"
#include "app/statusline.h"
#include "conversion/hdrinterleavedimagemerge.h"
#include "runner/files.h"
#include "runner/systemlog.h"
#include "runner/temporarydirectory.h"
#include "runner/userdefaults.h"
#include "ui_mainwindow.h"
#include "ui_preferences.h"

#include <QCoreApplication>
#include <QDir>
#include <QThread>

namespace filmwright {

namespace {

const QString preferencesKey = QStringLiteral("Preferences");
const QString temporaryDirectoryKey = QStringLiteral("TemporaryDirectory");
const QString enableDevMenuKey = QStringLiteral("EnableDevMenu");
const QString keepTempDirectoryKey = QStringLiteral("KeepTempDirectory");
const QString workersKey = QStringLiteral("FramesConvertedAtOnce");
const QString picturesKey = QStringLiteral("ShowPictures");
const QString selfTestFolderKey = QStringLiteral("SelfTestFolder");

/// The blend of dual-ISO frames, tried on a developer's frame; elsewhere there is nothing to try.
void runSelfTest()
{
    const QVariant chosen = userDefaultsValueForKey(selfTestFolderKey);
    const QDir folder(chosen.isValid() ? chosen.toString()
                                       : QStringLiteral("/opt/filmwright/selftest"));
    const QString frame = folder.filePath(QStringLiteral("tmp000000.dng"));
    QFile::remove(frame);
    if (!QFile::copy(folder.filePath(QStringLiteral("tmp000000-sav.dng")), frame))
        return;
    HDRInterleavedImageMerge merge;
    merge.setImagePath(frame);
    merge.hdrMerge();
}

/// Whether the temporary directory is in that folder from now on. It isn't when the folder can't be
/// written, or when somebody else has put a link or a folder of theirs in the directory's place.
bool useTemporaryFolder(const QString &folder)
{
    const QString previousBase = baseTemporaryDirectory();
    if (setBaseTemporaryDirectory(folder) && prepareTemporaryDirectory().isEmpty())
        return true;
    setBaseTemporaryDirectory(previousBase);
    return false;
}

} // namespace

void AppDelegate::applicationDidFinishLaunching()
{
    runSelfTest();
    appInitialization();
}

void AppDelegate::appInitialization()
{
    if (m_projectList)
        return;
    m_projectList = std::make_unique<ProjectList>();
    m_ui->queueTableView->setDataSource(this); // which also takes drops
    m_ui->startStopItem->setEnabled(false);
    m_working = false;
    for (CustomTextField *field :
         {m_ui->flatTextField, m_ui->darkTextField, m_ui->flatDarkTextField})
        field->setDeleteDelegate(this);
    restoreWorkers();
    restorePictures();
    restoreTemporaryFolder();
    if (!lockTemporaryDirectory(m_directoryLock)) {
        QMetaObject::invokeMethod(this, &AppDelegate::windowWillClose, Qt::QueuedConnection);
        return;
    }
    systemLog(QStringLiteral("Tmp folder: %1").arg(temporaryDirectory()));
    tellTemporaryDirectory();
    showDeveloperMenu();
    if (keepTempDirectory())
        systemLog(QStringLiteral("Dev mode: keep temporary directory."));
    else
        removeWork(temporaryDirectory());
}

/// More workers than processor cores would only wait for each other.
void AppDelegate::restoreWorkers()
{
    QSpinBox &field = *m_prefUi->prefWorkersField;
    field.setMaximum(qMax(1, QThread::idealThreadCount()));
    field.setValue(qMax(1, userDefaultsValueForKey(workersKey).toInt()));
    connect(&field, &QSpinBox::valueChanged, this, [this](int workers) {
        setUserDefaultsValue(workers, workersKey);
        if (m_working)
            m_ui->statusTextField->tell(
                QStringLiteral("%1 frames at once hold from the next recording on").arg(workers));
    });
}

void AppDelegate::restorePictures()
{
    QCheckBox &box = *m_prefUi->prefPicturesCheckBox;
    const QVariant stored = userDefaultsValueForKey(picturesKey);
    box.setChecked(!stored.isValid() || stored.toBool());
    connect(&box, &QCheckBox::toggled, this, [this](bool checked) {
        setUserDefaultsValue(checked, picturesKey);
        m_ui->queueTableView->reloadData();
    });
}

void AppDelegate::restoreTemporaryFolder()
{
    const QVariantMap preferences = userDefaultsValueForKey(preferencesKey).toMap();
    if (!preferences.contains(temporaryDirectoryKey)) {
        m_prefUi->prefTempFolderPopUpButton->setCurrentIndex(0);
        m_prefUi->prefTempFolderButton->setEnabled(false);
        return;
    }
    const QString folder = preferences.value(temporaryDirectoryKey).toString();
    if (!useTemporaryFolder(folder)) {
        tellUnusableTemporaryFolder(); // the preference is tried again at the next start
        return;
    }
    m_prefUi->prefTempFolderPopUpButton->setCurrentIndex(1);
    m_prefUi->prefTempFolderTextField->setText(folder);
    m_prefUi->prefTempFolderButton->setEnabled(true);
}

/// Nobody's work is removed or mixed with another's: the directory belongs to one run at a time.
/// What an earlier run has left may fill the disk, so that not even a lock has room.
bool AppDelegate::lockTemporaryDirectory(DirectoryLock &lock)
{
    QString error = lock.take(temporaryDirectory());
    if (!error.isEmpty() && !lock.isHeldElsewhere() && !keepTempDirectory()) {
        removeWork(temporaryDirectory());
        error = lock.take(temporaryDirectory());
    }
    if (error.isEmpty())
        return true;
    systemLog(error);
    m_alerts.runAlert(lock.isHeldElsewhere()
                          ? QStringLiteral("The temporary directory is in use")
                          : QStringLiteral("The temporary directory can't be used"),
                      error, QStringLiteral("Ok"));
    return false;
}

/// After the frames that are still being converted: their images would be written anew.
void AppDelegate::removeWork(const QString &directory)
{
    for (const auto &project : *m_projectList)
        project->endConversions();
    removeFolder(directory);
}

/// The menu is on in every build; only a store that can't be written would hide it.
void AppDelegate::showDeveloperMenu()
{
    setUserDefaultsValue(true, enableDevMenuKey);
    if (!userDefaultsValueForKey(enableDevMenuKey).isValid()) {
        m_ui->devMenu->menuAction()->setVisible(false);
        return;
    }
    const QVariant keep = userDefaultsValueForKey(keepTempDirectoryKey);
    if (keep.isValid())
        m_ui->keepTempDirectoryMenuItem->setChecked(keep.toBool());
}

bool AppDelegate::keepTempDirectory() const
{
    return userDefaultsValueForKey(keepTempDirectoryKey).toBool();
}

void AppDelegate::keepTempDirectory(QAction &sender)
{
    sender.setChecked(!sender.isChecked());
    setUserDefaultsValue(sender.isChecked(), keepTempDirectoryKey);
}

/// Going back to the system's folder takes effect at the next start: until then the chosen base
/// stays in use.
void AppDelegate::prefTempFolderPopUpButtonChanged(int index)
{
    if (m_working) {
        refuseWhileWorking();
        m_prefUi->prefTempFolderPopUpButton->setCurrentIndex(baseTemporaryDirectory().isNull() ? 0
                                                                                               : 1);
        return;
    }
    if (index != 0) {
        m_prefUi->prefTempFolderButton->setEnabled(true);
        m_prefUi->prefTempFolderTextField->setPlaceholderText(QStringLiteral("Choose a directory"));
        return;
    }
    m_prefUi->prefTempFolderButton->setEnabled(false);
    m_prefUi->prefTempFolderTextField->setText(QString());
    m_prefUi->prefTempFolderTextField->setPlaceholderText(QString());
    QVariantMap preferences = userDefaultsValueForKey(preferencesKey).toMap();
    removeWork(temporaryDirectory());
    preferences.remove(temporaryDirectoryKey);
    setUserDefaultsValue(preferences, preferencesKey);
}

void AppDelegate::prefTempFolderButtonClicked()
{
    if (m_working) {
        refuseWhileWorking();
        return;
    }
    const QString folder = m_panel.folder(QStringLiteral("Choose a temporary directory"));
    if (folder.isEmpty())
        return;
    const QString previousBase = baseTemporaryDirectory();
    const QString previousDirectory = temporaryDirectory();
    if (!useTemporaryFolder(folder)) {
        tellUnusableTemporaryFolder();
        return;
    }
    if (temporaryDirectory() != previousDirectory) {
        DirectoryLock lock;
        if (!lockTemporaryDirectory(lock)) {
            setBaseTemporaryDirectory(previousBase);
            return;
        }
        if (!keepTempDirectory())
            removeWork(previousDirectory);
        m_directoryLock = std::move(lock);
    }
    QVariantMap preferences = userDefaultsValueForKey(preferencesKey).toMap();
    preferences.insert(temporaryDirectoryKey, folder);
    setUserDefaultsValue(preferences, preferencesKey);
    m_prefUi->prefTempFolderTextField->setText(folder);
    tellTemporaryDirectory();
}

void AppDelegate::tellTemporaryDirectory()
{
    m_prefUi->prefTempFolderNote->setText(
        QStringLiteral("Frames are kept in %1 while a movie is made: about 15 GB for a minute of "
                       "1920 × 1080.")
            .arg(QDir::toNativeSeparators(temporaryDirectory())));
}

/// "Another folder" of which none was chosen in the end is none.
void AppDelegate::showStoredFolder()
{
    const QString folder =
        userDefaultsValueForKey(preferencesKey).toMap().value(temporaryDirectoryKey).toString();
    m_prefUi->prefTempFolderPopUpButton->setCurrentIndex(folder.isEmpty() ? 0 : 1);
    m_prefUi->prefTempFolderTextField->setText(folder);
    m_prefUi->prefTempFolderTextField->setPlaceholderText(QString());
    m_prefUi->prefTempFolderButton->setEnabled(!folder.isEmpty());
}

void AppDelegate::tellUnusableTemporaryFolder()
{
    m_alerts.runAlert(QStringLiteral("Unable to set temporary directory"),
                      QStringLiteral("Please control read/write access to temporary directory."),
                      QStringLiteral("Ok"));
}

bool AppDelegate::windowShouldClose() const
{
    return !m_working;
}

void AppDelegate::windowWillClose()
{
    QCoreApplication::exit(0);
}

void AppDelegate::quit()
{
    if (m_working) {
        const int answer = m_alerts.runAlert(
            QStringLiteral("A batch is running"),
            QStringLiteral(
                "The recordings that are not finished yet would get no movie. Quit all the same?"),
            QStringLiteral("Go on working"), QStringLiteral("Quit"));
        if (answer != 0)
            return;
        if (m_working)
            start();
    }
    windowWillClose();
}

void AppDelegate::applicationWillTerminate()
{
    m_memory.save();
    if (m_directoryLock.isHeld() && !keepTempDirectory())
        removeWork(temporaryDirectory());
    allowSleep();
}

} // namespace filmwright
