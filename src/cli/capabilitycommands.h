// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

namespace filmwright {

// Both return the exit status.

/// `filmwright-cli encoders`: what ffmpeg says it can encode.
int runEncoders(const QStringList &arguments);

/// `filmwright-cli tools`: the tools that are used and where they are.
int runTools(const QStringList &arguments);

} // namespace filmwright
