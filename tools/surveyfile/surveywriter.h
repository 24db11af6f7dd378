// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <charconv>
#include <concepts>
#include <filesystem>
#include <string>
#include <string_view>

namespace surveyfile {

/// Puts a survey together: a line that names its kind and version, then lines of a name and values,
/// then a line that shows that it is whole.
class SurveyWriter
{
public:
    /// `kind` is one line that no other version of the survey has.
    explicit SurveyWriter(std::string_view kind);

    /// Begins a line.
    SurveyWriter &begin(std::string_view name);
    /// Adds text, which has no blank and no control character, to the line.
    SurveyWriter &add(std::string_view word);
    /// Adds a number in the shortest form that reads back as the same.
    template <typename Number>
    requires std::integral<Number> || std::floating_point<Number> SurveyWriter &add(Number number)
    {
        std::array<char, 32> digits{};
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        return add(std::string_view(digits.data(), end));
    }

    /// Writes the file, whole or not at all. Throws output::WriteError. To be called once, last.
    void write(const std::filesystem::path &path);

private:
    std::string m_text;
};

} // namespace surveyfile
