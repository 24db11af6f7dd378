// SPDX-License-Identifier: MIT
#include "app/recentdocuments.h"

#include "runner/userdefaults.h"

namespace filmwright {

namespace {

const QString key = QStringLiteral("RecentDocuments");
constexpr qsizetype longest = 10;

} // namespace

QStringList recentDocuments()
{
    return userDefaultsValueForKey(key).toStringList();
}

void noteNewRecentDocument(const QString &path)
{
    QStringList documents = recentDocuments();
    documents.removeAll(path);
    documents.prepend(path);
    setUserDefaultsValue(documents.mid(0, longest), key);
}

void clearRecentDocuments()
{
    setUserDefaultsValue({}, key);
}

} // namespace filmwright
