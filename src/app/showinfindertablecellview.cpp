// SPDX-License-Identifier: MIT
#include "app/showinfindertablecellview.h"

#include "desktop/filereveal.h"
#include "project/mlvprojectcontroller.h"

#include <QHBoxLayout>
#include <QStyle>

namespace filmwright {

ShowInFinderTableCellView::ShowInFinderTableCellView(QWidget *parent)
    : QWidget(parent)
    , m_openButton(new QToolButton(this))
{
    m_openButton->setIcon(QIcon::fromTheme(QStringLiteral("folder-open"),
                                           style()->standardIcon(QStyle::SP_DirOpenIcon)));
    m_openButton->setAutoRaise(true);
    m_openButton->setToolTip(QStringLiteral("Show in the file browser"));
    m_openButton->setAccessibleName(QStringLiteral("Show in the file browser"));
    m_openButton->setFocusPolicy(Qt::NoFocus); // by keyboard: the command of the Recording menu
    connect(m_openButton, &QToolButton::clicked, this, &ShowInFinderTableCellView::openFile);
    auto *box = new QHBoxLayout(this);
    box->setContentsMargins(0, 0, 0, 0);
    box->addWidget(m_openButton, 0, Qt::AlignCenter);
}

void ShowInFinderTableCellView::openFile()
{
    if (m_controller)
        revealFile(m_controller->mlvPath(), this,
                   [this](const QString &error) { Q_EMIT notShown(error); });
}

} // namespace filmwright

#include "moc_showinfindertablecellview.cpp"
