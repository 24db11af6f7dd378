// SPDX-License-Identifier: MIT
#pragma once

#include <QProcessEnvironment>
#include <QString>

/// A clock of the programs of one environment, which can be put back and forward while they run.
/// Monotonic clocks go on, as they do when a real clock is changed.
class ChangedClock
{
public:
    /// Whether a program was seen to follow such a clock here.
    static bool isPossible();

    /// `file` tells the programs the time.
    explicit ChangedClock(const QString &file);

    void addTo(QProcessEnvironment &environment) const;
    /// "+400d", "-3d" and the like; "+0" is the true time.
    void set(const char *offset) const;

private:
    const QString m_file;
};
