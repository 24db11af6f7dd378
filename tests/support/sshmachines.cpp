// SPDX-License-Identifier: MIT
#include "support/sshmachines.h"
#include "support/programrun.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <pwd.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

const QString serverFolder = QStringLiteral("/run/sshd");

/// One that nobody listens at now; another program may still take it before sshd does.
quint16 freePort()
{
    const int descriptor = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto *generic = reinterpret_cast<sockaddr *>(&address);
    const bool isBound =
        bind(descriptor, generic, size) == 0 && getsockname(descriptor, generic, &size) == 0;
    close(descriptor);
    return isBound ? ntohs(address.sin_port) : quint16(0);
}

/// What a command that failed said last, or an empty string.
QString errorOf(const QString &program, const QStringList &arguments)
{
    const Ended ended = runProgram(program, arguments, {}, QProcess::MergedChannels);
    if (ended.status == 0)
        return {};
    if (QStandardPaths::findExecutable(program).isEmpty())
        return program + QStringLiteral(" isn't installed");
    const QString said = QString::fromLocal8Bit(ended.output).trimmed();
    return program + QStringLiteral(": ") + said.section(QLatin1Char('\n'), -1);
}

void write(const QString &path, const QStringList &lines)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(lines.join(QLatin1Char('\n')).toUtf8() + '\n');
}

} // namespace

SshMachines::SshMachines(const QStringList &environment)
{
    m_skipReason = makeKeys();
    if (m_skipReason.isEmpty()) {
        writeConfigurations(freePort(), environment);
        m_skipReason = start();
    }
}

SshMachines::~SshMachines()
{
    m_server.terminate();
    m_server.waitForFinished();
    if (m_madeServerFolder)
        QDir().rmdir(serverFolder);
}

QStringList SshMachines::ssh() const
{
    return {QStringLiteral("ssh"), QStringLiteral("-F"), path(QStringLiteral("ssh_config"))};
}

QString SshMachines::makeKeys() const
{
    for (const QString &name : {QStringLiteral("host"), QStringLiteral("user")}) {
        const QString error =
            errorOf(QStringLiteral("ssh-keygen"),
                    {QStringLiteral("-q"), QStringLiteral("-t"), QStringLiteral("ed25519"),
                     QStringLiteral("-N"), QString(), QStringLiteral("-f"), path(name)});
        if (!error.isEmpty())
            return error;
    }
    return {};
}

void SshMachines::writeConfigurations(quint16 port, const QStringList &environment) const
{
    const QString address = QStringLiteral("127.0.0.1");
    QFile hostKey(path(QStringLiteral("host.pub")));
    if (hostKey.open(QIODevice::ReadOnly)) {
        write(path(QStringLiteral("known_hosts")),
              {QStringLiteral("[%1]:%2 %3")
                   .arg(address)
                   .arg(port)
                   .arg(QString::fromLatin1(hostKey.readAll().trimmed()))});
    }
    write(path(QStringLiteral("sshd_config")),
          {QStringLiteral("ListenAddress %1:%2").arg(address).arg(port),
           QStringLiteral("HostKey ") + path(QStringLiteral("host")),
           QStringLiteral("AuthorizedKeysFile ") + path(QStringLiteral("user.pub")),
           QStringLiteral("PidFile none"), QStringLiteral("StrictModes no"),
           QStringLiteral("PasswordAuthentication no"),
           QStringLiteral("SetEnv ") + environment.join(QLatin1Char(' '))});
    write(path(QStringLiteral("ssh_config")),
          {QStringLiteral("Host one two"), QStringLiteral("HostName ") + address,
           QStringLiteral("Port %1").arg(port),
           QStringLiteral("User ") + QString::fromLocal8Bit(getpwuid(geteuid())->pw_name),
           QStringLiteral("IdentityFile ") + path(QStringLiteral("user")),
           QStringLiteral("IdentitiesOnly yes"), QStringLiteral("BatchMode yes"),
           QStringLiteral("UserKnownHostsFile ") + path(QStringLiteral("known_hosts")),
           QStringLiteral("ConnectionAttempts 20"), QStringLiteral("LogLevel ERROR")});
}

/// Connecting is tried again while sshd is not listening yet.
QString SshMachines::start()
{
    const QString program =
        QStandardPaths::findExecutable(QStringLiteral("sshd"), {QStringLiteral("/usr/sbin")});
    if (program.isEmpty())
        return QStringLiteral("sshd is not installed");
    m_madeServerFolder = geteuid() == 0 && QDir().mkdir(serverFolder);
    m_server.start(program,
                   {QStringLiteral("-D"), QStringLiteral("-e"), QStringLiteral("-f"),
                    path(QStringLiteral("sshd_config"))},
                   QIODevice::ReadOnly);
    const QStringList command = ssh() + QStringList{QStringLiteral("two"), QStringLiteral("true")};
    const QString error = errorOf(command.first(), command.mid(1));
    return error.isEmpty() ? QString()
                           : QStringLiteral("nobody can log in with sshd here: ") + error;
}
