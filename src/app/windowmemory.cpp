// SPDX-License-Identifier: MIT
#include "app/windowmemory.h"

#include "app/queuetableview.h"
#include "runner/userdefaults.h"
#include "ui_mainwindow.h"

#include <QScreen>

namespace filmwright {

namespace {

const QString windowKey = QStringLiteral("Window");
const QString geometryKey = QStringLiteral("Geometry");
const QString splitterKey = QStringLiteral("Splitter");
const QString columnsKey = QStringLiteral("Columns");
const QString formatKey = QStringLiteral("MovieFormat");
const QString qualityKey = QStringLiteral("MovieQuality");
const QString repairPixelsKey = QStringLiteral("RepairPixels");
const QString repairColumnsKey = QStringLiteral("RepairColumns");
const QString histogramKey = QStringLiteral("Histogram");
const QString movieFolderKey = QStringLiteral("MovieFolder");
const QString recipeKey = QStringLiteral("MovieRecipe");

} // namespace

QSize roomForWindow(const QWidget &window)
{
    const QSize bordersAndTitle(16, 48);
    return window.screen()->availableSize() - bordersAndTitle;
}

void WindowMemory::restore() const
{
    const QVariantMap stored = userDefaultsValueForKey(windowKey).toMap();
    m_window.resize(m_window.size().boundedTo(roomForWindow(m_window)));
    m_window.restoreGeometry(stored.value(geometryKey).toByteArray());
    m_ui.splitter->setSizes({5 * m_window.width() / 8, 3 * m_window.width() / 8});
    m_ui.splitter->setStretchFactor(0, 5);
    m_ui.splitter->setStretchFactor(1, 3);
    m_ui.splitter->restoreState(stored.value(splitterKey).toByteArray());
    m_ui.movieFormatPopUpButton->setCurrentIndex(stored.value(formatKey).toInt());
    m_ui.movieQualityPopUpButton->setCurrentIndex(stored.value(qualityKey).toInt());
    m_ui.repairPixelsCheckBox->setChecked(stored.value(repairPixelsKey).toBool());
    m_ui.repairColumnsCheckBox->setChecked(stored.value(repairColumnsKey).toBool());
    m_ui.histogramMenuItem->setChecked(stored.value(histogramKey).toBool());
    // One that is gone leaves the first item, none.
    m_ui.movieRecipePopUpButton->setCurrentIndex(
        qMax(0, m_ui.movieRecipePopUpButton->findData(stored.value(recipeKey).toString())));
    const int letter = m_window.fontMetrics().averageCharWidth();
    QList<int> widths;
    for (const int letters : {24, 22, 20, 22, 6})
        widths << letters * letter;
    QMap<int, int> chosen;
    const QVariantMap columns = stored.value(columnsKey).toMap();
    for (auto column = columns.cbegin(); column != columns.cend(); ++column)
        chosen.insert(column.key().toInt(), column.value().toInt());
    m_ui.queueTableView->setColumnWidths(widths, chosen);
}

void WindowMemory::save() const
{
    QVariantMap columns;
    const QMap<int, int> chosen = m_ui.queueTableView->chosenWidths();
    for (auto column = chosen.cbegin(); column != chosen.cend(); ++column)
        columns.insert(QString::number(column.key()), column.value());
    setUserDefaultsValue(
        QVariantMap{{geometryKey, m_window.saveGeometry()},
                    {splitterKey, m_ui.splitter->saveState()},
                    {columnsKey, columns},
                    {formatKey, m_ui.movieFormatPopUpButton->currentIndex()},
                    {qualityKey, m_ui.movieQualityPopUpButton->currentIndex()},
                    {repairPixelsKey, m_ui.repairPixelsCheckBox->isChecked()},
                    {repairColumnsKey, m_ui.repairColumnsCheckBox->isChecked()},
                    {histogramKey, m_ui.histogramMenuItem->isChecked()},
                    {recipeKey, m_ui.movieRecipePopUpButton->currentData().toString()}},
        windowKey);
}

QString WindowMemory::movieFolder()
{
    return userDefaultsValueForKey(movieFolderKey).toString();
}

void WindowMemory::setMovieFolder(const QString &folder)
{
    setUserDefaultsValue(folder.isEmpty() ? QVariant() : QVariant(folder), movieFolderKey);
}

} // namespace filmwright
