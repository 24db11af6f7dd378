// SPDX-License-Identifier: MIT
// The values of options.
#pragma once

#include "mlv_sample/options.h"

#include <charconv>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace sample {

[[noreturn]] inline void refuseValue(std::string_view option, std::string_view text)
{
    throw UsageError(std::string(option) + " can't be \"" + std::string(text) + "\"");
}

/// Throws UsageError when the text is no number within the bounds.
template <typename Number>
Number number(std::string_view option, std::string_view text,
              Number least = std::numeric_limits<Number>::lowest(),
              Number most = std::numeric_limits<Number>::max())
{
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || !(value >= least) ||
        !(value <= most))
        refuseValue(option, text);
    return value;
}

/// The parts of `text` around the first `separator`; the second is empty without one.
std::pair<std::string_view, std::string_view> halves(std::string_view text, char separator);

/// Two numbers with `separator` between them. Throws UsageError.
template <typename Number>
std::pair<Number, Number> numberPair(std::string_view option, std::string_view text, char separator,
                                     Number least, Number most)
{
    const auto [first, second] = halves(text, separator);
    return {number(option, first, least, most), number(option, second, least, most)};
}

/// What stands between commas.
std::vector<std::string_view> listItems(std::string_view text);

/// Numbers and ranges, "0,3,5-7". Throws UsageError.
std::set<int> numberList(std::string_view option, std::string_view text);

/// As many numbers as `values` has, between commas. Throws UsageError.
template <typename Numbers>
void readNumbers(std::string_view option, std::string_view text, Numbers &values,
                 typename Numbers::value_type least, typename Numbers::value_type most)
{
    const auto items = listItems(text);
    if (items.size() != values.size())
        refuseValue(option, text);
    for (std::size_t i = 0; i < items.size(); ++i)
        values[i] = number(option, items[i], least, most);
}

/// The choice of that name. Throws UsageError when there is none.
template <typename Choice>
Choice choice(std::string_view option, std::string_view text,
              const std::map<std::string_view, Choice> &choices)
{
    const auto found = choices.find(text);
    if (found == choices.end())
        refuseValue(option, text);
    return found->second;
}

} // namespace sample
