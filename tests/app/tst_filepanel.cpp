// SPDX-License-Identifier: MIT
#include "app/filepanel.h"

#include "support/testprogram.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <functional>

using namespace filmwright;

class TestFilePanel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void filesAndFoldersAreChosenTogether();
    void folderIsChosenNotEntered();
    void nothingChosenKeepsTheChooserOpen();
    void cancelChoosesNothing();
    void recordingIsChosen();
    void folderIsChosen();
    void nextChooserStartsInTheLastFolder();
    void otherFilesAreNotOffered();

private:
    QString make(const QString &name) const
    {
        const QString path = m_folder->filePath(name);
        [&] { QVERIFY(QFile(path).open(QIODevice::WriteOnly)); }();
        return path;
    }

    /// Has the next chooser be used so, in the folder of the test.
    void use(const std::function<void(QFileDialog &)> &choice) const
    {
        QTimer::singleShot(0, qApp, [this, choice] {
            auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            dialog->setDirectory(m_folder->path());
            choice(*dialog);
        });
    }

    /// Types names into the chooser and presses Enter.
    static void enter(QFileDialog &dialog, const QString &names)
    {
        auto *field = dialog.findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
        QVERIFY(field);
        field->setText(names);
        QTest::keyClick(field, Qt::Key_Return);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QTemporaryDir m_preferences;
    FilePanel m_panel;
};

void TestFilePanel::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_preferences.path());
    QSettings(QStringLiteral("Filmwright"), QStringLiteral("Filmwright")).clear();
}

void TestFilePanel::filesAndFoldersAreChosenTogether()
{
    const QString a = make(QStringLiteral("a.MLV"));
    const QString b = make(QStringLiteral("b.mlv"));
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("card")));
    use([](QFileDialog &dialog) { enter(dialog, QStringLiteral("\"a.MLV\" \"card\" \"b.mlv\"")); });
    QStringList chosen = m_panel.recordingsAndFolders();
    chosen.sort();
    QCOMPARE(chosen, QStringList({a, b, m_folder->filePath(QStringLiteral("card"))}));
}

void TestFilePanel::folderIsChosenNotEntered()
{
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("card")));
    use([](QFileDialog &dialog) { enter(dialog, QStringLiteral("card")); });
    QCOMPARE(m_panel.recordingsAndFolders(),
             QStringList{m_folder->filePath(QStringLiteral("card"))});
}

void TestFilePanel::nothingChosenKeepsTheChooserOpen()
{
    use([](QFileDialog &dialog) {
        enter(dialog, QString());
        QVERIFY(dialog.isVisible());
        dialog.reject();
    });
    QCOMPARE(m_panel.recordingsAndFolders(), QStringList());
}

void TestFilePanel::cancelChoosesNothing()
{
    make(QStringLiteral("a.MLV"));
    const auto cancel = [](QFileDialog &dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); };
    use(cancel);
    QCOMPARE(m_panel.recordingsAndFolders(), QStringList());
    use(cancel);
    QCOMPARE(m_panel.recording(QStringLiteral("Title")), QString());
    use(cancel);
    QCOMPARE(m_panel.folder(QStringLiteral("Title")), QString());
}

void TestFilePanel::recordingIsChosen()
{
    const QString path = make(QStringLiteral("50 % #1.MLV"));
    QString title;
    use([&title](QFileDialog &dialog) {
        title = dialog.windowTitle();
        enter(dialog, QStringLiteral("50 % #1.MLV"));
    });
    QCOMPARE(m_panel.recording(QStringLiteral("Choose the dark recording")), path);
    QCOMPARE(title, QStringLiteral("Choose the dark recording"));
}

void TestFilePanel::folderIsChosen()
{
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("frames")));
    use([](QFileDialog &dialog) {
        QCOMPARE(dialog.fileMode(), QFileDialog::Directory);
        enter(dialog, QStringLiteral("frames"));
    });
    QCOMPARE(m_panel.folder(QStringLiteral("Choose a temporary directory")),
             m_folder->filePath(QStringLiteral("frames")));
}

void TestFilePanel::nextChooserStartsInTheLastFolder()
{
    make(QStringLiteral("a.MLV"));
    use([](QFileDialog &dialog) { enter(dialog, QStringLiteral("a.MLV")); });
    QVERIFY(!m_panel.recording(QStringLiteral("Title")).isEmpty());
    QString start;
    const auto look = [&start] {
        QTimer::singleShot(0, qApp, [&start] {
            auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            start = dialog->directory().absolutePath();
            dialog->reject();
        });
    };
    look();
    m_panel.recordingsAndFolders();
    QCOMPARE(start, QDir(m_folder->path()).absolutePath());
    m_folder.reset();
    look();
    m_panel.recordingsAndFolders(); // the folder is gone
    QVERIFY(!start.isEmpty());
}

void TestFilePanel::otherFilesAreNotOffered()
{
    use([](QFileDialog &dialog) {
        QVERIFY(dialog.nameFilters().constFirst().contains(QLatin1String("*.mlv")));
        QCOMPARE(dialog.nameFilters().size(), 1);
        QCOMPARE(dialog.fileMode(), QFileDialog::ExistingFiles);
        dialog.reject();
    });
    m_panel.recordingsAndFolders();
}

FILMWRIGHT_TEST(TestFilePanel, QApplication)
#include "tst_filepanel.moc"
