// SPDX-License-Identifier: MIT
#pragma once

#include "flow/framepipe.h"

#include <atomic>

namespace filmwright {

/// The half of a FramePipe that works in its thread.
class FrameWriter : public QObject
{
    Q_OBJECT

public:
    /// The end to be written to becomes its own, -1 for none; it must not block.
    FrameWriter(int writeEnd, const FramePipe::Frames &frames);
    ~FrameWriter() override;

    bool canBeCancelled() const { return m_cancelEvent >= 0; }
    /// Makes a write() that waits for the reader return, and each that follows. Any thread.
    void cancel();

    // In the thread of the pipe.
    void begin();
    void write(const QString &dngPath);
    void finish();

Q_SIGNALS:
    void taken();
    void failed(const QString &error);
    void closedByReader();

private:
    TiffBitmap nextPicture(const QString &tiff);
    [[nodiscard]] bool writeAll(const QByteArray &bytes);
    [[nodiscard]] bool waitUntilWritable();
    void closeEnd();
    void fail(const QString &error);

    int m_writeEnd;
    int m_cancelEvent; ///< readable once the work is cancelled
    const FramePipe::Frames m_frames;
    TiffBitmap m_neighbour; ///< the frame that waits to be merged with the next one
    std::atomic<bool> m_cancelled = false;
};

} // namespace filmwright
