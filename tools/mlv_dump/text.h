// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace mlvdump {

/// printf() into a string.
__attribute__((format(printf, 1, 2))) std::string format(const char *pattern, ...);

/// Text of a recording, fit to be printed within a line: control characters become blanks, what is
/// not UTF-8 becomes "?", and the marks that a reader of our output looks for, "[ERROR]",
/// "[UNUSABLE]" and "Done", are changed so that they are none. Trailing NULs are left out.
std::string harmless(std::string_view text);

/// The ASCII part of a text in UTF-8, as tags want it: another character becomes "?", blanks at the
/// end are left out.
std::string asciiText(std::string_view text);

/// harmless() for a field of fixed size, whose text ends at the first NUL or with the field.
template <std::size_t size>
std::string harmless(const std::array<char, size> &field)
{
    const std::string_view text(field.data(), field.size());
    return harmless(text.substr(0, text.find('\0')));
}

} // namespace mlvdump
