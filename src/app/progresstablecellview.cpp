// SPDX-License-Identifier: MIT
#include "app/progresstablecellview.h"

#include "app/progressindicator.h"

#include <QGridLayout>
#include <QStyle>

#include <utility>

namespace filmwright {

ProgressTableCellView::ProgressTableCellView(QWidget *parent)
    : QWidget(parent)
    , m_textField(new QLabel(this))
    , m_mark(new QLabel(this))
    , m_choices(new QLabel(this))
    , m_progressIndicator(new ProgressIndicator(this))
{
    m_mark->hide();
    m_choices->hide();
    m_choices->setTextFormat(Qt::PlainText);
    m_choices->setMinimumWidth(1);
    m_textField->setTextFormat(Qt::PlainText);
    m_textField->setMinimumWidth(1); // a narrow column cuts the text, it doesn't push the bar out
    m_progressIndicator->setAccessibleName(QStringLiteral("Progress of the recording"));
    m_progressIndicator->setFixedHeight(fontMetrics().height() * 2 / 3);

    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(6, 2, 6, 2);
    grid->setVerticalSpacing(2);
    grid->setHorizontalSpacing(0); // without a mark the text stands over the bar's beginning
    m_mark->setContentsMargins(0, 0, 4, 0);
    grid->setRowStretch(0, 1);
    grid->addWidget(m_mark, 1, 0);
    grid->addWidget(m_textField, 1, 1);
    grid->addWidget(m_progressIndicator, 2, 0, 1, 2);
    grid->addWidget(m_choices, 3, 1);
    grid->setRowStretch(4, 1);
    grid->setColumnStretch(1, 1);
}

void ProgressTableCellView::setChoices(const QStringList &choices)
{
    m_choices->setText(choices.join(QStringLiteral(", ")));
    m_choices->setVisible(!choices.isEmpty());
}

void ProgressTableCellView::setOutcome(bool movieWritten, const QString &error,
                                       const QString &notes)
{
    m_movieWritten = movieWritten;
    m_error = error;
    const bool failed = !error.isEmpty();
    const bool isNoted = !failed && !notes.isEmpty();
    const QStyle::StandardPixmap icon = failed    ? QStyle::SP_MessageBoxWarning
                                        : isNoted ? QStyle::SP_MessageBoxInformation
                                                  : QStyle::SP_DialogApplyButton;
    const QString description = failed ? error : notes;
    const bool isMarked = failed || movieWritten || isNoted;
    // Themes read icons from files; the view is asked for with every change of any row.
    if (isMarked && std::exchange(m_shownMark, icon) != icon) {
        const int size = style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, this);
        m_mark->setPixmap(style()->standardIcon(icon).pixmap(size, size));
    }
    m_mark->setAccessibleName(failed         ? QStringLiteral("Failed")
                              : movieWritten ? QStringLiteral("Movie written")
                                             : QStringLiteral("Note"));
    m_mark->setAccessibleDescription(description);
    m_mark->setVisible(isMarked);
    setToolTip(description.isEmpty() ? QString()
                                     : Qt::convertFromPlainText(description, Qt::WhiteSpaceNormal));
}

} // namespace filmwright

#include "moc_progresstablecellview.cpp"
