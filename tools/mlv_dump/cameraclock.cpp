// SPDX-License-Identifier: MIT
#include "mlv_dump/cameraclock.h"

#include "mlv_dump/text.h"

#include <algorithm>

namespace mlvdump {

using namespace std::chrono;

namespace {

/// Nothing when the clock shows what is no time.
std::optional<sys_seconds> timeOf(const mlv::Clock &clock)
{
    // Judged before <chrono> takes them, which keeps less of a number than a block holds. A day
    // later the year still has the four digits of a tag.
    const bool fits = clock.year + 1900 < 9999 && clock.month < 12 && clock.day <= 31 &&
                      clock.hour < 24 && clock.minute < 60 && clock.second < 60;
    const year_month_day date(year(clock.year + 1900), month(clock.month + 1U), day(clock.day));
    if (!fits || !date.ok())
        return std::nullopt;
    return sys_days(date) + hours(clock.hour) + minutes(clock.minute) + seconds(clock.second);
}

} // namespace

std::optional<CameraTime> cameraTime(const mlv::Recording &recording, std::uint64_t timestamp)
{
    const auto *entry = recording.clock().at(timestamp);
    const auto read = entry == nullptr ? std::nullopt : timeOf(entry->value);
    if (!read)
        return std::nullopt;
    constexpr std::uint64_t longest = 24ULL * 3600 * 1000000;
    const auto passed = timestamp > entry->timestamp ? timestamp - entry->timestamp : 0;
    return *read + microseconds(static_cast<long>(std::min(passed, longest)));
}

std::string timeText(const CameraTime &time, char dateMark)
{
    const auto date = floor<days>(time);
    const year_month_day today(date);
    const hh_mm_ss<seconds> now(floor<seconds>(time - date));
    return format("%04d%c%02u%c%02u %02d:%02d:%02d", int{today.year()}, dateMark,
                  unsigned{today.month()}, dateMark, unsigned{today.day()},
                  static_cast<int>(now.hours().count()), static_cast<int>(now.minutes().count()),
                  static_cast<int>(now.seconds().count()));
}

} // namespace mlvdump
