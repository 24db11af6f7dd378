// SPDX-License-Identifier: MIT
#include "flow/framewriter.h"

#include "conversion/dcrawarguments.h"
#include "conversion/mergebitmaps.h"

#include <QFile>
#include <QFileInfo>

#include <array>
#include <cerrno>
#include <csignal>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace filmwright {

FrameWriter::FrameWriter(int writeEnd, const FramePipe::Frames &frames)
    : m_writeEnd(writeEnd)
    , m_cancelEvent(eventfd(0, EFD_CLOEXEC))
    , m_frames(frames)
{
}

FrameWriter::~FrameWriter()
{
    closeEnd();
    if (m_cancelEvent >= 0)
        close(m_cancelEvent);
}

void FrameWriter::cancel()
{
    m_cancelled = true;
    eventfd_write(m_cancelEvent, 1);
}

/// A reader that is gone is told by the write that fails.
void FrameWriter::begin()
{
    sigset_t brokenPipe;
    sigemptyset(&brokenPipe);
    sigaddset(&brokenPipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &brokenPipe, nullptr);
}

void FrameWriter::write(const QString &dngPath)
{
    if (m_cancelled || m_writeEnd < 0)
        return;
    const QString tiff = tiffPathFor(dngPath);
    const bool isHalf = m_frames.mergesNeighbours && m_neighbour.isEmpty();
    const TiffBitmap picture = nextPicture(tiff);
    if (m_cancelled || (!isHalf && !writeAll(picture.bytes())))
        return;
    QFile::remove(tiff);
    QFile::remove(dngPath);
    Q_EMIT taken();
}

/// The frame, or what the one before it becomes with it.
TiffBitmap FrameWriter::nextPicture(const QString &tiff)
{
    TiffBitmap frame = TiffBitmap::read(tiff);
    const QString name = QFileInfo(tiff).fileName();
    if (frame.isEmpty()) {
        fail(QStringLiteral("the developed frame %1 can't be read").arg(name));
        return {};
    }
    if (frame.layout() != m_frames.layout) {
        fail(QStringLiteral("the developed frame %1 is of another kind than the first").arg(name));
        return {};
    }
    if (!m_frames.mergesNeighbours)
        return frame;
    TiffBitmap merged = std::exchange(m_neighbour, frame);
    const auto merge = m_frames.sixteenBits ? mergeDeepBitmaps : mergeBitmaps;
    if (!merged.isEmpty() && !merge(&merged, m_neighbour))
        fail(QStringLiteral("the developed frame %1 can't be merged").arg(name));
    return merged;
}

bool FrameWriter::writeAll(const QByteArray &bytes)
{
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t written =
            ::write(m_writeEnd, bytes.constData() + done, static_cast<size_t>(bytes.size() - done));
        if (written >= 0) {
            done += written;
        } else if (errno == EAGAIN) {
            if (!waitUntilWritable())
                return false;
        } else if (errno != EINTR) {
            closeEnd();
            Q_EMIT closedByReader();
            return false;
        }
    }
    return true;
}

bool FrameWriter::waitUntilWritable()
{
    std::array<pollfd, 2> ends{{{m_writeEnd, POLLOUT, 0}, {m_cancelEvent, POLLIN, 0}}};
    while (poll(ends.data(), ends.size(), -1) < 0 && errno == EINTR) {
    }
    return !m_cancelled;
}

void FrameWriter::finish()
{
    if (!m_cancelled)
        closeEnd();
}

void FrameWriter::closeEnd()
{
    if (m_writeEnd >= 0)
        close(std::exchange(m_writeEnd, -1));
}

/// The end stays open: a reader that saw it closed would take what it has for everything.
void FrameWriter::fail(const QString &error)
{
    m_cancelled = true;
    Q_EMIT failed(error);
}

} // namespace filmwright

#include "moc_framewriter.cpp"
