// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

#include <optional>

namespace filmwright {

/// The words of a line as a shell splits them: at blanks, with quotes of both kinds and backslashes
/// that hold a word together. Nothing is expanded and nothing is run. Nothing when a quote isn't
/// closed or the line ends with a backslash.
std::optional<QStringList> shellWords(const QString &line);

} // namespace filmwright
