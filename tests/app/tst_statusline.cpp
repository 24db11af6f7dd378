// SPDX-License-Identifier: MIT
#include "app/statusline.h"

#include "support/testprogram.h"

#include <QAccessible>
#include <QTest>

using namespace filmwright;

class TestStatusLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sentenceComesBeforeTheName();
    void longNameTakesNoRoomFromTheSentence();
    void noteGivesWayToTheStatus();
    void screenReaderHearsTheText();
    void textIsNoMarkup();
};

void TestStatusLine::sentenceComesBeforeTheName()
{
    StatusLine line;
    line.setStatus(QStringLiteral("3 of 9"), QStringLiteral("a.MLV"));
    QCOMPARE(line.text(), QStringLiteral("3 of 9 – a.MLV"));
    QCOMPARE(line.toolTip(), line.text());
}

/// What is painted left of the name is the same however long the name is.
void TestStatusLine::longNameTakesNoRoomFromTheSentence()
{
    const QString sentence = QStringLiteral("3 of 9, 12 of 48 frames");
    StatusLine line;
    line.resize(400, 30);
    line.setStatus(sentence, QStringLiteral("a.MLV"));
    const int width = line.fontMetrics().horizontalAdvance(sentence);
    const QImage usual = line.grab({0, 0, width, 30}).toImage();
    line.setStatus(sentence, QString(145, QLatin1Char('x')) + QStringLiteral(".MLV"));
    QCOMPARE(line.grab({0, 0, width, 30}).toImage(), usual);
    QVERIFY(line.minimumSizeHint().width() < 10);
}

void TestStatusLine::noteGivesWayToTheStatus()
{
    StatusLine line;
    line.setNoteTime(std::chrono::milliseconds(1));
    line.setStatus(QStringLiteral("2 recordings in the queue"));
    line.tell(QStringLiteral("1 recording is in the queue already"));
    QCOMPARE(line.text(), QStringLiteral("1 recording is in the queue already"));
    line.setStatus(QStringLiteral("3 recordings in the queue"));
    QCOMPARE(line.text(), QStringLiteral("1 recording is in the queue already"));
    QTRY_COMPARE(line.text(), QStringLiteral("3 recordings in the queue"));
}

void TestStatusLine::screenReaderHearsTheText()
{
    StatusLine line;
    line.setStatus(QStringLiteral("3 of 9"), QStringLiteral("a.MLV"));
    QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(&line);
    QVERIFY(interface);
    QCOMPARE(interface->text(QAccessible::Name), QStringLiteral("3 of 9 – a.MLV"));
}

void TestStatusLine::textIsNoMarkup()
{
    StatusLine line;
    line.setStatus(QStringLiteral("reading"), QStringLiteral("<b>x</b>.MLV"));
    QCOMPARE(line.textFormat(), Qt::PlainText);
    QVERIFY(!line.toolTip().contains(QLatin1String("<b>")));
}

FILMWRIGHT_TEST(TestStatusLine, QApplication)
#include "tst_statusline.moc"
