// SPDX-License-Identifier: MIT
#include "app/detailswindow.h"

#include "app/windowmemory.h"

#include <QClipboard>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QFormLayout>
#include <QGuiApplication>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

namespace filmwright {

namespace {

constexpr int logLetters = 80;
constexpr int logLines = 12;

} // namespace

DetailsWindow::DetailsWindow(QWidget *parent)
    : QDialog(parent)
    , m_factsArea(new QScrollArea(this))
    , m_log(new QPlainTextEdit(this))
{
    setObjectName(QStringLiteral("detailsWindow"));
    setWindowTitle(QStringLiteral("Details"));
    m_log->setObjectName(QStringLiteral("detailsLog"));
    m_log->setAccessibleName(QStringLiteral("What the tools said"));
    m_log->setReadOnly(true);
    m_log->setTabChangesFocus(true);
    m_log->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_log->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_log->setPlaceholderText(QStringLiteral("The tools have said nothing yet."));
    const QFontMetrics metrics(m_log->font());
    m_log->setMinimumSize(logLetters / 2 * metrics.averageCharWidth(), 4 * metrics.lineSpacing());

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    const QPushButton *copyButton =
        buttons->addButton(QStringLiteral("&Copy All"), QDialogButtonBox::ActionRole);
    connect(copyButton, &QPushButton::clicked, this, &DetailsWindow::copy);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    // The log gets what the facts leave; on a low screen these are scrolled, so that the buttons
    // stay on it.
    m_log->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
    m_factsArea->setAccessibleName(QStringLiteral("What is known of the recording"));
    m_factsArea->setWidgetResizable(true);
    m_factsArea->setFrameShape(QFrame::NoFrame);
    m_factsArea->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);

    auto *box = new QVBoxLayout(this);
    box->addWidget(m_factsArea);
    box->addWidget(m_log, 1);
    box->addWidget(buttons);
    resize(QSize(logLetters * metrics.averageCharWidth(), 2 * logLines * metrics.lineSpacing())
               .boundedTo(roomForWindow(*this)));
}

void DetailsWindow::showRecording(const QString &name, const QList<RecordingFact> &facts,
                                  const QStringList &log)
{
    const QString text = log.join(QLatin1Char('\n'));
    if (text != m_log->toPlainText())
        m_log->setPlainText(text);
    if (name == m_name && facts == m_facts)
        return;
    m_name = name;
    m_facts = facts;
    setWindowTitle(name);
    auto *content = new QWidget;
    auto *form = new QFormLayout(content);
    form->setContentsMargins({});
    for (const RecordingFact &fact : facts) {
        auto *value = new QLabel(fact.value);
        value->setTextFormat(Qt::PlainText);
        value->setWordWrap(true);
        value->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
        value->setAccessibleName(QStringLiteral("%1: %2").arg(fact.name, fact.value));
        form->addRow(fact.name + QLatin1Char(':'), value);
    }
    m_factsArea->setWidget(content); // in place of the last one
    const int width = rect().marginsRemoved(layout()->contentsMargins()).width();
    m_factsArea->setMaximumHeight(content->heightForWidth(width));
    m_factsArea->updateGeometry(); // which setWidget() leaves to others
}

QString DetailsWindow::wholeText() const
{
    QStringList lines{m_name};
    for (const RecordingFact &fact : m_facts)
        lines << QStringLiteral("%1: %2").arg(fact.name, fact.value);
    if (const QString log = m_log->toPlainText(); !log.isEmpty())
        lines << QString() << log;
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

void DetailsWindow::copy() const
{
    QGuiApplication::clipboard()->setText(wholeText());
}

} // namespace filmwright

#include "moc_detailswindow.cpp"
