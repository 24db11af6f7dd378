// SPDX-License-Identifier: MIT
#include "cli/progressdisplay.h"

#include "cli/exitstatus.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

namespace filmwright {

namespace {

QString text(const char *source)
{
    return QCoreApplication::translate("ProgressDisplay", source);
}

int terminalWidth()
{
    constexpr int usualWidth = 80;
    winsize size = {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col
                                                                           : usualWidth;
}

void write(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stderr);
    std::fflush(stderr);
}

QString minutesAndSeconds(double seconds)
{
    const auto whole = static_cast<quint64>(std::llround(seconds));
    return QStringLiteral("%1:%2").arg(whole / 60).arg(whole % 60, 2, 10, QLatin1Char('0'));
}

} // namespace

QString progressText(quint64 done, quint64 frames, double rate)
{
    QString progress = text("%1 of %2 frames").arg(done).arg(frames);
    if (rate > 0 && done <= frames) {
        progress += text(", %1 frames/s, %2 left")
                        .arg(QString::number(rate, 'f', 1),
                             minutesAndSeconds(static_cast<double>(frames - done) / rate));
    }
    return progress;
}

ProgressDisplay::ProgressDisplay(bool quiet)
    : m_quiet(quiet)
    , m_terminal(!quiet && isatty(STDERR_FILENO) == 1)
{
}

ProgressDisplay::~ProgressDisplay()
{
    clearLiveLine();
}

void ProgressDisplay::beginStage(const QString &name, const QString &stage, quint64 frames)
{
    m_label = printable(QStringLiteral("%1: %2").arg(name, stage));
    m_frames = frames;
    m_counting = false;
    if (m_terminal)
        showLiveLine(m_label);
    else if (!m_quiet)
        write((frames > 0 ? text("%1, %2 frames").arg(m_label).arg(frames) : m_label) +
              QLatin1Char('\n'));
}

void ProgressDisplay::setFramesDone(quint64 done)
{
    if (!m_terminal || m_frames == 0)
        return;
    if (!m_counting) {
        // What was there when the stage began has cost no time.
        m_counting = true;
        m_framesAtStart = done;
        m_stageTime.start();
    }
    const double seconds = static_cast<double>(m_stageTime.elapsed()) / 1000;
    const double rate =
        seconds > 0 ? static_cast<double>(done - std::min(m_framesAtStart, done)) / seconds : 0;
    showLiveLine(QStringLiteral("%1, %2").arg(m_label, progressText(done, m_frames, rate)));
}

void ProgressDisplay::tell(const QString &line)
{
    if (!m_quiet)
        warn(line);
}

void ProgressDisplay::warn(const QString &line)
{
    clearLiveLine();
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
