// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QString>

namespace filmwright {

/// Announces named events of the whole process.
///
/// post() may be called on any thread; a receiver in another thread hears of it through its own
/// event loop.
class NotificationCenter : public QObject
{
    Q_OBJECT

public:
    static NotificationCenter &defaultCenter();

    void post(const QString &name, const QObject *sender) { Q_EMIT posted(name, sender); }

Q_SIGNALS:
    /// `sender` tells who posted; across threads it may be dead by now, so compare it, don't use
    /// it.
    void posted(const QString &name, const QObject *sender);

private:
    NotificationCenter() = default;
};

} // namespace filmwright
