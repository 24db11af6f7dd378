// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// A file system in memory over a folder, in a mount namespace of this process alone: it vanishes
/// with the process, however that ends.
class SmallDisk
{
public:
    /// Found by trying: an administrator can mount, unless this is a chroot or a container.
    static bool isPossible();

    SmallDisk(const QString &folder, qint64 bytes);
    ~SmallDisk();
    SmallDisk(const SmallDisk &) = delete;
    SmallDisk &operator=(const SmallDisk &) = delete;

    /// Leaves so many bytes free, or what is free already if that is less.
    void fill(qint64 free);
    /// Frees what `fill` took.
    void empty();

private:
    QString filler() const;
    qint64 available() const;

    const QString m_folder;
};
