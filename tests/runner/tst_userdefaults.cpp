// SPDX-License-Identifier: MIT
#include "runner/userdefaults.h"

#include "support/testprogram.h"

#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

using namespace filmwright;

class TestUserDefaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_folder.path());
    }

    void absentKeyGivesNone()
    {
        QVERIFY(!userDefaultsValueForKey(QStringLiteral("NoSuchKey")).isValid());
    }

    void writtenValueIsReadBack_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::newRow("boolean") << QVariant(true);
        QTest::newRow("text") << QVariant(QStringLiteral("/data/work; with, signs=%"));
        QTest::newRow("dictionary") << QVariant(
            QVariantMap{{QStringLiteral("TemporaryDirectory"), QStringLiteral("/data/work")}});
    }

    void writtenValueIsReadBack()
    {
        QFETCH(QVariant, value);
        setUserDefaultsValue(value, QStringLiteral("Key"));
        const QVariant read = userDefaultsValueForKey(QStringLiteral("Key"));
        if (value.typeId() == QMetaType::Bool)
            QCOMPARE(read.toBool(), value.toBool());
        else
            QCOMPARE(read, value);
    }

    void storingNoneRemovesTheKey()
    {
        setUserDefaultsValue(1, QStringLiteral("Key"));
        setUserDefaultsValue(QVariant(), QStringLiteral("Key"));
        QVERIFY(!userDefaultsValueForKey(QStringLiteral("Key")).isValid());
    }

private:
    QTemporaryDir m_folder;
};

FILMWRIGHT_TEST(TestUserDefaults, QCoreApplication)
#include "tst_userdefaults.moc"
