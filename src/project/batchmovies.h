// SPDX-License-Identifier: MIT
#pragma once

#include "project/conversionsettings.h"

#include <QSet>

namespace filmwright {

/// The movies of a batch, of which none may replace another.
class BatchMovies
{
public:
    /// Notes the movie of a recording whose turn has come. Returns why the recording isn't even
    /// tried, or an empty string.
    [[nodiscard]] QString claim(const QString &recording, const ConversionSettings &settings);
    /// The same when its path is only known after the reading.
    [[nodiscard]] QString claimMovie(const QString &movie);

private:
    QSet<QString> m_movies;
};

} // namespace filmwright
