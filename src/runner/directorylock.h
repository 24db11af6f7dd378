// SPDX-License-Identifier: MIT
#pragma once

#include <QLockFile>
#include <QString>

#include <memory>

namespace filmwright {

/// Keeps a temporary directory to one run of either program, by the file "<directory>.lock" beside
/// it. The lock ends with the object, or with the process, however that ends. Any one thread.
class DirectoryLock
{
public:
    /// Takes the lock, giving up the one held before if there was one; makes the folder that the
    /// directory is in, not the directory. Returns what hinders it, or an empty string.
    [[nodiscard]] QString take(const QString &directory);

    bool isHeld() const { return m_file != nullptr; }
    /// Whether the last take() failed because another run works there. Otherwise nobody does: a
    /// full disk, for example, has no room for the lock.
    bool isHeldElsewhere() const { return m_heldElsewhere; }

private:
    std::unique_ptr<QLockFile> m_file;
    bool m_heldElsewhere = false;
};

/// Removes the directories below `folder` whose names start with `prefix` and whose locks were left
/// behind by killed runs.
void removeAbandonedDirectories(const QString &folder, const QString &prefix);

} // namespace filmwright
