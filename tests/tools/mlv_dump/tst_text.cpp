// SPDX-License-Identifier: MIT
#include "mlv_dump/text.h"

#include "support/testprogram.h"

#include <QTest>

using mlvdump::harmless;

class TestText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void textOfARecordingBecomesHarmless_data();
    void textOfARecordingBecomesHarmless();
    void fieldEndsAtItsFirstNul();
    void fieldWithoutNulEndsWithItself();
};

void TestText::textOfARecordingBecomesHarmless_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("printed");
    const auto row = [](const char *name, QByteArray text, QByteArray printed) {
        QTest::newRow(name) << text << printed;
    };
    row("plain", "EF24-70mm f/2.8L", "EF24-70mm f/2.8L");
    row("end mark", "Well Done", "Well done");
    row("error mark", "[ERROR] x", "(ERROR) x");
    row("mark of an unusable recording", "[UNUSABLE] x", "(UNUSABLE) x");
    row("marks within marks", "[ERR[ERROR]OR] DDoneone", "[ERR(ERROR)OR] Ddoneone");
    row("marks that removal would join", "Do\x01ne [ERR\nOR]", "Do ne [ERR OR]");
    row("line ends", "a\nb\rc", "a b c");
    row("escape and delete", "a\x1b[2Jb\x7f", "a [2Jb ");
    row("trailing padding", QByteArray("abc\0\0", 5), "abc");
    row("NUL within", QByteArray("a\0b", 3), "a b");
    row("UTF-8", "Zürich 山 😀", "Zürich 山 😀");
    row("control character of two bytes", "a\xc2\x85z", "a z");
    row("lone continuation", "a\x80z", "a?z");
    row("cut off character", "a\xe5\xb1", "a??");
    row("overlong", "\xc0\xaf", "??");
    row("surrogate", "\xed\xa0\x80", "???");
    row("beyond Unicode", "\xf4\x90\x80\x80", "????");
    row("Latin-1", "Z\xfcrich", "Z?rich");
    row("format directives", "%s%n%%", "%s%n%%");
    row("empty", "", "");
}

void TestText::textOfARecordingBecomesHarmless()
{
    QFETCH(QByteArray, text);
    const auto printed =
        harmless(std::string_view(text.constData(), static_cast<std::size_t>(text.size())));
    QTEST(QByteArray::fromStdString(printed), "printed");
}

void TestText::fieldEndsAtItsFirstNul()
{
    QCOMPARE(harmless(std::array<char, 6>{'a', 'b', '\0', 'c', 'd', '\0'}), std::string("ab"));
}

void TestText::fieldWithoutNulEndsWithItself()
{
    QCOMPARE(harmless(std::array<char, 3>{'a', 'b', 'c'}), std::string("abc"));
}

FILMWRIGHT_TEST(TestText, QCoreApplication)
#include "tst_text.moc"
