// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

/// A dock as it listens to the progress of applications, on a connection of its own.
class LauncherListener : public QObject
{
    Q_OBJECT

public:
    LauncherListener();
    ~LauncherListener() override;

    /// "0.25 shown", "0 hidden" of each update so far, in order.
    QStringList updates() const { return m_updates; }
    /// The application that the last one was about.
    QString application() const { return m_application; }

private Q_SLOTS:
    void update(const QString &application, const QVariantMap &properties);

private:
    QDBusConnection m_bus;
    QStringList m_updates;
    QString m_application;
};
