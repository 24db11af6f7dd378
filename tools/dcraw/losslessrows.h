// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/development.h"
#include "dcraw/negative.h"
#include "raw/file.h"

#include <memory>

namespace dcraw {

/// The samples of a frame that is stored as one lossless JPEG stream: they fill it row after row in
/// the order of the stream, whatever shape the stream itself has. Throws NotCovered or raw::Error
/// for streams that are damaged, too short, or of a kind that the real dcraw takes in its own way.
std::unique_ptr<SampleRows> readLosslessRows(const raw::File &file, const Negative &negative);

} // namespace dcraw
