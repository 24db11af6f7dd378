// SPDX-License-Identifier: MIT
#include "runner/readabletext.h"

#include "runner/fixedtext.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace filmwright {

QString readableFileSize(double bytes)
{
    constexpr std::array units{"bytes", "KB", "MB", "GB", "TB", "PB", "EB", "ZB", "YB"};
    std::size_t unit = 0;
    while (bytes > 1000.0 && unit + 1 < units.size()) {
        bytes /= 1000.0;
        ++unit;
    }
    return QStringLiteral("%1 %2").arg(fixedText(bytes, 2), QLatin1String(units.at(unit)));
}

QString timeText(std::chrono::duration<double> time)
{
    const auto seconds = std::chrono::round<std::chrono::seconds>(time).count();
    const QString minutes = QString::number(seconds / 60 % 60);
    const QString rest = QStringLiteral(":%1").arg(seconds % 60, 2, 10, QLatin1Char('0'));
    if (seconds < 3600)
        return minutes + rest;
    return QStringLiteral("%1:%2").arg(seconds / 3600).arg(minutes, 2, QLatin1Char('0')) + rest;
}

QString exposureTimeText(double seconds)
{
    constexpr double longestFraction = 0.5;
    if (!(seconds > 0))
        return {};
    return seconds <= longestFraction ? QStringLiteral("1/%1 s").arg(std::llround(1 / seconds))
                                      : QStringLiteral("%1 s").arg(fixedText(seconds, 1));
}

QString percentText(double done, double whole)
{
    const double part = whole > 0 ? std::clamp(done / whole, 0.0, 1.0) : 0.0;
    return QStringLiteral("%1 %").arg(std::floor(100 * part));
}

QString shareText(double part)
{
    return fixedText(100 * part, 1) + QStringLiteral(" %");
}

} // namespace filmwright
