// SPDX-License-Identifier: MIT
#include "mlv_dump/slate.h"

#include "mlv_dump/text.h"
#include "raw/error.h"

namespace mlvdump {
namespace {

std::uint8_t binaryCodedDecimal(std::uint64_t number)
{
    return static_cast<std::uint8_t>(number / 10 % 10 * 16 + number % 10);
}

std::uint64_t secondsSinceMidnight(const CameraTime &time)
{
    using namespace std::chrono;
    return static_cast<std::uint64_t>(floor<seconds>(time - floor<days>(time)).count());
}

} // namespace

std::array<std::uint8_t, 8> timeCodeBytes(std::uint64_t seconds, std::uint64_t frame)
{
    return {binaryCodedDecimal(frame), binaryCodedDecimal(seconds % 60),
            binaryCodedDecimal(seconds / 60 % 60), binaryCodedDecimal(seconds / 3600 % 24)};
}

std::optional<std::array<std::uint8_t, 8>> Slate::timeCode(std::uint64_t frame) const
{
    constexpr std::uint32_t mostOfSingles = 30;
    constexpr std::uint32_t mostOfPairs = 79;
    constexpr unsigned secondOfPair = 0x80;
    const std::uint32_t ofSecond = rate.framesOfTimecodeSecond();
    if (ofSecond > mostOfPairs)
        return std::nullopt;
    const std::uint64_t number = firstNumber + frame;
    const std::uint64_t inSecond = number % ofSecond;
    const std::uint64_t seconds = number / ofSecond;
    if (ofSecond <= mostOfSingles)
        return timeCodeBytes(seconds, inSecond);
    auto bytes = timeCodeBytes(seconds, inSecond / 2);
    bytes[1] = static_cast<std::uint8_t>(bytes[1] | (inSecond % 2 == 1 ? secondOfPair : 0U));
    return bytes;
}

Slate slateOf(const mlv::Recording &recording, const std::string &reelName)
{
    const auto rate = exactRate(recording.framesPerSecond());
    if (!rate)
        throw raw::Error("has no frame rate, without which there is no timecode");
    const auto begin = cameraTime(recording, 0);
    const std::uint64_t seconds = begin ? secondsSinceMidnight(*begin) : 0;
    return {*rate, seconds * rate->framesOfTimecodeSecond(), begin, asciiText(harmless(reelName)),
            recording.header().guid};
}

} // namespace mlvdump
