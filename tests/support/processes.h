// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

/// Whether a process of that id runs; a zombie that nobody has waited for doesn't count.
bool processRuns(qint64 pid);
