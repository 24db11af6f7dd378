// SPDX-License-Identifier: MIT
#include "fakewindow.h"

#include "runner/temporarydirectory.h"
#include "runner/userdefaults.h"

#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QLabel>
#include <QMimeData>
#include <QPushButton>
#include <QSettings>
#include <QToolBar>
#include <QToolButton>

#include <algorithm>

using namespace filmwright;

namespace {

constexpr QPoint dropPlace(5, 5);

/// Frames of the preview have a folder of their own.
bool isForPreview(const QStringList &call)
{
    return std::any_of(call.cbegin(), call.cend(), [](const QString &argument) {
        return argument.contains(QLatin1String("/filmwright-preview-"));
    });
}

std::unique_ptr<QMimeData> dragged(const QStringList &paths)
{
    QList<QUrl> urls;
    for (const QString &path : paths)
        urls << QUrl::fromLocalFile(path);
    auto data = std::make_unique<QMimeData>();
    data->setUrls(urls);
    return data;
}

int columnOf(const QString &identifier)
{
    return static_cast<int>(queueTableColumns.indexOf(identifier));
}

} // namespace

void activate(QWidget &window)
{
    window.show();
    QCoreApplication::processEvents(); // a window that has just been closed gives up its place
    window.activateWindow();
    QTRY_VERIFY_WITH_TIMEOUT(window.isActiveWindow(), 60000); // a busy machine is no failure
}

int ScriptedAlerts::runAlert(const QString &title, const QString &message,
                             const QString &defaultButton, const QString &alternateButton,
                             const QString &otherButton)
{
    QStringList parts{title, message, defaultButton, alternateButton, otherButton};
    parts.removeAll(QString());
    shown << parts.join(QLatin1Char('|'));
    if (whileOpen)
        whileOpen();
    return answers.isEmpty() ? 1 : answers.takeFirst();
}

FakeWindow::FakeWindow(int frames)
    : FakeTools(frames)
{
    qputenv("TMPDIR", m_temporary.path().toUtf8());
    qputenv("XDG_CONFIG_HOME", m_preferences.path().toUtf8());
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_preferences.path());
    setBaseTemporaryDirectory(QString());
    showPictures(false);
}

void FakeWindow::showPictures(bool shown)
{
    setUserDefaultsValue(shown, QStringLiteral("ShowPictures"));
}

FakeWindow::~FakeWindow()
{
    delegate.reset();
    setBaseTemporaryDirectory(QString());
    qunsetenv("TMPDIR");
}

void FakeWindow::launch(const QStringList &recordings)
{
    quit();
    delegate = std::make_unique<AppDelegate>(alerts, panel);
    delegate->window()->show();
    delegate->applicationDidFinishLaunching();
    if (!recordings.isEmpty())
        add(recordings);
}

void FakeWindow::quit()
{
    if (delegate)
        delegate->applicationWillTerminate();
    delegate.reset();
}

QString FakeWindow::addRecipe(const QString &name, const QByteArray &video) const
{
    const QString folder = m_preferences.filePath(QStringLiteral("filmwright/recipes"));
    QDir().mkpath(folder);
    QFile file(QStringLiteral("%1/%2.recipe").arg(folder, name));
    if (file.open(QIODevice::WriteOnly))
        file.write("[Recipe]\nExtension=mp4\nVideo=" + video + "\nSuffix=." + name.toUtf8() + '\n');
    return file.fileName();
}

QStringList FakeWindow::makeRecordings(const QStringList &names)
{
    QStringList paths;
    for (const QString &name : names) {
        paths << m_recordings.filePath(name);
        QDir().mkpath(QFileInfo(paths.constLast()).path());
        QFile file(paths.constLast());
        [&] { QVERIFY(file.open(QIODevice::WriteOnly)); }();
        file.write(QByteArray(4096, 'x'));
    }
    return paths;
}

void FakeWindow::open(const QStringList &paths)
{
    panel.chosen = paths;
    pressInToolBar(QStringLiteral("sourceItem"));
}

