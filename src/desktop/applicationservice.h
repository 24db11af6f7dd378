// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QStringList>

namespace filmwright {

/// The application on the session bus: owner of the application id, under which it offers
/// org.freedesktop.Application. So there is one window a session, and a second start, or the
/// desktop's file manager, hands its files to it.
///
/// Main thread only. Signals come from the event loop, never from inside a bus call, so that a
/// handler may show a dialog without keeping the caller waiting.
class ApplicationService : public QObject
{
    Q_OBJECT

public:
    explicit ApplicationService(QObject *parent = nullptr);
    ~ApplicationService() override;

    /// Takes the application id. False when another instance has it; true also without a session
    /// bus, where every instance stands alone. Connect to the signals first.
    [[nodiscard]] bool registerService();

    /// Hands the files to the instance that runs, which comes to the front; with no files, only
    /// that. False when none answers.
    [[nodiscard]] static bool handOver(const QStringList &paths);

Q_SIGNALS:
    /// The window is wanted in front. What the desktop gave for that is in the environment
    /// (XDG_ACTIVATION_TOKEN), where Qt looks for it.
    void activated();

    /// Absolute paths of local files and folders, in the order given.
    void filesOpened(const QStringList &paths);

private:
    bool m_registered = false;
};

} // namespace filmwright
