// SPDX-License-Identifier: MIT
#include "flow/framepipe.h"

#include "flow/framewriter.h"

#include <array>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace filmwright {

namespace {

/// What an ordinary user may ask for: a fraction of a frame, but few changes between the processes.
constexpr int pipeSize = 1 << 20;

} // namespace

FramePipe::FramePipe(const Frames &frames)
{
    std::array<int, 2> ends{-1, -1};
    if (pipe2(ends.data(), O_CLOEXEC) == 0) {
        fcntl(ends[1], F_SETFL, O_NONBLOCK);
        fcntl(ends[1], F_SETPIPE_SZ, pipeSize);
    }
    m_readEnd = ends[0];
    m_writer = new FrameWriter(ends[1], frames);
    if (!m_writer->canBeCancelled())
        closeReadEnd();
    m_writer->moveToThread(&m_thread);
    connect(&m_thread, &QThread::started, m_writer, &FrameWriter::begin);
    connect(&m_thread, &QThread::finished, m_writer, &QObject::deleteLater);
    connect(this, &FramePipe::toBeWritten, m_writer, &FrameWriter::write);
    connect(this, &FramePipe::toBeClosed, m_writer, &FrameWriter::finish);
    connect(m_writer, &FrameWriter::taken, this, &FramePipe::taken);
    connect(m_writer, &FrameWriter::failed, this, &FramePipe::failed);
    connect(m_writer, &FrameWriter::closedByReader, this, &FramePipe::closedByReader);
    m_thread.start();
}

FramePipe::~FramePipe()
{
    m_writer->cancel();
    m_thread.quit();
    m_thread.wait();
    closeReadEnd();
}

void FramePipe::closeReadEnd()
{
    if (m_readEnd >= 0)
        close(std::exchange(m_readEnd, -1));
}

void FramePipe::write(const QString &dngPath)
{
    Q_EMIT toBeWritten(dngPath);
}

void FramePipe::finish()
{
    Q_EMIT toBeClosed();
}

} // namespace filmwright

#include "moc_framepipe.cpp"
