// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QMutex>
#include <QThread>
#include <QVariantList>

#include <functional>
#include <optional>

/// A service on the session bus as a test wants it: every call to it, at any path, is noted and
/// answered.
///
/// It lives on a connection and a thread of its own, so the code under test may wait for an answer.
class StandInService : private QDBusVirtualObject
{
public:
    /// The answer to a call, an error where there is none. Runs on the service's thread.
    using Answer =
        std::function<std::optional<QVariantList>(const QString &method, const QVariantList &)>;

    explicit StandInService(const QString &name, Answer answer = {});
    ~StandInService() override;

    /// Receives calls, but answers none.
    void fallSilent() { m_silent = true; }

    /// Returns when the service has dealt with all calls that came over the connection so far, and
    /// their answers have been delivered.
    void answerCalls(const QDBusConnection &connection) const;

    /// The methods called so far, with their arguments: "Inhibit(Filmwright, Working)".
    QStringList calls() const;
    /// The paths that they were called at.
    QStringList paths() const;
    /// The arguments of the last call.
    QVariantList lastArguments() const;
    /// Whether the connection that the last call came from still stands.
    bool lastCallerIsThere() const;

private:
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;
    QString introspect(const QString &) const override { return {}; }

    const QString m_name;
    const Answer m_answer;
    std::atomic<bool> m_silent = false;
    mutable QMutex m_mutex; // guards m_messages
    QList<QDBusMessage> m_messages;
    QDBusConnection m_bus;
    QThread m_thread;
};

/// The answer that grants everything with these values.
StandInService::Answer alwaysAnswers(const QVariantList &values);
