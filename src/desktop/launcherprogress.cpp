// SPDX-License-Identifier: MIT
#include "desktop/launcherprogress.h"

#include "desktop/sessionbus.h"

#include <QDBusMessage>

namespace filmwright {

void showLauncherProgress(std::optional<double> part)
{
    QDBusConnection bus = sessionBus();
    if (!bus.isConnected())
        return;
    QDBusMessage update = QDBusMessage::createSignal(
        QStringLiteral("/org/filmwright/Filmwright"),
        QStringLiteral("com.canonical.Unity.LauncherEntry"), QStringLiteral("Update"));
    update << QStringLiteral("application://%1.desktop").arg(applicationId)
           << QVariantMap{{QStringLiteral("progress"), part.value_or(0.0)},
                          {QStringLiteral("progress-visible"), part.has_value()}};
    bus.send(update);
}

} // namespace filmwright
