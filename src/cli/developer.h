// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>

namespace filmwright {

/// What our own dcraw says of the program that develops frames.
struct Developer
{
    QString program; ///< name and version
    QString covers;  ///< what it develops itself; empty when FILMWRIGHT_DCRAW has another do it all
    QString other;   ///< the path of the dcraw that does the rest; empty when there is none
};

/// Asks the program at the path; nothing when it isn't our own dcraw. Waits for it.
std::optional<Developer> askDeveloper(const QString &path);

/// A sentence that tells the same.
QString describe(const Developer &developer);

} // namespace filmwright
