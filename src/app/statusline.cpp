// SPDX-License-Identifier: MIT
#include "app/statusline.h"

#include "app/plaintext.h"

#include <QPainter>
#include <QStyle>

namespace filmwright {

namespace {

/// As long as a sentence takes to be noticed and read.
constexpr auto usualNoteTime = std::chrono::seconds(8);

const QString beforeName = QStringLiteral(" – ");

} // namespace

StatusLine::StatusLine(QWidget *parent)
    : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    m_noteTime.setSingleShot(true);
    m_noteTime.setInterval(usualNoteTime);
    connect(&m_noteTime, &QTimer::timeout, this, [this] { show(m_sentence, m_name); });
}

void StatusLine::setStatus(const QString &sentence, const QString &name)
{
    m_sentence = sentence;
    m_name = name;
    if (!m_noteTime.isActive())
        show(sentence, name);
}

void StatusLine::tell(const QString &note)
{
    show(note, {});
    m_noteTime.start();
}

void StatusLine::show(const QString &sentence, const QString &name)
{
    m_shownName = name;
    const QString whole = name.isEmpty() ? sentence : sentence + beforeName + name;
    setText(whole);
    setToolTip(shownAsItStands(whole));
}

QSize StatusLine::minimumSizeHint() const
{
    return {0, QLabel::minimumSizeHint().height()};
}

void StatusLine::paintEvent(QPaintEvent *)
{
    const QFontMetrics metrics = fontMetrics();
    const QString sentence = text().chopped(m_shownName.size());
    const int room = contentsRect().width() - metrics.horizontalAdvance(sentence);
    const QString shown =
        metrics.elidedText(sentence + metrics.elidedText(m_shownName, Qt::ElideMiddle, room),
                           Qt::ElideRight, contentsRect().width());
    QPainter painter(this);
    style()->drawItemText(&painter, contentsRect(), Qt::AlignLeft | Qt::AlignVCenter, palette(),
                          isEnabled(), shown, foregroundRole());
}

} // namespace filmwright

#include "moc_statusline.cpp"
