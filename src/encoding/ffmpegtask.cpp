// SPDX-License-Identifier: MIT
#include "encoding/ffmpegtask.h"

#include "runner/resources.h"
#include "runner/workingfiles.h"

#include <QFile>
#include <QRegularExpression>

#include <algorithm>

namespace filmwright {

std::unique_ptr<FFmpegTask> FFmpegTask::ffmpegTask()
{
    auto task = std::make_unique<FFmpegTask>();
    task->setLaunchPath(resourcePath(ffmpegName));
    task->setTaskWrapperdelegate(task.get());
    return task;
}

FFmpegTask::~FFmpegTask()
{
    setTaskWrapperdelegate(nullptr);
}

QString FFmpegTask::moviePath() const
{
    if (!m_moviePath.isEmpty())
        return m_moviePath;
    return m_recipeMovie ? moviePathFor(m_mlvPath, m_recipeMovie->recipe)
                         : moviePathFor(m_mlvPath, m_format);
}

void FFmpegTask::buildMovie()
{
    const QString sound = m_tiffsDirectory + extractedSound;
    const MovieSources sources{m_tiffsDirectory, QFile::exists(sound) ? sound : QString(), m_fps,
                               m_rawVideo};
    // With no file in the way, ffmpeg has no reason to ask whether it may overwrite one.
    QFile::remove(moviePath());
    setArguments(m_recipeMovie ? recipeArguments(*m_recipeMovie, sources, moviePath())
                               : movieArguments(sources, m_format, m_quality, moviePath()));
    start();
}

void FFmpegTask::start()
{
    m_logs.clear();
    TaskWrapper::start();
}

bool FFmpegTask::startAndWaitUntilExit(bool wait)
{
    m_logs.clear();
    return TaskWrapper::startAndWaitUntilExit(wait);
}

quint64 FFmpegTask::encodedFrames() const
{
    static const QRegularExpression progress(QStringLiteral("^frame= *(\\d+)"));
    const auto tells = [](const QString &line) { return progress.match(line).hasMatch(); };
    const auto latest = std::find_if(m_logs.crbegin(), m_logs.crend(), tells);
    return latest == m_logs.crend() ? 0 : progress.match(*latest).captured(1).toULongLong();
}

QMap<QString, CapabilityList> FFmpegTask::readOptions()
{
    setArguments({QStringLiteral("-pix_fmts")});
    startAndWaitUntilExit(true);
    const CapabilityList pixFmts = validPixFmts();
    QMap<QString, CapabilityList> options = readEncoders();
    options[QStringLiteral("pix_fmts")] = pixFmts;
    return options;
}

QMap<QString, CapabilityList> FFmpegTask::readEncoders()
{
    setArguments({QStringLiteral("-encoders")});
    startAndWaitUntilExit(true);
    return {{QStringLiteral("video_encoders"), validVideoEncoders()},
            {QStringLiteral("audio_encoders"), validAudioEncoders()}};
}

QString FFmpegTask::recipeError(const Recipe &recipe, const QMap<QString, CapabilityList> &encoders)
{
    QString error = encoderError(encoders, recipe);
    if (!error.isEmpty() || recipe.pixelFormat().isEmpty())
        return error;
    setArguments({QStringLiteral("-hide_banner"), QStringLiteral("-h"),
                  QStringLiteral("encoder=") + recipe.videoEncoder()});
    startAndWaitUntilExit(true);
    return pixelFormatError(supportedPixFmtsIn(m_logs), recipe);
}

void FFmpegTask::receivedLine(const QString &line, TaskWrapper &)
{
    m_logs << line;
}

void FFmpegTask::taskWrapperTerminated()
{
    if (m_delegate && !isAborting())
        m_delegate->movieExtractionFinished(*this);
}

void FFmpegTask::aborted()
{
    QFile::remove(moviePath());
    if (m_delegate)
        m_delegate->movieExtractionAborted(*this);
}

} // namespace filmwright

#include "moc_ffmpegtask.cpp"
