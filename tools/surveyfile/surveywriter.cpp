// SPDX-License-Identifier: MIT
#include "surveyfile/surveywriter.h"

#include "output/outputfile.h"

namespace surveyfile {

SurveyWriter::SurveyWriter(std::string_view kind)
    : m_text(kind)
{
}

SurveyWriter &SurveyWriter::begin(std::string_view name)
{
    m_text += '\n';
    m_text += name;
    return *this;
}

SurveyWriter &SurveyWriter::add(std::string_view word)
{
    m_text += ' ';
    m_text += word;
    return *this;
}

void SurveyWriter::write(const std::filesystem::path &path)
{
    begin("end");
    m_text += '\n';
    output::OutputFile file(path);
    file.write(std::as_bytes(std::span(m_text)));
    file.commit();
}

} // namespace surveyfile
