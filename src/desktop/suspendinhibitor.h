// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusUnixFileDescriptor>
#include <QObject>
#include <QString>

#include <memory>

namespace filmwright {

/// Keeps the machine from suspending: by a block lock of the login manager (system bus), else by
/// the desktop portal (session bus); where there is neither, one log line says so.
///
/// Nothing waits for an answer. The inhibition ends with release(), with the inhibitor, or with the
/// process, however that ends. Main thread only; needs its event loop.
class SuspendInhibitor
{
public:
    SuspendInhibitor() = default;
    ~SuspendInhibitor();
    SuspendInhibitor(const SuspendInhibitor &) = delete;
    SuspendInhibitor &operator=(const SuspendInhibitor &) = delete;

    /// Asks for the inhibition; does nothing while one is asked for or held. The desktop may show
    /// the reason.
    void inhibit(const QString &reason);

    /// Gives it back, also when its answer is still to come.
    void release();

private:
    void askLoginManager(const QString &reason);
    void askPortal(const QString &reason);

    /// Lives while an inhibition is asked for or held; answers to an earlier one are not received.
    std::unique_ptr<QObject> m_request;
    QDBusUnixFileDescriptor m_lock;
    QString m_portalRequest;
};

} // namespace filmwright
