// SPDX-License-Identifier: MIT
#pragma once

#include "conversion/tiffbitmap.h"

#include <QObject>
#include <QThread>

namespace filmwright {

class FrameWriter;

/// Writes the samples of developed frames into a pipe, one frame after the other and nothing
/// between them, and removes the files of each frame that is written: the reader's pace is the pace
/// at which they go. Reading and writing are done in a thread of its own.
///
/// Main thread only, with an event loop for its signals.
class FramePipe : public QObject
{
    Q_OBJECT

public:
    /// What every frame has to be like, and what becomes of it.
    struct Frames
    {
        TiffBitmap::Layout layout;     ///< as in the files
        bool mergesNeighbours = false; ///< each frame but the last is merged with the next one
        bool sixteenBits = false;      ///< how they are merged
    };

    explicit FramePipe(const Frames &frames);
    /// Writes nothing more, closes the pipe and waits for the thread, which doesn't wait for the
    /// reader.
    ~FramePipe() override;

    /// The end that a child is given to read, -1 when there is no pipe; closed by the destructor or
    /// by closeReadEnd(), as whoever lets a child read does: the writer has to see it end.
    int readEnd() const { return m_readEnd; }
    void closeReadEnd();

    /// Has the TIFF of this DNG written behind the earlier ones; returns at once.
    void write(const QString &dngPath);
    /// Closes the pipe behind the last of them.
    void finish();

Q_SIGNALS:
    /// A frame doesn't take any room any more, in the order of the frames.
    void taken();
    /// A frame can't be used: a sentence. Nothing more is written.
    void failed(const QString &error);
    /// The reader has closed its end before everything was written. Nothing more is written.
    void closedByReader();

    // For the thread.
    void toBeWritten(const QString &dngPath);
    void toBeClosed();

private:
    int m_readEnd = -1;
    QThread m_thread;
    FrameWriter *m_writer; ///< lives in the thread and is deleted at its end
};

} // namespace filmwright
