// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <optional>

namespace filmwright {

/// While one lives, the environment names a locale whose encoding is UTF-8. It lives while the
/// first QCoreApplication is made, the only moment at which Qt reads the locale: Qt works with
/// UTF-8 alone and complains on standard error of every other encoding, such as that of the locale
/// "C" under cron and ssh, or of a locale that this machine doesn't have.
///
/// What the person chose holds again afterwards, for the tools too. Before other threads start.
class Utf8Locale
{
public:
    Utf8Locale();
    ~Utf8Locale();
    Utf8Locale(const Utf8Locale &) = delete;
    Utf8Locale &operator=(const Utf8Locale &) = delete;

private:
    bool m_isChanged = false;
    std::optional<QByteArray> m_chosen;
};

} // namespace filmwright
