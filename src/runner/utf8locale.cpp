// SPDX-License-Identifier: MIT
#include "runner/utf8locale.h"

#include <cstring>
#include <langinfo.h>
#include <locale.h>

namespace filmwright {

namespace {

constexpr char variable[] = "LC_ALL"; // comes before every other one

/// Whether the locale that the environment names is there, and its encoding UTF-8.
bool isUtf8()
{
    const locale_t chosen = newlocale(LC_ALL_MASK, "", nullptr);
    if (!chosen)
        return false;
    const bool is = std::strcmp(nl_langinfo_l(CODESET, chosen), "UTF-8") == 0;
    freelocale(chosen);
    return is;
}

} // namespace

Utf8Locale::Utf8Locale()
{
    if (isUtf8())
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
