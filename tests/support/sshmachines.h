// SPDX-License-Identifier: MIT
#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// This machine twice, as "one" and "two": a real sshd of the running user's on the loopback
/// address, with keys of its own. Nothing of the user's or the machine's ssh is read or changed,
/// but for the folder /run/sshd, which sshd wants of an administrator and which is removed again if
/// it was made.
class SshMachines
{
public:
    /// `environment` is what a login gets besides its own, as NAME=value.
    explicit SshMachines(const QStringList &environment);
    ~SshMachines();
    SshMachines(const SshMachines &) = delete;
    SshMachines &operator=(const SshMachines &) = delete;

    /// Why nobody can log in here, empty when one can: found by doing it.
    QString skipReason() const { return m_skipReason; }
    /// The command that reaches them, before the machine's name.
    QStringList ssh() const;

private:
    QString path(const QString &name) const { return m_folder.filePath(name); }
    QString makeKeys() const;
    void writeConfigurations(quint16 port, const QStringList &environment) const;
    QString start();

    QTemporaryDir m_folder;
    QProcess m_server;
    QString m_skipReason;
    bool m_madeServerFolder = false;
};
