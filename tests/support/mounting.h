// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

/// How this place lets a command mount file systems that only the command sees: an administrator in
/// a mount namespace of its own, anyone else in a user namespace as well. Many containers, and
/// every chroot for anyone but its administrator, let neither.
struct Mounting
{
    /// What stands before the command; empty when mounting is not possible.
    QStringList prefix;
    /// Why it is not possible, empty otherwise.
    QString skipReason;

    /// Found by mounting something; tried once.
    static const Mounting &here();
};
