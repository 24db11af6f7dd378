// SPDX-License-Identifier: MIT
#include "desktop/desktopnotification.h"
#include "support/logcapture.h"
#include "support/standinservice.h"
#include "support/testprogram.h"

#include <QTest>

using namespace filmwright;

class TestDesktopNotification : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void titleAndTextAreShown();
    void textIsEscapedWhereItIsMarkup();
    void withoutAServiceALineSaysSo();

private:
    static StandInService::Answer capabilities(const QStringList &capabilities)
    {
        return [capabilities](const QString &method, const QVariantList &) -> QVariantList {
            if (method == QLatin1String("GetCapabilities"))
                return {capabilities};
            return {1U};
        };
    }

    const QString m_name = QStringLiteral("org.freedesktop.Notifications");
    const QString m_title = QStringLiteral("Batch finished");
    const QString m_text = QStringLiteral("a<b> & c.MLV");
};

void TestDesktopNotification::titleAndTextAreShown()
{
    const StandInService notifications(m_name, capabilities({QStringLiteral("body")}));
    showDesktopNotification(m_title, m_text);
    QTRY_COMPARE(notifications.calls().size(), 2);
    QCOMPARE(notifications.calls().first(), QStringLiteral("GetCapabilities()"));
    const QVariantList arguments = notifications.lastArguments();
    QCOMPARE(arguments.size(), 8);
    QCOMPARE(arguments.at(0).toString(), QStringLiteral("Filmwright"));
    QCOMPARE(arguments.at(1), QVariant(0U));
    QCOMPARE(arguments.at(2).toString(), QStringLiteral("org.filmwright.Filmwright"));
    QCOMPARE(arguments.at(3).toString(), m_title);
    QCOMPARE(arguments.at(4).toString(), m_text);
    QCOMPARE(arguments.at(5).toStringList(), QStringList());
    QCOMPARE(arguments.at(7), QVariant(-1));
    QCOMPARE(notifications.paths().last(), QStringLiteral("/org/freedesktop/Notifications"));
}

void TestDesktopNotification::textIsEscapedWhereItIsMarkup()
{
    const StandInService notifications(
        m_name, capabilities({QStringLiteral("body"), QStringLiteral("body-markup")}));
    showDesktopNotification(m_title, m_text);
    QTRY_COMPARE(notifications.calls().size(), 2);
    QCOMPARE(notifications.lastArguments().value(4).toString(),
             QStringLiteral("a&lt;b&gt; &amp; c.MLV"));
}

void TestDesktopNotification::withoutAServiceALineSaysSo()
{
    const LogCapture log;
    showDesktopNotification(m_title, m_text);
    QTRY_COMPARE(LogCapture::lines().size(), 1);
    QVERIFY(
        LogCapture::lines().first().startsWith(QStringLiteral("No notification can be shown: ")));
}

FILMWRIGHT_TEST(TestDesktopNotification, QCoreApplication)
#include "tst_desktopnotification.moc"
