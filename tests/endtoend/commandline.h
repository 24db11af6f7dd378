// SPDX-License-Identifier: MIT
#pragma once

#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

inline const QString convert = QStringLiteral("convert");
inline const QString asJson = QStringLiteral("--json");
inline const QString mlvDump = QStringLiteral("mlv_dump");

/// One run of filmwright-cli in a temporary folder of its own.
class CommandLine
{
public:
    CommandLine();

    /// Runs to the end; false when it doesn't come to one within two minutes.
    bool run(const QStringList &arguments);

    void start(const QStringList &arguments);
    bool waitForEnd();
    /// Waits until the run has printed the text on standard error.
    bool waitForMessage(const QString &text);
    void sendSignal(int signal);

    int status() const { return m_process.exitCode(); }
    bool wasKilled() const { return m_process.exitStatus() == QProcess::CrashExit; }
    QStringList output() const { return lines(m_output); }
    /// What was printed on standard error, up to the table at the end.
    QStringList messages() const { return lines(m_messages.left(tableStart())); }
    /// The table at the end of `convert`, its heading first; empty when there was none.
    QStringList table() const { return lines(m_messages.mid(tableStart())); }

    /// What is in the per-user temporary folder.
    QStringList temporaryEntries() const;

    /// The program itself, and the environment of later runs.
    QString program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();

private:
    static QStringList lines(const QByteArray &text);
    void readAll();
    qsizetype tableStart() const;

    QTemporaryDir m_temporaryFolder;
    QProcess m_process;
    QByteArray m_output;
    QByteArray m_messages;
};
