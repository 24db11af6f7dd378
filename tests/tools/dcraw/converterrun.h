// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// The options that frames of movies are developed with.
inline const QStringList movieArguments =
    QStringLiteral("-H 3 -q 3 -w -W -T -b 4.000000").split(QLatin1Char(' '));

/// What a call of dcraw left behind.
struct ConverterRun
{
    int status = -1;     ///< or minus the signal that ended it
    QByteArray messages; ///< on both channels
    QByteArray tiff;     ///< frame.tiff; empty when there is none
    bool hasTiff = false;

    bool operator==(const ConverterRun &) const = default;
    /// The same but for the pixels, and for addresses in memory among the words.
    bool isLike(const ConverterRun &other) const;
};

/// A folder with frame.dng, in which dcraw runs.
class ConverterFolder
{
public:
    ConverterFolder();

    void write(const QString &name, const QByteArray &content) const;
    QByteArray read(const QString &name) const;
    QString path(const QString &name = {}) const;
    /// Leaves the folder, to be looked at after the test, and answers its path.
    QString keep();

    /// The installed dcraw, frame.dng behind the arguments. An older frame.tiff is removed before.
    ConverterRun runReal(const QStringList &arguments) const;
    /// Ours in the same way.
    ConverterRun runOurs(const QStringList &arguments) const;
    /// Ours where there is no other.
    ConverterRun runOursAlone(const QStringList &arguments) const;

    /// The installed dcraw's path.
    static QString realProgram();

private:
    ConverterRun run(const QString &program, const QStringList &arguments,
                     const QString &searchPath) const;

    QTemporaryDir m_folder;
};
