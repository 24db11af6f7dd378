// SPDX-License-Identifier: MIT
#include "app/recentdocuments.h"

#include "runner/userdefaults.h"

namespace filmwright {

namespace {

const QString key = QStringLiteral("RecentDocuments");
constexpr qsizetype longest = 10;

} // namespace

void RecentDocuments::restore()
{
    m_paths = userDefaultsValueForKey(key).toStringList();
}

void RecentDocuments::save() const
{
    setUserDefaultsValue(m_paths.isEmpty() ? QVariant() : QVariant(m_paths), key);
}

void RecentDocuments::noteNewRecentDocument(const QString &path)
{
    m_paths.removeAll(path);
    m_paths.prepend(path);
    m_paths = m_paths.mid(0, longest);
}

} // namespace filmwright
