// SPDX-License-Identifier: MIT
#include "desktop/applicationservice.h"

#include "desktop/applicationinterface.h"
#include "desktop/sessionbus.h"
#include "runner/systemlog.h"

#include <QDBusMessage>
#include <QFileInfo>
#include <QUrl>

#include <chrono>

namespace filmwright {

namespace {

using namespace std::chrono_literals;
/// How long a second start waits for the first, which may be busy reading a slow disk.
constexpr std::chrono::milliseconds activationPatience = 10s;

const QString objectPath = QStringLiteral("/org/filmwright/Filmwright");

QStringList absoluteUris(const QStringList &paths)
{
    QStringList uris;
    for (const QString &path : paths) {
        const QUrl url = QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath());
        uris << QString::fromLatin1(url.toEncoded(QUrl::FullyEncoded));
    }
    return uris;
}

/// What the desktop gave this start so that a window may come to the front.
QVariantMap startUpData()
{
    QVariantMap data;
    const QString activation = qEnvironmentVariable("XDG_ACTIVATION_TOKEN");
    if (!activation.isEmpty())
        data.insert(QStringLiteral("activation-token"), activation);
    const QString startUp = qEnvironmentVariable("DESKTOP_STARTUP_ID");
    if (!startUp.isEmpty())
        data.insert(QStringLiteral("desktop-startup-id"), startUp);
    return data;
}

} // namespace

ApplicationService::ApplicationService(QObject *parent)
    : QObject(parent)
{
    new ApplicationInterface(this);
}

ApplicationService::~ApplicationService()
{
    if (!m_registered)
        return;
    QDBusConnection bus = sessionBus();
    bus.unregisterService(applicationId);
    bus.unregisterObject(objectPath);
}

bool ApplicationService::registerService()
{
    QDBusConnection bus = sessionBus();
    if (!bus.isConnected())
        return true;
    // The object first: a call may come as soon as the name is there.
    bus.registerObject(objectPath, this);
    m_registered = bus.registerService(applicationId);
    if (!m_registered)
        bus.unregisterObject(objectPath);
    return m_registered;
}

bool ApplicationService::handOver(const QStringList &paths)
{
    QDBusMessage message = QDBusMessage::createMethodCall(
        applicationId, objectPath, QStringLiteral("org.freedesktop.Application"),
        paths.isEmpty() ? QStringLiteral("Activate") : QStringLiteral("Open"));
    message.setAutoStartService(false);
    if (!paths.isEmpty())
        message << absoluteUris(paths);
    message << startUpData();
    const QDBusMessage reply =
        sessionBus().call(message, QDBus::Block, static_cast<int>(activationPatience.count()));
    return reply.type() == QDBusMessage::ReplyMessage;
}

} // namespace filmwright

#include "moc_applicationservice.cpp"
