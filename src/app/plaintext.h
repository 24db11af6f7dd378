// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

namespace filmwright {

/// The text so that it is shown as it stands where Qt takes plain and rich text and tells them
/// apart by itself: what tools and recordings say is no markup.
QString shownAsItStands(const QString &text);

/// As many lines as an alert or a tooltip has room for on any screen, the last one telling how many
/// are left out.
QStringList shortened(QStringList lines);

} // namespace filmwright
