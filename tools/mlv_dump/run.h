// SPDX-License-Identifier: MIT
#pragma once

#include "mlv_dump/options.h"
#include "mlv_dump/output.h"

namespace mlvdump {

/// Does what the options ask for, up to and with the last two lines. Answers the exit status: 0, or
/// 1 after an error. A frame run that fails prints no last lines, so that nobody takes its frames
/// for all.
int run(const Options &options, Output &output);

} // namespace mlvdump
