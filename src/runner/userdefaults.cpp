// SPDX-License-Identifier: MIT
#include "runner/userdefaults.h"

#include <QSettings>

namespace filmwright {

namespace {

QSettings userDefaults()
{
    return QSettings(QStringLiteral("Filmwright"), QStringLiteral("Filmwright"));
}

} // namespace

QVariant userDefaultsValueForKey(const QString &key)
{
    return userDefaults().value(key);
}

void setUserDefaultsValue(const QVariant &value, const QString &forKey)
{
    auto defaults = userDefaults();
    if (value.isValid())
        defaults.setValue(forKey, value);
    else
        defaults.remove(forKey);
}

} // namespace filmwright
