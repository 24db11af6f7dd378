// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusAbstractAdaptor>
#include <QStringList>
#include <QVariantMap>

namespace filmwright {

class ApplicationService;

/// org.freedesktop.Application as the bus sees it; turns its calls into the service's signals.
class ApplicationInterface : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit ApplicationInterface(ApplicationService *service);

public Q_SLOTS:
    // The names are the interface's.
    void Activate(const QVariantMap &platformData);
    void Open(const QStringList &uris, const QVariantMap &platformData);
    /// The desktop entry has no actions: an unknown one brings the window to the front.
    void ActivateAction(const QString &action, const QVariantList &parameter,
                        const QVariantMap &platformData);

private:
    ApplicationService *m_service;
};

} // namespace filmwright
