// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QVariant>

namespace filmwright {

// The user's persistent preferences. Main thread only. Values are strings, numbers, booleans and
// dictionaries (QVariantMap) of those.

/// The value stored under the key, or an invalid QVariant when there is none.
QVariant userDefaultsValueForKey(const QString &key);

/// Stores the value under the key; it reaches the disk on the store's own schedule and at exit.
/// An invalid value removes the key.
void setUserDefaultsValue(const QVariant &value, const QString &forKey);

} // namespace filmwright
