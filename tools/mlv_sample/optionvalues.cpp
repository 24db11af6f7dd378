// SPDX-License-Identifier: MIT
#include "mlv_sample/optionvalues.h"

namespace sample {

std::pair<std::string_view, std::string_view> halves(std::string_view text, char separator)
{
    const std::size_t at = text.find(separator);
    if (at == std::string_view::npos)
        return {text, {}};
    return {text.substr(0, at), text.substr(at + 1)};
}

std::vector<std::string_view> listItems(std::string_view text)
{
    std::vector<std::string_view> items;
    while (!text.empty()) {
        const auto [item, rest] = halves(text, ',');
        items.push_back(item);
        text = rest;
    }
    return items;
}

std::set<int> numberList(std::string_view option, std::string_view text)
{
    constexpr int most = 1000000;
    std::set<int> numbers;
    for (const std::string_view item : listItems(text)) {
        const auto [first, last] = halves(item, '-');
        const int from = number(option, first, 0, most);
        const int to = last.empty() ? from : number(option, last, from, most);
        for (int i = from; i <= to; ++i)
            numbers.insert(i);
    }
    return numbers;
}

} // namespace sample
