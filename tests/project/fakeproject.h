// SPDX-License-Identifier: MIT
#pragma once

#include "project/mlvprojectcontroller.h"
#include "support/toolfolder.h"

#include <QTemporaryDir>

/// A recording, fake tools that behave, and a log of what a project tells its delegate.
class FakeProject : public filmwright::MLVProjectControllerProtocol
{
public:
    /// mlv_dump reports and extracts `frames` frames, dcraw writes TIFFs, ffmpeg a movie.
    explicit FakeProject(int frames);
    ~FakeProject() override;

    /// Replaces what mlv_dump does for "--dng"; $prefix is the output prefix.
    void setExtraction(const QString &script);
    /// Replaces what dcraw does; $dng is its input, $tiff its output, $frame a whole TIFF.
    void setConversion(const QString &script);
    /// Replaces what ffmpeg does; $movie is its output, $film a whole movie.
    void setEncoding(const QString &script);

    /// Replaces what cr2hdr does; its arguments are the frames' names.
    void setBlending(const QString &script);

    /// Makes the report tell the frames' size; by default it doesn't. Before read().
    void setRawInformation(const QString &resolution, int bitsPerSample);

    /// A script that extracts so many frames, by default those of the recording.
    static QString extraction(int frames);

    /// Makes the project and reads the metadata.
    void read();
    /// What a batch run does with a project whose turn it is.
    void launch();

    QString path(const QString &name) const { return m_folder.filePath(name); }
    QString recording() const { return path(QStringLiteral("clip.MLV")); }
    QString movie() const { return path(QStringLiteral("clip.mov")); }
    QString frame(int number, const QString &extension) const;
    void writeTiff(const QString &path) const;
    static void writeMovie(const QString &path, int frames);

    void controllerUpdated(filmwright::MLVProjectController &controller) override;
    void imageRGBReceived(const QImage &image,
                          filmwright::MLVProjectController &forController) override;
    void controllerWorkFinished(filmwright::MLVProjectController &controller) override;
    void controllerWorkError(const QString &error) override;

    ToolFolder tools;
    std::unique_ptr<filmwright::MLVProjectController> controller;
    QStringList events; ///< modes as numbers, "image", "no image", "finished", "error …"

private:
    QTemporaryDir m_folder;
    const int m_frames;
    QString m_extraction;
    QString m_rawInformation;
};
