// SPDX-License-Identifier: MIT
#pragma once

#include "runner/directorylock.h"

#include <QTemporaryDir>

namespace filmwright {

/// A folder that is this object's alone and goes with it, for files that live for moments: in
/// memory where there is room for them. What a killed run has left is removed.
class PreviewFolder
{
public:
    PreviewFolder();

    /// Whether it could be made.
    bool isValid() const { return m_folder.isValid(); }
    QString path() const { return m_folder.path(); }
    /// Why it could not be made; empty when it could.
    QString error() const;

private:
    DirectoryLock m_lock; // beside the folder, so that it goes after it
    QTemporaryDir m_folder;
};

} // namespace filmwright
