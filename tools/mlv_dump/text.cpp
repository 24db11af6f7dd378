// SPDX-License-Identifier: MIT
#include "mlv_dump/text.h"

#include <cstdarg>
#include <cstdio>

namespace mlvdump {
namespace {

void replaceAll(std::string &text, std::string_view mark, std::string_view replacement)
{
    for (auto at = text.find(mark); at != std::string::npos; at = text.find(mark, at))
        text.replace(at, mark.size(), replacement);
}

bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xc0) == 0x80;
}

/// The bytes of the UTF-8 character at the start of the text; 0 when there is none.
std::size_t characterSize(std::string_view text)
{
    const auto first = static_cast<unsigned char>(text[0]);
    const std::size_t size = first < 0x80             ? 1
                             : (first & 0xe0) == 0xc0 ? 2
                             : (first & 0xf0) == 0xe0 ? 3
                             : (first & 0xf8) == 0xf0 ? 4
                                                      : 0;
    if (size == 0 || size > text.size())
        return 0;
    char32_t value = size == 1 ? first : first & (0x7fU >> size);
    for (std::size_t i = 1; i < size; ++i) {
        if (!isContinuation(text[i]))
            return 0;
        value = (value << 6) | (static_cast<unsigned char>(text[i]) & 0x3fU);
    }
    constexpr std::array<char32_t, 5> smallest{0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = value >= 0xd800 && value < 0xe000;
    return value < smallest[size] || surrogate || value > 0x10ffff ? 0 : size;
}

bool isControl(std::string_view character)
{
    const auto first = static_cast<unsigned char>(character[0]);
    const bool isC1 = first == 0xc2 && static_cast<unsigned char>(character[1]) < 0xa0;
    return first < 0x20 || first == 0x7f || isC1;
}

} // namespace

std::string format(const char *pattern, ...)
{
    std::va_list arguments;
    va_start(arguments, pattern);
    std::va_list again;
    va_copy(again, arguments);
    const int size = std::vsnprintf(nullptr, 0, pattern, arguments);
    va_end(arguments);
    std::string text(size > 0 ? static_cast<std::size_t>(size) : 0, '\0');
    std::vsnprintf(text.data(), text.size() + 1, pattern, again);
    va_end(again);
    return text;
}

std::string harmless(std::string_view text)
{
    text = text.substr(0, text.find_last_not_of('\0') + 1);
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const std::size_t size = characterSize(text);
        if (size == 0)
            result += '?';
        else if (isControl(text))
            result += ' ';
        else
            result += text.substr(0, size);
        text.remove_prefix(size == 0 ? 1 : size);
    }
    replaceAll(result, "[ERROR]", "(ERROR)");
    replaceAll(result, "[UNUSABLE]", "(UNUSABLE)");
    replaceAll(result, "Done", "done");
    return result;
}

std::string asciiText(std::string_view text)
{
    std::string ascii;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80)
            ascii += c;
        else if (byte >= 0xc0)
            ascii += '?'; // one for each character, not for its further bytes
    }
    const auto end = ascii.find_last_not_of(' ');
    return ascii.substr(0, end == std::string::npos ? 0 : end + 1);
}

} // namespace mlvdump
