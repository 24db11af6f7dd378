// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <chrono>

namespace filmwright {

// How figures are written for people, the same in every place and in any locale.

/// "1.50 GB": a size in bytes, in steps of 1000.
QString readableFileSize(double bytes);

/// "0:12", "59:03", "1:00:00". Less than half a second is "0:00".
QString timeText(std::chrono::duration<double> time);

/// An exposure: "1/50 s", above half a second "2.0 s"; empty when it isn't above 0.
QString exposureTimeText(double seconds);

/// "43 %", rounded down, so that 100 % is the end; without a whole, "0 %".
QString percentText(double done, double whole);

/// "0.3 %": a part of a whole, rounded to a tenth of a percent.
QString shareText(double part);

} // namespace filmwright
