// SPDX-License-Identifier: MIT
#include "fakewindow.h"

#include "app/queuetableview.h"
#include "runner/temporarydirectory.h"

#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QPushButton>
#include <QSettings>
#include <QToolBar>
#include <QToolButton>

using namespace filmwright;

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
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_preferences.path());
    setBaseTemporaryDirectory(QString());
}

FakeWindow::~FakeWindow()
{
    delegate.reset();
    setBaseTemporaryDirectory(QString());
    qunsetenv("TMPDIR");
}

void FakeWindow::launch()
{
    quit();
    delegate = std::make_unique<AppDelegate>(alerts, panel);
    delegate->window()->show();
    delegate->applicationDidFinishLaunching();
}

void FakeWindow::quit()
{
    if (delegate)
        delegate->applicationWillTerminate();
    delegate.reset();
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

void FakeWindow::add(const QStringList &names)
{
    QVERIFY(drop(makeRecordings(names)));
    waitUntilRead();
}

void FakeWindow::waitUntilRead()
{
    QTRY_VERIFY(action(QStringLiteral("sourceItem"))->isEnabled());
}

bool FakeWindow::drop(const QStringList &paths)
{
    QMimeData data;
    QList<QUrl> urls;
    for (const QString &path : paths)
        urls << QUrl::fromLocalFile(path);
    data.setUrls(urls);
    QWidget *target = widget<QueueTableView>(QStringLiteral("queueTableView"))->viewport();
    const QPoint place(5, 5);
    QDragEnterEvent enter(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &enter);
    if (!enter.isAccepted())
        return false;
    QDropEvent drop(QPointF(place), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &drop);
    return drop.isAccepted();
}

void FakeWindow::calibrate(const QString &button, const QString &name)
{
    panel.chosen = makeRecordings({name});
    press(button);
    QTRY_VERIFY(!widget<QDialog>(QStringLiteral("preprocessPanel"))->isVisible());
}

void FakeWindow::pressStart()
{
    auto *toolBar = widget<QToolBar>(QStringLiteral("toolBar"));
    QTest::mouseClick(toolBar->widgetForAction(action(QStringLiteral("startStopItem"))),
                      Qt::LeftButton);
}

void FakeWindow::waitForEnd()
{
    QTRY_VERIFY_WITH_TIMEOUT(!delegate->isWorking(), 60000);
}

void FakeWindow::press(const QString &button)
{
    QTest::mouseClick(widget<QAbstractButton>(button), Qt::LeftButton);
}

QString FakeWindow::temporary(const QString &name) const
{
    return QDir(temporaryDirectory()).filePath(name);
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
