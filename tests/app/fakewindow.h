// SPDX-License-Identifier: MIT
#pragma once

#include "app/appdelegate.h"
#include "app/progresstablecellview.h"
#include "app/queuetableview.h"
#include "project/faketools.h"

#include <QTest>

// Recordings, and what the table says of them.
inline const QString a = QStringLiteral("a.MLV");
inline const QString b = QStringLiteral("b.MLV");
inline const QString c = QStringLiteral("c.MLV");
inline const QString d = QStringLiteral("d.MLV");
inline const QString ready = QStringLiteral("Ready");
inline const QString pending = QStringLiteral("Pending");
inline const QString building = QStringLiteral("Building movie");
inline const QString finished = QStringLiteral("Finished");

/// A tool that doesn't end by itself.
inline const QString endless = QStringLiteral("exec sleep 60");

/// The alert of what can't be done during a batch.
inline const QString refusal =
    QStringLiteral("Please wait|Operation not allowed while working.|Ok");

/// Waits until the window has the keyboard.
void activate(QWidget &window);

/// Answers alerts as the test says and notes them; an alert without an answer gets the default
/// button's.
class ScriptedAlerts : public filmwright::AlertPresenter
{
public:
    int runAlert(const QString &title, const QString &message, const QString &defaultButton,
                 const QString &alternateButton, const QString &otherButton) override;

    /// "title|message|button|button…" of each alert so far, in order.
    QStringList shown;
    QList<int> answers;
    /// Called while an alert is open.
    std::function<void()> whileOpen;
};

/// Chooses what the test says.
class ScriptedPanel : public filmwright::OpenPanel
{
public:
    QStringList recordingsAndFolders() override { return chosen; }
    QString recording(const QString &) override { return chosen.value(0); }
    QString folder(const QString &) override { return chosen.value(0); }

    /// Empty: cancelled.
    QStringList chosen;
};

/// The window on tools that behave, with its own temporary folder and preferences.
class FakeWindow : public FakeTools
{
public:
    explicit FakeWindow(int frames = 2);
    ~FakeWindow();

    /// Whether the next launch shows pictures of the recordings, for which tools are called; not
    /// before this is asked for.
    static void showPictures(bool shown);

    /// Launches the application and adds recordings; a second time: quits and launches it anew.
    void launch(const QStringList &recordings = {});
    void quit();

    /// Makes files of these names (with folders as needed) and answers their paths.
    QStringList makeRecordings(const QStringList &names);
    /// Writes a recipe of that name into the person's folder and answers its path; its movies are
    /// named "clip.NAME.mp4".
    QString addRecipe(const QString &name, const QByteArray &video) const;
    QString recordings() const { return m_recordings.path(); }
    /// Chooses these in the chooser of the toolbar's button.
    void open(const QStringList &paths);
    /// Makes and drops recordings, and waits until they are read.
    void add(const QStringList &names);
    void waitUntilRead();
    /// Whether a drag of these files would be welcome over the table.
    bool welcomes(const QStringList &paths);
    /// Drops files on the table as a file manager does; true when they were taken.
    bool drop(const QStringList &paths);
    /// Chooses a calibration recording of that name by the button, and waits until the sheet is
    /// gone.
    void calibrate(const QString &button, const QString &name);

    void pressStart();
    void waitForEnd();
    void press(const QString &button);
    /// Selects the row of a recording.
    void select(const QString &name);

    template <typename Widget>
    Widget *widget(const QString &name) const
    {
        return delegate->window()->findChild<Widget *>(name);
    }
    filmwright::QueueTableView *table() const;
    QAction *action(const QString &name) const { return widget<QAction>(name); }
    QString temporary(const QString &name) const;
    /// The argument lists of a tool's calls for movies, and of those for the preview.
    QList<QStringList> conversionCalls(const QString &tool) const;
    QList<QStringList> previewCalls(const QString &tool) const;

    /// The file names of the queue in the order of the list.
    QStringList queue() const;
    QStringList states() const;
    /// The text of a cell of the table.
    QString cell(const QString &column, int row) const;
    filmwright::ProgressTableCellView *stateView(int row) const;
    QString status() const;

    ScriptedAlerts alerts;
    ScriptedPanel panel;
    std::unique_ptr<filmwright::AppDelegate> delegate;

private:
    void pressInToolBar(const QString &name);
    bool drag(const QStringList &paths);

    QTemporaryDir m_recordings;
    QTemporaryDir m_temporary;
    QTemporaryDir m_preferences;
};

/// A script for recording b alone, and one for the others; `subject` names what tells them apart.
QString onlyForB(const char *subject, const QString &script, const QString &otherwise);
