// SPDX-License-Identifier: MIT
#include "cli/progressdisplay.h"

#include "cli/exitstatus.h"

#include <QCoreApplication>
#include <QStringList>

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

} // namespace

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
    if (m_terminal)
        showLiveLine(m_label);
    else if (!m_quiet)
        write((frames > 0 ? text("%1, %2 frames").arg(m_label).arg(frames) : m_label) +
              QLatin1Char('\n'));
}

void ProgressDisplay::show(const Progress &progress)
{
    if (m_terminal && progress.frames > 0)
        showLiveLine(QStringLiteral("%1, %2").arg(m_label, progressText(progress)));
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
