// SPDX-License-Identifier: MIT
#pragma once

#include "encoding/encodercapabilities.h"
#include "encoding/ffmpegarguments.h"
#include "encoding/recipemovie.h"
#include "runner/taskwrapper.h"

#include <optional>

namespace filmwright {

class FFmpegTask;

/// Who is told of the end of a movie build: exactly one of the two, on the main thread.
class FFmpegTaskProtocol
{
public:
    virtual ~FFmpegTaskProtocol() = default;

    /// ffmpeg ended, whatever its status.
    virtual void movieExtractionFinished(FFmpegTask &task) = 0;
    /// The run was aborted and the partial movie deleted.
    virtual void movieExtractionAborted(FFmpegTask &task) = 0;
};

/// Builds a movie beside the recording from its numbered TIFF frames and its sound, and tells what
/// ffmpeg can encode. One run at a time. Main thread only.
class FFmpegTask : public TaskWrapper, public TaskWrapperDelegate, public TaskWrapperLineReceiver
{
    Q_OBJECT

public:
    /// A task that is ready to run the bundled ffmpeg and listens to itself.
    static std::unique_ptr<FFmpegTask> ffmpegTask();

    FFmpegTask() = default;
    ~FFmpegTask() override;

    FFmpegTaskProtocol *delegate() const { return m_delegate; }
    void setDelegate(FFmpegTaskProtocol *delegate) { m_delegate = delegate; }

    /// The folder of the frames (tmp%06d.tiff) and the optional sound (tmp.wav); it must end with a
    /// path separator.
    QString tiffsDirectory() const { return m_tiffsDirectory; }
    void setTiffsDirectory(const QString &directory) { m_tiffsDirectory = directory; }
    QString mlvPath() const { return m_mlvPath; }
    void setMlvPath(const QString &path) { m_mlvPath = path; }
    float fps() const { return m_fps; }
    void setFps(float fps) { m_fps = fps; }
    qint32 format() const { return m_format; }
    void setFormat(qint32 format) { m_format = format; }
    qint32 quality() const { return m_quality; }
    void setQuality(qint32 quality) { m_quality = quality; }

    /// Has the movie made by a recipe, in place of format and quality; nothing: by those.
    void setRecipeMovie(const std::optional<RecipeMovie> &movie) { m_recipeMovie = movie; }

    /// Where the movie is written: beside the recording, unless a path is set.
    QString moviePath() const;
    void setMoviePath(const QString &path) { m_moviePath = path; }

    /// Has the movie of a recipe made of raw frames, which ffmpeg reads from its standard input;
    /// nothing: of the TIFFs.
    void setRawVideo(const std::optional<RawVideo> &video) { m_rawVideo = video; }

    /// Replaces any file at moviePath() by the movie; returns at once. A missing sound file gives a
    /// movie without sound.
    void buildMovie();

    void start() override;
    bool startAndWaitUntilExit(bool wait) override;

    /// Every line that ffmpeg printed since the last start.
    QStringList logs() const { return m_logs; }

    /// The frames that the running build says it has encoded; 0 until it says so.
    quint64 encodedFrames() const;

    /// Asks ffmpeg for its lists "pix_fmts", "video_encoders" and "audio_encoders"; blocks until it
    /// has answered. A list that can't be had is empty. Not during a movie build.
    QMap<QString, CapabilityList> readOptions();
    /// Only the last two of those lists.
    QMap<QString, CapabilityList> readEncoders();

    /// What ffmpeg lacks for movies by the recipe, going by those lists of encoders and by what the
    /// recipe's own tells of itself: a sentence, or an empty string. Blocks; not during a movie
    /// build.
    QString recipeError(const Recipe &recipe, const QMap<QString, CapabilityList> &encoders);
    QString recipeError(const Recipe &recipe) { return recipeError(recipe, readEncoders()); }

    CapabilityList validPixFmts() const { return pixFmtsIn(m_logs); }
    CapabilityList validVideoEncoders() const { return videoEncodersIn(m_logs); }
    CapabilityList validAudioEncoders() const { return audioEncodersIn(m_logs); }

    void receivedLine(const QString &line, TaskWrapper &taskWrapper) override;
    void aborted() override;

protected:
    void taskWrapperTerminated() override;

private:
    FFmpegTaskProtocol *m_delegate = nullptr;
    QString m_tiffsDirectory;
    QString m_mlvPath;
    QString m_moviePath;
    float m_fps = 0;
    qint32 m_format = MovieFormatAVI;
    qint32 m_quality = MovieQualityMaximum;
    std::optional<RecipeMovie> m_recipeMovie;
    std::optional<RawVideo> m_rawVideo;
    QStringList m_logs;
};

} // namespace filmwright
