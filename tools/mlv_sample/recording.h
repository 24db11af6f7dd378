// SPDX-License-Identifier: MIT
// Writes a whole recording, frame by frame.
#pragma once

#include "mlv_sample/settings.h"

namespace sample {

/// Writes the recording and, if asked for, its truth. Throws std::exception with a message for the
/// person; files that are not whole are removed then.
void writeRecording(const Settings &settings);

} // namespace sample
