// SPDX-License-Identifier: MIT
// The pictures in the queue's rows.
#include "app/appdelegate.h"
#include "app/previewpane.h"
#include "app/queuetableview.h"
#include "app/rowpictures.h"
#include "ui_mainwindow.h"
#include "ui_preferences.h"

#include <algorithm>

namespace filmwright {

namespace {

QColor placeholderColour(const QWidget &table)
{
    QColor colour = table.palette().color(QPalette::Text);
    colour.setAlphaF(0.08F);
    return colour;
}

} // namespace

void AppDelegate::connectPictures()
{
    m_pictures = std::make_unique<RowPictures>(m_ui->previewPane->frames());
    connect(m_ui->queueTableView, &QueueTableView::rowsInSightChanged, this,
            &AppDelegate::showPictures);
    connect(m_pictures.get(), &RowPictures::changed, this, [this](const QString &recording) {
        const auto found = std::find_if(
            m_projectList->cbegin(), m_projectList->cend(),
            [&recording](const auto &project) { return project->mlvPath() == recording; });
        if (found != m_projectList->cend()) {
            m_ui->queueTableView->updatePicture(
                rowOf(static_cast<std::size_t>(found - m_projectList->cbegin())));
        }
        showPictures(); // two paths of one recording are one picture for those who make it
    });
}

/// Those that are read and can be used.
void AppDelegate::showPictures()
{
    QStringList recordings;
    const auto [first, last] = m_ui->queueTableView->rowsInSight();
    for (int row = first; row <= last && m_prefUi->prefPicturesCheckBox->isChecked(); ++row) {
        const MLVProjectController &project = projectAtRow(row);
        if (project.videoFrames() > 0)
            recordings << project.mlvPath();
    }
    const double ratio = m_ui->queueTableView->devicePixelRatioF();
    const QSize size = (QSizeF(m_ui->queueTableView->iconSize()) * ratio).toSize();
    m_pictures->show(recordings, size, ratio);
}

/// Without a picture, a place for one keeps the texts in line.
QIcon AppDelegate::pictureForRow(int row) const
{
    if (!m_prefUi->prefPicturesCheckBox->isChecked())
        return {};
    const MLVProjectController &project = projectAtRow(row);
    QPixmap picture = m_pictures->pictureOf(project.mlvPath());
    if (picture.isNull()) {
        const bool isNone =
            m_pictures->isKnown(project.mlvPath()) || !project.unusableError().isEmpty();
        picture = QPixmap(m_ui->queueTableView->iconSize());
        picture.fill(isNone ? QColor(Qt::transparent) : placeholderColour(*m_ui->queueTableView));
    }
    QIcon icon(picture);
    icon.addPixmap(picture, QIcon::Selected); // without the selection's tint
    return icon;
}

} // namespace filmwright
