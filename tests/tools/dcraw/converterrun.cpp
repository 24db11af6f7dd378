// SPDX-License-Identifier: MIT
#include "converterrun.h"

#include "toolrun.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTest>

namespace {

const QString dng = QStringLiteral("frame.dng");
const QString tiff = QStringLiteral("frame.tiff");

/// The words without addresses in memory, which the installed program prints and no two runs share.
QByteArray comparable(const QByteArray &messages)
{
    static const QRegularExpression address(QStringLiteral("0x[0-9a-f]{6,}"));
    return QString::fromLatin1(messages).replace(address, QStringLiteral("0x")).toLatin1();
}

} // namespace

bool ConverterRun::isLike(const ConverterRun &other) const
{
    return status == other.status && comparable(messages) == comparable(other.messages) &&
           hasTiff == other.hasTiff && tiff.size() == other.tiff.size();
}

ConverterFolder::ConverterFolder()
{
    QVERIFY(m_folder.isValid());
}

QString ConverterFolder::path(const QString &name) const
{
    return m_folder.filePath(name);
}

QString ConverterFolder::keep()
{
    m_folder.setAutoRemove(false);
    return m_folder.path();
}

void ConverterFolder::write(const QString &name, const QByteArray &content) const
{
    QFile file(path(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

QByteArray ConverterFolder::read(const QString &name) const
{
    QFile file(path(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString ConverterFolder::realProgram()
{
    return QStandardPaths::findExecutable(QStringLiteral("dcraw"));
}

ConverterRun ConverterFolder::runReal(const QStringList &arguments) const
{
    return run(realProgram(), arguments, qEnvironmentVariable("PATH"));
}

ConverterRun ConverterFolder::runOurs(const QStringList &arguments) const
{
    return run(builtProgram(QStringLiteral("dcraw")), arguments, qEnvironmentVariable("PATH"));
}

ConverterRun ConverterFolder::runOursAlone(const QStringList &arguments) const
{
    return run(builtProgram(QStringLiteral("dcraw")), arguments, path());
}

ConverterRun ConverterFolder::run(const QString &program, const QStringList &arguments,
                                  const QString &searchPath) const
{
    constexpr int timeLimit = 120000;
    QFile::remove(path(tiff));
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.setWorkingDirectory(m_folder.path());
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("PATH"), searchPath);
    environment.remove(QStringLiteral("FILMWRIGHT_DCRAW"));
    process.setProcessEnvironment(environment);
    process.start(program, QStringList(arguments) << dng);
    ConverterRun result;
    if (!process.waitForFinished(timeLimit))
        qFatal("%s does not end", qPrintable(program));
    result.status =
        process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -process.exitCode();
    result.messages = process.readAll();
    result.hasTiff = QFile::exists(path(tiff));
    result.tiff = read(tiff);
    return result;
}