void FakeWindow::add(const QStringList &names)
{
    QVERIFY(drop(makeRecordings(names)));
    waitUntilRead();
}

void FakeWindow::waitUntilRead()
{
    QTRY_VERIFY(action(QStringLiteral("sourceItem"))->isEnabled());
}

bool FakeWindow::welcomes(const QStringList &paths)
{
    const bool welcome = drag(paths);
    QDragLeaveEvent leave;
    QCoreApplication::sendEvent(table()->viewport(), &leave);
    return welcome;
}

bool FakeWindow::drag(const QStringList &paths)
{
    const std::unique_ptr<QMimeData> data = dragged(paths);
    QDragEnterEvent enter(dropPlace, Qt::CopyAction, data.get(), Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(table()->viewport(), &enter);
    return enter.isAccepted();
}

bool FakeWindow::drop(const QStringList &paths)
{
    if (!drag(paths))
        return false;
    const std::unique_ptr<QMimeData> data = dragged(paths);
    QDropEvent drop(QPointF(dropPlace), Qt::CopyAction, data.get(), Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(table()->viewport(), &drop);
    return drop.isAccepted();
}

QueueTableView *FakeWindow::table() const
{
    return widget<QueueTableView>(QStringLiteral("queueTableView"));
}

void FakeWindow::calibrate(const QString &button, const QString &name)
{
    panel.chosen = makeRecordings({name});
    press(button);
    QTRY_VERIFY(!widget<QDialog>(QStringLiteral("preprocessPanel"))->isVisible());
}

void FakeWindow::pressStart()
{
    pressInToolBar(QStringLiteral("startStopItem"));
}

void FakeWindow::pressInToolBar(const QString &name)
{
    auto *toolBar = widget<QToolBar>(QStringLiteral("toolBar"));
    QTest::mouseClick(toolBar->widgetForAction(action(name)), Qt::LeftButton);
}

void FakeWindow::waitForEnd()
{
    QTRY_VERIFY_WITH_TIMEOUT(!delegate->isWorking(), 60000);
}

void FakeWindow::press(const QString &button)
{
    QTest::mouseClick(widget<QAbstractButton>(button), Qt::LeftButton);
}

void FakeWindow::select(const QString &name)
{
    const auto row = queue().size() - 1 - queue().indexOf(name);
    table()->selectRow(static_cast<int>(row));
}

QString FakeWindow::temporary(const QString &name) const
{
    return QDir(temporaryDirectory()).filePath(name);
}

QList<QStringList> FakeWindow::conversionCalls(const QString &tool) const
{
    QList<QStringList> calls = tools.calls(tool);
    calls.removeIf(isForPreview);
    return calls;
}

QList<QStringList> FakeWindow::previewCalls(const QString &tool) const
{
    QList<QStringList> calls = tools.calls(tool);
    calls.removeIf([](const QStringList &call) { return !isForPreview(call); });
    return calls;
}

QStringList FakeWindow::queue() const
{
    QStringList names;
    for (const auto &project : delegate->projectList())
        names << QFileInfo(project->mlvPath()).fileName();
    return names;
}

QStringList FakeWindow::states() const
{
    QStringList states;
    for (const auto &project : delegate->projectList())
        states << project->state();
    return states;
}

QString FakeWindow::cell(const QString &column, int row) const
{
    return table()->model()->index(row, columnOf(column)).data().toString();
}

ProgressTableCellView *FakeWindow::stateView(int row) const
{
    // Rows are drawn anew in the next turn of the event loop; the tools' news can wait.
    QCoreApplication::processEvents(QEventLoop::ExcludeSocketNotifiers);
    return qobject_cast<ProgressTableCellView *>(
        table()->indexWidget(table()->model()->index(row, columnOf(QStringLiteral("State")))));
}

QString FakeWindow::status() const
{
    return widget<QLabel>(QStringLiteral("statusTextField"))->text();
}

QString onlyForB(const char *subject, const QString &script, const QString &otherwise)
{
    return QStringLiteral("case \"$%1\" in *b.*) %2 ;; *) %3 ;; esac")
        .arg(QLatin1String(subject), script, otherwise);
}
