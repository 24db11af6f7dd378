// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <functional>

class QObject;

namespace filmwright {

/// Shows the file, selected, in the desktop's file manager (org.freedesktop.FileManager1); where
/// none offers that, opens the folder that holds it. Where nothing opens folders, a sentence is
/// told, as long as the context is there. Main thread only; needs its event loop, returns at once.
void revealFile(const QString &path, const QObject *context = nullptr,
                std::function<void(const QString &error)> told = {});

} // namespace filmwright
