// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/recording.h"

#include <chrono>
#include <optional>
#include <string>

namespace mlvdump {

using CameraTime = std::chrono::sys_time<std::chrono::microseconds>;

/// What the camera's clock showed at a time of the recording, in microseconds, going by when it was
/// read last, a day before at the most. Nothing when it wasn't read or showed what is no time. The
/// clock knows no zone.
std::optional<CameraTime> cameraTime(const mlv::Recording &recording, std::uint64_t timestamp);

/// "2026-05-01 14:30:02", with another mark between the parts of the date if need be.
std::string timeText(const CameraTime &time, char dateMark = '-');

} // namespace mlvdump
