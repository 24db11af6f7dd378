// SPDX-License-Identifier: MIT
#include "surveyfile/surveyreader.h"

#include "raw/error.h"
#include "raw/file.h"

namespace surveyfile {
namespace {

constexpr std::uint64_t largestFile = 256U << 20U; // bytes; a day of footage has 120 MB

std::string textOf(const std::filesystem::path &path)
{
    try {
        return raw::readText(path, largestFile);
    } catch (const raw::Error &error) {
        throw SurveyError(std::string("The survey ") + error.what());
    }
}

} // namespace

SurveyReader::SurveyReader(const std::filesystem::path &path, std::string_view kind)
    : m_text(textOf(path))
    , m_rest(m_text)
{
    if (nextLine() != kind)
        throw SurveyError("The survey is of another kind or version");
}

void SurveyReader::begin(std::string_view name)
{
    if (hasMore())
        throwDamaged();
    m_line = nextLine();
    if (word() != name)
        throwDamaged();
}

std::string_view SurveyReader::word()
{
    const auto blank = m_line.find(' ');
    const auto word = m_line.substr(0, blank);
    m_line.remove_prefix(blank == std::string_view::npos ? m_line.size() : blank + 1);
    return word;
}

void SurveyReader::end()
{
    begin("end");
    if (hasMore() || !m_rest.empty())
        throwDamaged();
}

void SurveyReader::throwDamaged()
{
    throw SurveyError("The survey is damaged");
}

std::string_view SurveyReader::nextLine()
{
    const auto end = m_rest.find('\n');
    if (end == std::string_view::npos)
        throwDamaged();
    const auto line = m_rest.substr(0, end);
    m_rest.remove_prefix(end + 1);
    return line;
}

} // namespace surveyfile
