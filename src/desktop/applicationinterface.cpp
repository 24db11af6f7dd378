// SPDX-License-Identifier: MIT
#include "desktop/applicationinterface.h"

#include "desktop/applicationservice.h"
#include "runner/systemlog.h"

#include <QTimer>
#include <QUrl>

namespace filmwright {

namespace {

QStringList localPaths(const QStringList &uris)
{
    QStringList paths;
    for (const QString &uri : uris) {
        const QUrl url(uri, QUrl::StrictMode);
        if (url.isLocalFile())
            paths << url.toLocalFile();
        else
            systemLog(QStringLiteral("Not a local file, left out: %1").arg(uri));
    }
    return paths;
}

/// Qt takes the token from the environment when a window asks to come to the front.
void noteActivationToken(const QVariantMap &platformData)
{
    const QString token = platformData.value(QStringLiteral("activation-token")).toString();
    if (!token.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
}

} // namespace

ApplicationInterface::ApplicationInterface(ApplicationService *service)
    : QDBusAbstractAdaptor(service)
    , m_service(service)
{
}

void ApplicationInterface::Activate(const QVariantMap &platformData)
{
    noteActivationToken(platformData);
    QTimer::singleShot(0, m_service, &ApplicationService::activated);
}

void ApplicationInterface::Open(const QStringList &uris, const QVariantMap &platformData)
{
    Activate(platformData);
    const QStringList paths = localPaths(uris);
    if (!paths.isEmpty())
        QTimer::singleShot(0, m_service, [this, paths] { Q_EMIT m_service->filesOpened(paths); });
}

void ApplicationInterface::ActivateAction(const QString &, const QVariantList &,
                                          const QVariantMap &platformData)
{
    Activate(platformData);
}

} // namespace filmwright

#include "moc_applicationinterface.cpp"
