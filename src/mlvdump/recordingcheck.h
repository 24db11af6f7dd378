// SPDX-License-Identifier: MIT
#pragma once

#include "runner/taskwrapper.h"

namespace filmwright {

/// What a check has found out about a recording.
struct CheckResult
{
    enum Verdict {
        Whole,
        Lossy,    ///< something of the recording is lost
        Unusable, ///< it can't be read
    };
    Verdict verdict = Unusable;
    quint64 frames = 0;  ///< those that are there
    QStringList losses;  ///< sentences
    QStringList remarks; ///< what a person should know, although nothing is lost: sentences
    QString error;       ///< why it can't be read; empty when it can

    /// Why it can't be read, and what is lost.
    QStringList errors() const;
    /// Everything that was found, the worst first.
    QStringList sentences() const { return errors() + remarks; }
};

/// Runs mlv_dump to find out what is wrong with a recording, without writing anything. One run at a
/// time; main thread only.
class RecordingCheck : public TaskWrapper,
                       public TaskWrapperDelegate,
                       public TaskWrapperLineReceiver
{
    Q_OBJECT

public:
    enum Depth {
        Survey,     ///< levels and colour matrix, by some of the frames: seconds at most
        Everything, ///< every byte is read, every frame decoded
    };

    RecordingCheck();
    ~RecordingCheck() override;

    /// Starts; an absolute path. Ends with ended(), unless it is aborted.
    void check(const QString &recording, Depth depth);

    /// Of the current or last run; whole only at its end.
    const CheckResult &result() const { return m_result; }
    quint64 bytesDone() const { return m_bytesDone; }
    quint64 bytes() const { return m_bytes; } ///< of the recording; 0 until it is known

    void receivedLine(const QString &line, TaskWrapper &taskWrapper) override;
    void aborted() override {}

Q_SIGNALS:
    /// bytesDone() has grown.
    void progressed();
    void ended();

protected:
    void taskWrapperTerminated() override;

private:
    void finish();

    CheckResult m_result;
    quint64 m_bytesDone = 0;
    quint64 m_bytes = 0;
    bool m_isComplete = false;
};

} // namespace filmwright
