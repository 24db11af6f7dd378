// SPDX-License-Identifier: MIT
#pragma once

#include "support/toolfolder.h"

#include <QMap>
#include <QTemporaryDir>

/// Tools that behave, until a test replaces what one of them does, and a folder for what they need.
class FakeTools
{
public:
    /// mlv_dump reports, extracts and averages `frames` frames, dcraw writes TIFFs, ffmpeg a movie.
    explicit FakeTools(int frames);

    /// Replaces a block of the report: its header ("EXPO"), and the values of its lines, of which
    /// the first has number 1.
    void setBlock(const QString &header, const QMap<int, QString> &values);
    void setRawInformation(const QString &resolution, int bitsPerSample);
    void setRate(const QString &rate);
    /// Has mlv_dump do this before it prints its report; $recording is the recording.
    void setBeforeReport(const QString &script);
    /// Replaces what mlv_dump does for "--dng"; $prefix is the output prefix.
    void setExtraction(const QString &script);
    /// Replaces what mlv_dump does for "-a"; $recording is its input, $average its output.
    void setAveraging(const QString &script);
    /// Replaces what mlv_dump does for "-s"; $average is its output.
    void setSubstraction(const QString &script);
    /// Replaces what mlv_dump does to verify $recording.
    void setVerification(const QString &script);
    /// Replaces what dcraw does; $dng is its input, $tiff its output, $frame a whole TIFF.
    void setConversion(const QString &script);
    /// Replaces what ffmpeg does; $movie is its output, $film a whole movie.
    void setEncoding(const QString &script);
    /// Replaces what cr2hdr does; its arguments are the frames' names.
    void setBlending(const QString &script);

    /// A script that extracts so many frames, or surveys them and extracts a range.
    static QString extraction(int frames);
    /// A script that writes an average of so many frames.
    static QString averaging(int frames);

    /// A script that waits for release() of the same name; what follows stands on a line of its
    /// own.
    QString untilReleased(const QString &name = QStringLiteral("go")) const;
    void release(const QString &name = QStringLiteral("go")) const;

    QString path(const QString &name) const { return m_folder.filePath(name); }
    static void writeTiff(const QString &path, int width = 4);
    static void writeMovie(const QString &path, int frames);

    ToolFolder tools;

private:
    void writeMlvDump();

    QTemporaryDir m_folder;
    const int m_frames;
    QMap<QString, QMap<int, QString>> m_blocks;
    QString m_rate = QStringLiteral("25.0");
    QString m_beforeReport;
    QString m_extraction;
    QString m_averaging;
    QString m_substraction;
    QString m_verification;
};
