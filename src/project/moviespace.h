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
    double bytes = 0;        ///< 0: not known before it is made
    bool isEstimate = false; ///< of a movie by a recipe
};

/// A movie that is being written.
struct GrowingMovie
{
    QString path;
    double bytes = 0;    ///< so far
    quint64 encoded = 0; ///< frames
    quint64 frames = 0;  ///< of the whole movie
};

/// What is known of a movie's size before it is made: the bytes of a raw one, and about those of an
/// encoder of a recipe whose frames all take about the same; 0 for any other movie, and for a
/// recording that isn't read.
double movieBytes(const MlvMetadata &metadata, const ConversionSettings &settings);

/// Whether the rest of a movie won't find room in the bytes that are free, as far as what is there
/// tells of it: the first frames may be twice as large as the others. An empty string when it will,
/// or when too few frames are there to tell; else a sentence for a person.
QString growthError(const GrowingMovie &movie, double free);

/// Whether such movies fit where they go, what becomes free of those that they replace included. An
/// empty string when they do, else a sentence for a person that names the first folder without room
/// and both figures.
QString movieSpaceError(const std::vector<MovieRoom> &movies);

} // namespace filmwright
