// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <vector>

namespace filmwright {

struct ConversionSettings;
struct MlvMetadata;

/// A movie that is to be made.
struct MovieRoom
{
    QString path;
    double bytes = 0; ///< 0: not known before it is made
};

/// The bytes of a raw movie, whose size is known before it is made: its frames; 0 for any other
/// movie, and for a recording that isn't read.
double movieBytes(const MlvMetadata &metadata, const ConversionSettings &settings);

/// Whether such movies fit where they go, what becomes free of those that they replace included. An
/// empty string when they do, else a sentence for a person that names the first folder without room
/// and both figures.
QString movieSpaceProblem(const std::vector<MovieRoom> &movies);

} // namespace filmwright
