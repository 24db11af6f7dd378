// SPDX-License-Identifier: MIT
#include "encoding/framerate.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace filmwright {

namespace {

double distance(const FrameRate &rate, double framesPerSecond)
{
    return std::abs(static_cast<double>(rate.numerator) / static_cast<double>(rate.denominator) -
                    framesPerSecond);
}

} // namespace

QString FrameRate::text() const
{
    return denominator == 1 ? QString::number(numerator)
                            : QStringLiteral("%1/%2").arg(numerator).arg(denominator);
}

quint64 FrameRate::samplesOf(quint64 frames, quint32 sampleRate) const
{
    const quint64 samples = frames * sampleRate * static_cast<quint64>(denominator);
    const auto divisor = static_cast<quint64>(numerator);
    return (samples + divisor / 2) / divisor;
}

FrameRate exactRate(float framesPerSecond)
{
    constexpr double near = 0.005;
    const auto recorded = static_cast<double>(framesPerSecond);
    const FrameRate whole{std::max<qint64>(1, std::llround(recorded)), 1};
    const FrameRate broadcast{1000 * std::max<qint64>(1, std::llround(recorded * 1.001)), 1001};
    const FrameRate &nearest =
        distance(broadcast, recorded) < distance(whole, recorded) ? broadcast : whole;
    if (distance(nearest, recorded) <= near)
        return nearest;
    const qint64 thousandths = std::max<qint64>(1, std::llround(recorded * 1000));
    const qint64 common = std::gcd(thousandths, qint64{1000});
    return {thousandths / common, 1000 / common};
}

} // namespace filmwright
