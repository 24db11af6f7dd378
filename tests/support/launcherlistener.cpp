// SPDX-License-Identifier: MIT
#include "support/launcherlistener.h"

#include <QDBusConnectionInterface>
#include <QTest>

LauncherListener::LauncherListener()
    : m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("launcher")))
{
    if (!m_bus.connect(QString(), QString(), QStringLiteral("com.canonical.Unity.LauncherEntry"),
                       QStringLiteral("Update"), this, SLOT(update(QString, QVariantMap))))
        QTest::qFail("no launcher can listen", __FILE__, __LINE__);
    m_bus.interface()->registeredServiceNames(); // which the bus answers once it has the match
}

LauncherListener::~LauncherListener()
{
    QDBusConnection::disconnectFromBus(m_bus.name());
}

void LauncherListener::update(const QString &application, const QVariantMap &properties)
{
    m_application = application;
    m_updates << QStringLiteral("%1 %2").arg(
        QString::number(properties.value(QStringLiteral("progress")).toDouble()),
        properties.value(QStringLiteral("progress-visible")).toBool() ? QStringLiteral("shown")
                                                                      : QStringLiteral("hidden"));
}

#include "moc_launcherlistener.cpp"
