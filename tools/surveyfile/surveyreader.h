// SPDX-License-Identifier: MIT
#pragma once

#include "surveyfile/surveyerror.h"

#include <charconv>
#include <concepts>
#include <filesystem>
#include <limits>
#include <string>
#include <string_view>

namespace surveyfile {

/// Takes a survey apart, which anybody may have written, in the order in which a SurveyWriter wrote
/// it. Everything throws SurveyError where something else stands.
class SurveyReader
{
public:
    SurveyReader(const std::filesystem::path &path, std::string_view kind);
    SurveyReader(const SurveyReader &) = delete;
    SurveyReader &operator=(const SurveyReader &) = delete;

    /// Goes to the next line, which has that name. The last one has been read to its end.
    void begin(std::string_view name);
    /// Whether the line goes on.
    bool hasMore() const { return !m_line.empty(); }
    /// The next value of the line. Stays while the reader does.
    std::string_view word();
    template <typename Number>
    Number number(Number least = std::numeric_limits<Number>::lowest(),
                  Number most = std::numeric_limits<Number>::max()) requires
        std::integral<Number> || std::floating_point<Number>
    {
        const auto text = word();
        Number number{};
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        // What is no number is not between two.
        if (error != std::errc() || end != text.data() + text.size() ||
            !(number >= least && number <= most))
            throwDamaged();
        return number;
    }
    /// Everything has been read.
    void end();

    [[noreturn]] static void throwDamaged();

private:
    std::string_view nextLine();

    std::string m_text;
    std::string_view m_rest; // of m_text
    std::string_view m_line; // what is left of it
};

} // namespace surveyfile
