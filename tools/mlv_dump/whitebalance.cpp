// SPDX-License-Identifier: MIT
#include "mlv_dump/whitebalance.h"

#include "mlv_dump/balancesurvey.h"
#include "mlv_dump/text.h"

#include <array>
#include <charconv>

namespace mlvdump {
namespace {

// Where the curve of daylight ends.
constexpr double leastKelvin = 2000;
constexpr double mostKelvin = 25000;

std::optional<double> parseNumber(std::string_view text)
{
    double number = 0;
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    const bool whole = error == std::errc() && end == text.data() + text.size();
    return whole ? std::optional(number) : std::nullopt;
}

/// What is multiplied by more has been seen less.
std::optional<Neutral> parseMultipliers(std::string_view text)
{
    std::array<double, 3> multipliers{};
    for (std::size_t i = 0; i < multipliers.size(); ++i) {
        const bool isLast = i + 1 == multipliers.size();
        const auto comma = isLast ? text.size() : text.find(',');
        const auto number = parseNumber(text.substr(0, comma));
        if (comma == std::string_view::npos || !number || !(*number > 0))
            return std::nullopt;
        multipliers[i] = *number;
        text.remove_prefix(isLast ? comma : comma + 1);
    }
    const Neutral neutral{multipliers[1] / multipliers[0], 1, multipliers[1] / multipliers[2]};
    return isUsable(neutral) ? std::optional(neutral) : std::nullopt;
}

} // namespace

std::optional<BalanceChoice> parseBalance(std::string_view text)
{
    using Kind = BalanceChoice::Kind;
    if (text == "camera" || text == "auto")
        return BalanceChoice{text == "auto" ? Kind::Auto : Kind::Camera, 0, {}};
    if (const auto kelvin = parseNumber(text)) {
        return *kelvin >= leastKelvin && *kelvin <= mostKelvin
                   ? std::optional(BalanceChoice{Kind::Kelvin, *kelvin, {}})
                   : std::nullopt;
    }
    const auto neutral = parseMultipliers(text);
    return neutral ? std::optional(BalanceChoice{Kind::Given, 0, *neutral}) : std::nullopt;
}

FrameBalance frameBalance(const mlv::Recording &recording, const BalanceChoice &choice,
                          const Calibration &calibration, const mlv::FrameFormat &format,
                          const ColourMatrix &matrix, unsigned threads)
{
    switch (choice.kind) {
    case BalanceChoice::Kind::Kelvin:
        return {neutralOfKelvin(choice.kelvin, matrix), {}};
    case BalanceChoice::Kind::Given:
        return {choice.neutral, {}};
    case BalanceChoice::Kind::Auto:
        break;
    case BalanceChoice::Kind::Camera:
        return {};
    }
    const auto found = surveyBalance(recording, calibration, format, matrix, threads);
    if (!found) {
        return {std::nullopt,
                {"the frames don't tell what is white; the camera's white balance "
                 "is taken"}};
    }
    // In the form in which another recording can be given it.
    return {found,
            {mlvdump::format("the white balance found in the frames is %.4f,1,%.4f",
                             1 / (*found)[0], 1 / (*found)[2])}};
}

} // namespace mlvdump
