// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

namespace filmwright {

/// Lets a person choose files and folders and waits for the choice. Main thread only. Nothing
/// chosen is an empty answer.
class OpenPanel
{
public:
    virtual ~OpenPanel() = default;

    /// Any number of recordings and of folders that hold some.
    virtual QStringList recordingsAndFolders() = 0;
    /// One recording.
    virtual QString recording(const QString &title) = 0;
    /// One folder, which may be made on the way.
    virtual QString folder(const QString &title) = 0;
};

} // namespace filmwright
