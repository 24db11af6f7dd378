// SPDX-License-Identifier: MIT
#include "app/filepanel.h"

#include "runner/userdefaults.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QStandardPaths>

namespace filmwright {

namespace {

const QString lastFolderKey = QStringLiteral("LastFolder");

QString lastFolder()
{
    const QString folder = userDefaultsValueForKey(lastFolderKey).toString();
    return QFileInfo(folder).isDir()
               ? folder
               : QStandardPaths::writableLocation(QStandardPaths::MoviesLocation);
}

QString recordingFilter()
{
    return QStringLiteral("MLV recordings (*.mlv *.MLV *.Mlv)");
}

/// Chooses files and folders in one go: the platform's dialogs choose one kind, and Qt's own enters
/// a selected folder instead of choosing it. A folder is entered by a double click.
class MixedDialog : public QFileDialog
{
public:
    using QFileDialog::QFileDialog;

protected:
    void accept() override
    {
        const QStringList chosen = selectedFiles();
        if (chosen.isEmpty() || chosen == QStringList(directory().absolutePath()))
            return;
        done(Accepted);
    }
};

QString chosenIn(QFileDialog &dialog)
{
    if (dialog.exec() != QDialog::Accepted)
        return {};
    setUserDefaultsValue(dialog.directory().absolutePath(), lastFolderKey);
    return dialog.selectedFiles().value(0);
}

} // namespace

QStringList FilePanel::recordingsAndFolders()
{
    MixedDialog dialog(m_window, QStringLiteral("Open recordings and folders"), lastFolder(),
                       recordingFilter());
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setFileMode(QFileDialog::ExistingFiles);
    return chosenIn(dialog).isNull() ? QStringList() : dialog.selectedFiles();
}

QString FilePanel::recording(const QString &title)
{
    QFileDialog dialog(m_window, title, lastFolder(), recordingFilter());
    dialog.setFileMode(QFileDialog::ExistingFile);
    return chosenIn(dialog);
}

QString FilePanel::folder(const QString &title)
{
    QFileDialog dialog(m_window, title, lastFolder());
    dialog.setFileMode(QFileDialog::Directory);
    return chosenIn(dialog);
}

} // namespace filmwright
