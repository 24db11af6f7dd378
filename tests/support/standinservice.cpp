// SPDX-License-Identifier: MIT
#include "support/standinservice.h"

#include "support/events.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QTest>

namespace {

const QString lastCall = QStringLiteral("LastCall");

QString asText(const QVariant &argument)
{
    return argument.canConvert<QStringList>() && argument.typeId() != QMetaType::QString
               ? QLatin1Char('[') + argument.toStringList().join(QLatin1String(", ")) +
                     QLatin1Char(']')
               : argument.toString();
}

QString asText(const QDBusMessage &call)
{
    QStringList arguments;
    for (const QVariant &argument : call.arguments())
        arguments << asText(argument);
    return QStringLiteral("%1(%2)").arg(call.member(), arguments.join(QLatin1String(", ")));
}

} // namespace

StandInService::StandInService(const QString &name, Answer answer)
    : m_name(name)
    , m_answer(std::move(answer))
    , m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus,
                                          QStringLiteral("stand-in ") + name))
{
    const bool known =
        m_bus.registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath);
    moveToThread(&m_thread);
    m_thread.start();
    if (!known || !m_bus.registerService(name))
        QTest::qFail("the stand-in can't be registered", __FILE__, __LINE__);
}

StandInService::~StandInService()
{
    m_bus.unregisterService(m_name);
    m_bus.unregisterObject(QStringLiteral("/"), QDBusConnection::UnregisterTree);
    QDBusConnection::disconnectFromBus(m_bus.name());
    m_thread.quit();
    m_thread.wait();
}

/// Neither calls nor answers overtake each other.
void StandInService::answerCalls(const QDBusConnection &connection) const
{
    const QDBusMessage last =
        QDBusMessage::createMethodCall(m_name, QStringLiteral("/"), {}, lastCall);
    QCOMPARE(connection.call(last).type(), QDBusMessage::ReplyMessage);
    deliverEvents();
}

QStringList StandInService::calls() const
{
    const QMutexLocker lock(&m_mutex);
    QStringList calls;
    for (const QDBusMessage &message : m_messages)
        calls << asText(message);
    return calls;
}

QStringList StandInService::paths() const
{
    const QMutexLocker lock(&m_mutex);
    QStringList paths;
    for (const QDBusMessage &message : m_messages)
        paths << message.path();
    return paths;
}

QVariantList StandInService::lastArguments() const
{
    const QMutexLocker lock(&m_mutex);
    return m_messages.isEmpty() ? QVariantList() : m_messages.last().arguments();
}

bool StandInService::lastCallerIsThere() const
{
    const QMutexLocker lock(&m_mutex);
    return !m_messages.isEmpty() &&
           m_bus.interface()->isServiceRegistered(m_messages.last().service());
}

bool StandInService::handleMessage(const QDBusMessage &message, const QDBusConnection &connection)
{
    if (message.member() == lastCall)
        return connection.send(message.createReply());
    {
        const QMutexLocker lock(&m_mutex);
        m_messages << message;
    }
    if (m_silent)
        return true;
    const std::optional<QVariantList> values =
        m_answer ? m_answer(message.member(), message.arguments()) : QVariantList();
    return connection.send(
        values ? message.createReply(*values)
               : message.createErrorReply(QDBusError::AccessDenied, QStringLiteral("denied")));
}

StandInService::Answer alwaysAnswers(const QVariantList &values)
{
    return [values](const QString &, const QVariantList &) { return values; };
}
