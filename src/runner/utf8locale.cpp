// SPDX-License-Identifier: MIT
#include "runner/utf8locale.h"

#include <clocale>
#include <cstring>
#include <langinfo.h>

namespace filmwright {

namespace {

constexpr char variable[] = "LC_ALL"; // comes before every other one

} // namespace

Utf8Locale::Utf8Locale()
{
    std::setlocale(LC_ALL, "");
    if (std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0)
        return;
    m_isChanged = true;
    if (qEnvironmentVariableIsSet(variable))
        m_chosen = qgetenv(variable);
    qputenv(variable, "C.UTF-8");
}

Utf8Locale::~Utf8Locale()
{
    if (!m_isChanged)
        return;
    if (m_chosen)
        qputenv(variable, *m_chosen);
    else
        qunsetenv(variable);
}

} // namespace filmwright
