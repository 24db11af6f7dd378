// SPDX-License-Identifier: MIT
#include "app/progresstablecellview.h"

#include "app/progressindicator.h"

#include <QGridLayout>
#include <QStyle>

namespace filmwright {

ProgressTableCellView::ProgressTableCellView(QWidget *parent)
    : QWidget(parent)
    , m_textField(new QLabel(this))
    , m_failureMark(new QLabel(this))
    , m_progressIndicator(new ProgressIndicator(this))
{
    const int iconSize = style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, this);
    m_failureMark->setPixmap(
        style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(iconSize, iconSize));
    m_failureMark->setAccessibleName(tr("Failed"));
    m_failureMark->hide();
    m_textField->setTextFormat(Qt::PlainText);
    m_textField->setMinimumWidth(1); // a narrow column cuts the text, it doesn't push the bar out
    m_progressIndicator->setAccessibleName(tr("Progress of the recording"));
    m_progressIndicator->setFixedHeight(fontMetrics().height() * 2 / 3);

    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(6, 2, 6, 2);
    grid->setVerticalSpacing(4);
    grid->setRowStretch(0, 1);
    grid->addWidget(m_failureMark, 1, 0);
    grid->addWidget(m_textField, 1, 1);
    grid->addWidget(m_progressIndicator, 2, 0, 1, 2);
    grid->setRowStretch(3, 1);
    grid->setColumnStretch(1, 1);
}

void ProgressTableCellView::setFailure(const QString &failure)
{
    m_failure = failure;
    m_failureMark->setVisible(!failure.isEmpty());
    m_failureMark->setAccessibleDescription(failure);
    setToolTip(failure.isEmpty() ? QString()
                                 : Qt::convertFromPlainText(failure, Qt::WhiteSpaceNormal));
}

} // namespace filmwright
