// SPDX-License-Identifier: MIT
#include "encoding/ffmpegtask.h"

#include "runner/resources.h"

#include <QFile>
#include <QRegularExpression>

#include <algorithm>

namespace filmwright {

std::unique_ptr<FFmpegTask> FFmpegTask::ffmpegTask()
{
    auto task = std::make_unique<FFmpegTask>();
    task->setLaunchPath(resourcePath(QStringLiteral("ffmpeg")));
    task->setTaskWrapperdelegate(task.get());
    return task;
}

FFmpegTask::~FFmpegTask()
{
    setTaskWrapperdelegate(nullptr);
}

void FFmpegTask::buildMovie()
{
    const QString sound = m_tiffsDirectory + QStringLiteral("tmp.wav");
    const MovieSources sources{m_tiffsDirectory, QFile::exists(sound) ? sound : QString(), m_fps};
    // With no file in the way, ffmpeg has no reason to ask whether it may overwrite one.
    QFile::remove(moviePath());
    setArguments(movieArguments(sources, m_format, m_quality, moviePath()));
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
    QMap<QString, CapabilityList> options;
    setArguments({QStringLiteral("-pix_fmts")});
    startAndWaitUntilExit(true);
    options[QStringLiteral("pix_fmts")] = validPixFmts();
    setArguments({QStringLiteral("-encoders")});
    startAndWaitUntilExit(true);
    options[QStringLiteral("video_encoders")] = validVideoEncoders();
    options[QStringLiteral("audio_encoders")] = validAudioEncoders();
    return options;
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
