// SPDX-License-Identifier: MIT
#pragma once

#include "encoding/recipemovie.h"
#include "mlvdump/mlvdumpreport.h"

namespace filmwright {

/// What a recording's movie tells of it that begins with the frame of that number, from 1 on. The
/// camera's clock has no zone: what it showed is taken for both the timecode and the time of
/// creation. The reel is the recording's name.
MovieFacts factsOf(const QString &recording, const MlvMetadata &metadata, quint64 firstFrame = 1);

} // namespace filmwright
