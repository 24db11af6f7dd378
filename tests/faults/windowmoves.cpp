// SPDX-License-Identifier: MIT
// What a person does with the window.
#include "windowscene.h"

#include "app/customtextfield.h"
#include "scenefolders.h"

#include <QComboBox>
#include <QDialog>
#include <QToolButton>

void WindowScene::launch()
{
    m_hasDark = false;
    m_window->launch();
    const Order &order = m_strike.strike.order;
    const bool isAvi = order.format == QLatin1String("avi");
    m_window->widget<QComboBox>(QStringLiteral("movieFormatPopUpButton"))
        ->setCurrentIndex(isAvi ? 0 : 1);
    m_window->widget<QComboBox>(QStringLiteral("movieQualityPopUpButton"))->setCurrentIndex(1);
    openAll();
}

void WindowScene::openAll()
{
    QStringList paths;
    for (const QString &name : entries(m_window->recordings()))
        if (name.endsWith(QLatin1String(".MLV")))
            paths << path(name);
    m_window->open(paths);
    const auto isRead = [this] {
        return m_window->action(QStringLiteral("sourceItem"))->isEnabled() || toolHangs();
    };
    if (!QTest::qWaitFor(isRead, static_cast<int>(hanging.count())))
        complain(QStringLiteral("the reading of the recordings hangs"));
    freeFromHangingTool();
    const Order &order = m_strike.strike.order;
    m_window->table()->selectAll();
    if (order.mergesNeighbours)
        m_window->action(QStringLiteral("mergeNeighboursMenuItem"))->trigger();
    if (order.blendsAlternatingRows)
        m_window->action(QStringLiteral("blendRowsMenuItem"))->trigger();
    m_window->table()->clearSelection();
}

void WindowScene::pressStart()
{
    if (m_window->action(QStringLiteral("startStopItem"))->isEnabled())
        m_window->pressStart();
}

void WindowScene::chooseDark()
{
    auto *sheet = m_window->widget<QDialog>(QStringLiteral("preprocessPanel"));
    if (sheet->isVisible())
        return; // it takes the clicks
    m_window->panel.chosen = QStringList{darkPath()};
    m_window->press(QStringLiteral("darkButton"));
    m_hasDark = true;
    const auto isOver = [this, sheet] { return !sheet->isVisible() || toolHangs(); };
    if (!QTest::qWaitFor(isOver, static_cast<int>(hanging.count())))
        complain(QStringLiteral("the averaging hangs"));
    freeFromHangingTool();
    // One that failed is no longer in the field.
    m_hasDark = !m_window->widget<filmwright::CustomTextField>(QStringLiteral("darkTextField"))
                     ->text()
                     .isEmpty();
}

/// What a person does who sees that nothing goes on: cancels the averaging, removes the recording
/// that isn't read, stops the batch.
void WindowScene::freeFromHangingTool()
{
    if (!toolHangs())
        return;
    addTools(false);
    QFile::remove(begunPath());
    auto *sheet = m_window->widget<QDialog>(QStringLiteral("preprocessPanel"));
    const bool averages = sheet->isVisible();
    if (averages)
        sheet->reject();
    if (m_window->delegate->isWorking())
        pressStart();
    else if (!averages && m_window->queue().contains(struckName))
        make(Move::Remove);
}

QString WindowScene::begunPath() const
{
    return m_window->tools.path() + u'/' + m_strike.strike.tool + QStringLiteral(".begun");
}

bool WindowScene::toolHangs() const
{
    return hangs() && QFile::exists(begunPath());
}

void WindowScene::make(Move move)
{
    switch (move) {
    case Move::StopAndStart:
        pressStart();
        QTest::qWait(1);
        pressStart();
        break;
    case Move::Remove: {
        if (m_window->delegate->isWorking())
            pressStart();
        const QString name = hangs() ? struckName : removedName;
        if (!m_window->queue().contains(name))
            break;
        m_window->select(name);
        m_window->action(QStringLiteral("removeMenuItem"))->trigger();
        break;
    }
    case Move::Replace:
        if (m_window->delegate->isWorking())
            pressStart();
        m_window->alerts.answers = {0};
        openAll();
        m_window->alerts.answers.clear();
        pressStart();
        break;
    case Move::QuitAndLaunch:
        m_window->alerts.answers = {0};
        m_window->action(QStringLiteral("quitMenuItem"))->trigger();
        m_window->alerts.answers.clear();
        m_window->quit();
        checkAfterQuit();
        QFile::remove(begunPath()); // it went with the window
        launch();
        pressStart();
        break;
    case Move::ChooseDark:
        chooseDark();
        break;
    case Move::DeleteDark:
        m_window->widget<filmwright::CustomTextField>(QStringLiteral("darkTextField"))
            ->deleteButton()
            ->click();
        m_hasDark = false;
        break;
    }
}
