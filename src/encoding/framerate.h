// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace filmwright {

/// Frames a second as a fraction, both parts above 0.
struct FrameRate
{
    qint64 numerator = 0;
    qint64 denominator = 1;

    bool operator==(const FrameRate &) const = default;
    /// "24000/1001", "25": as ffmpeg reads it.
    QString text() const;
    /// How many samples of so many a second last as long as the frames, to the nearest one.
    quint64 samplesOf(quint64 frames, quint32 sampleRate) const;
};

/// The rate that is meant: cameras record it to the thousandth. A whole number, or the 1000/1001 of
/// one, when the recorded rate is within 0.005 of it, the nearer of the two; else what was
/// recorded, to the thousandth. `framesPerSecond` is at least 0.005.
FrameRate exactRate(float framesPerSecond);

} // namespace filmwright
