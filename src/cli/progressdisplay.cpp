// SPDX-License-Identifier: MIT
#include "cli/progressdisplay.h"

#include "cli/exitstatus.h"
#include "cli/progressjson.h"

#include <QFileInfo>
#include <QStringList>

#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

namespace filmwright {

namespace {

int terminalWidth()
{
    constexpr int usualWidth = 80;
    winsize size = {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col
                                                                           : usualWidth;
}

void write(const QByteArray &bytes)
{
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stderr);
    std::fflush(stderr);
}

void write(const QString &text)
{
    write(text.toUtf8());
}

} // namespace

ProgressDisplay::ProgressDisplay(bool quiet, ProgressStyle style)
    : m_quiet(quiet)
    , m_style(style)
    , m_terminal(!quiet && style == ProgressStyle::ForPeople && isatty(STDERR_FILENO) == 1)
{
}

ProgressDisplay::~ProgressDisplay()
{
    clearLiveLine();
}

void ProgressDisplay::beginStage(const QString &recording, const QString &stage, quint64 frames)
{
    m_recording = recording;
    m_stage = stage;
    m_label = printable(QStringLiteral("%1: %2").arg(QFileInfo(recording).fileName(), stage));
    if (m_quiet)
        return;
    if (m_terminal)
        showLiveLine(m_label);
    else if (m_style == ProgressStyle::ForPeople)
        write((frames > 0 ? QStringLiteral("%1, %2 frames").arg(m_label).arg(frames) : m_label) +
              QLatin1Char('\n'));
    else if (frames == 0) // a counted stage is shown at once, with its figures
        write(progressJson(recording, stage, {}));
}

void ProgressDisplay::show(const Progress &progress)
{
    if (m_quiet || progress.frames == 0)
        return;
    if (m_style == ProgressStyle::Json)
        write(progressJson(m_recording, m_stage, progress));
    else if (m_terminal)
        showLiveLine(QStringLiteral("%1, %2").arg(m_label, progressText(progress)));
}

void ProgressDisplay::showText(const QString &text)
{
    if (m_terminal)
        showLiveLine(QStringLiteral("%1, %2").arg(m_label, text));
}

void ProgressDisplay::finished(const QString &recording, const QString &movie)
{
    if (m_style == ProgressStyle::ForPeople)
        tell(QStringLiteral("%1: finished").arg(QFileInfo(movie).fileName()));
    else if (!m_quiet)
        write(finishedJson(recording, movie));
}

void ProgressDisplay::skipped(const QString &recording, const QString &movie)
{
    if (m_style == ProgressStyle::ForPeople)
        tell(QStringLiteral("%1: skipped, it is there already").arg(QFileInfo(movie).fileName()));
    else if (!m_quiet)
        write(skippedJson(recording, movie));
}

void ProgressDisplay::failed(const QString &recording, const QString &error)
{
    if (m_style == ProgressStyle::Json)
        write(failedJson(recording, error));
    else
        warn(QStringLiteral("%1: failed: %2").arg(QFileInfo(recording).fileName(), error));
}

void ProgressDisplay::tell(const QString &line)
{
    if (!m_quiet)
        warn(line);
}

void ProgressDisplay::warn(const QString &line)
{
    clearLiveLine();
    if (m_style == ProgressStyle::Json)
        write(messageJson(line));
    else
        write(printable(line) + QLatin1Char('\n'));
}

void ProgressDisplay::clearLiveLine()
{
    if (m_liveLineShown)
        write(QStringLiteral("\r\033[K"));
    m_liveLineShown = false;
}

void ProgressDisplay::showLiveLine(const QString &text)
{
    write(QStringLiteral("\r\033[K") + text.left(terminalWidth() - 1));
    m_liveLineShown = true;
}

} // namespace filmwright
