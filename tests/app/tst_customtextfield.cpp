// SPDX-License-Identifier: MIT
#include "app/customtextfield.h"

#include "support/testprogram.h"

#include <QTest>

using namespace filmwright;

namespace {

/// Notes what the fields were when their buttons were pressed.
class Listener : public CustomTextFieldProtocol
{
public:
    void fieldDeleted(CustomTextField &field) override
    {
        fields << &field;
        texts << field.stringValue();
        buttonWasShown = buttonWasShown || field.deleteButton()->isVisible();
    }

    QList<CustomTextField *> fields;
    QStringList texts;
    bool buttonWasShown = false;
};

const QString fileName = QStringLiteral("dark.MLV");

} // namespace

class TestCustomTextField : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { m_field.reset(); }

    void buttonShowsWhileThereIsText();
    void typedTextShowsTheButton();
    void buttonEmptiesTheFieldAndTellsOnce();
    void emptyingByProgramTellsNobody();
    void nobodyNeedsToBeTold();
    void buttonIsInTheFieldAtAnySize();
    void keysEmptyAFieldThatIsNotTypedInto_data();
    void keysEmptyAFieldThatIsNotTypedInto();
    void keysEditAFieldThatIsTypedInto();

private:
    std::unique_ptr<CustomTextField> m_field;
    Listener m_listener;
};

void TestCustomTextField::init()
{
    m_listener = Listener();
    m_field = std::make_unique<CustomTextField>();
    m_field->setDeleteDelegate(&m_listener);
    m_field->show();
}

void TestCustomTextField::buttonShowsWhileThereIsText()
{
    QVERIFY(!m_field->deleteButton()->isVisible());
    m_field->setStringValue(fileName);
    QCOMPARE(m_field->stringValue(), fileName);
    QVERIFY(m_field->deleteButton()->isVisible());
    m_field->setStringValue(QString());
    QVERIFY(!m_field->deleteButton()->isVisible());
}

void TestCustomTextField::typedTextShowsTheButton()
{
    QTest::keyClicks(m_field.get(), QStringLiteral("a"));
    QVERIFY(m_field->deleteButton()->isVisible());
    QTest::keyClick(m_field.get(), Qt::Key_Backspace);
    QVERIFY(!m_field->deleteButton()->isVisible());
}

void TestCustomTextField::buttonEmptiesTheFieldAndTellsOnce()
{
    m_field->setStringValue(fileName);
    QTest::mouseClick(m_field->deleteButton(), Qt::LeftButton);
    QCOMPARE(m_field->stringValue(), QString());
    QVERIFY(!m_field->deleteButton()->isVisible());
    QCOMPARE(m_listener.fields, QList<CustomTextField *>{m_field.get()});
    QCOMPARE(m_listener.texts, QStringList{QString()}); // it was empty by then
    QVERIFY(!m_listener.buttonWasShown);
}

void TestCustomTextField::emptyingByProgramTellsNobody()
{
    m_field->setStringValue(fileName);
    m_field->setStringValue(QString());
    QVERIFY(m_listener.fields.isEmpty());
}

void TestCustomTextField::nobodyNeedsToBeTold()
{
    m_field->setDeleteDelegate(nullptr);
    QCOMPARE(m_field->deleteDelegate(), nullptr);
    m_field->setStringValue(fileName);
    QTest::mouseClick(m_field->deleteButton(), Qt::LeftButton);
    QCOMPARE(m_field->stringValue(), QString());
}

void TestCustomTextField::buttonIsInTheFieldAtAnySize()
{
    m_field->setStringValue(fileName);
    for (const QSize size : {QSize(200, 24), QSize(80, 24), QSize(400, 60)}) {
        m_field->resize(size);
        const QRect button = m_field->deleteButton()->geometry();
        QCOMPARE(button.size(), QSize(14, 14));
        QCOMPARE(button.x(), size.width() - 16);
        QVERIFY(m_field->rect().contains(button));
    }
}

void TestCustomTextField::keysEmptyAFieldThatIsNotTypedInto_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("Delete") << Qt::Key_Delete;
    QTest::newRow("Backspace") << Qt::Key_Backspace;
}

void TestCustomTextField::keysEmptyAFieldThatIsNotTypedInto()
{
    QFETCH(const Qt::Key, key);
    m_field->setReadOnly(true);
    QTest::keyClick(m_field.get(), key);
    QVERIFY(m_listener.fields.isEmpty());
    m_field->setStringValue(fileName);
    QTest::keyClicks(m_field.get(), QStringLiteral("x"));
    QCOMPARE(m_field->stringValue(), fileName);
    QTest::keyClick(m_field.get(), key);
    QCOMPARE(m_field->stringValue(), QString());
    QCOMPARE(m_listener.fields.size(), 1);
}

void TestCustomTextField::keysEditAFieldThatIsTypedInto()
{
    m_field->setStringValue(fileName);
    QTest::keyClick(m_field.get(), Qt::Key_Backspace);
    QCOMPARE(m_field->stringValue(), fileName.chopped(1));
    QVERIFY(m_listener.fields.isEmpty());
}

FILMWRIGHT_TEST(TestCustomTextField, QApplication)
#include "tst_customtextfield.moc"
