// SPDX-License-Identifier: MIT
#include "app/detailswindow.h"

#include <QClipboard>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QFormLayout>
#include <QGuiApplication>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace filmwright {

namespace {

constexpr int logLetters = 80;
constexpr int logLines = 12;

} // namespace

DetailsWindow::DetailsWindow(QWidget *parent)
    : QDialog(parent)
    , m_form(new QFormLayout)
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

    auto *box = new QVBoxLayout(this);
    box->addLayout(m_form);
    box->addWidget(m_log, 1);
    box->addWidget(buttons);
    resize(logLetters * metrics.averageCharWidth(), 2 * logLines * metrics.lineSpacing());
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
    while (m_form->rowCount() > 0)
        m_form->removeRow(0);
    for (const RecordingFact &fact : facts) {
        auto *value = new QLabel(fact.value);
        value->setTextFormat(Qt::PlainText);
        value->setWordWrap(true);
        value->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
        value->setAccessibleName(QStringLiteral("%1: %2").arg(fact.name, fact.value));
        m_form->addRow(fact.name + QLatin1Char(':'), value);
    }
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
