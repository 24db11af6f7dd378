// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace filmwright {

/// The text so that it is shown as it stands where Qt takes plain and rich text and tells them
/// apart by itself: what tools and recordings say is no markup.
QString shownAsItStands(const QString &text);

} // namespace filmwright
