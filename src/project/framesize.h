// SPDX-License-Identifier: MIT
#pragma once

#include "encoding/recipe.h"

#include <QSize>
#include <QString>

#include <optional>

namespace filmwright {

struct MlvMetadata;

/// The pixels of a frame whose resolution is given as in a recording's report, "1920x1080"; 0 for
/// any other text.
double pixelsOf(const QString &resolution);

/// The size of the developed frames, as far as the report tells it: the active area where it lies
/// within the frame, stretched where the sensor was sampled more coarsely in one direction. Empty
/// when it isn't known.
QSize developedSize(const MlvMetadata &metadata);

/// Why frames of that size can't become a movie by that recipe, or of that format (a MovieFormat)
/// where there is none, with what would help; empty when they can, or when the size isn't known.
QString sizeError(const QSize &size, qint32 format, const std::optional<Recipe> &recipe = {});

} // namespace filmwright
