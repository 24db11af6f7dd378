// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>

namespace filmwright {

/// Which frames of a recording a movie is made of. They are counted as they stand in the movie of
/// the whole recording, from 1 on, gaps that are filled included.
struct FrameSelection
{
    quint64 first = 1;
    quint64 last = 0; ///< included; 0: to the end

    bool operator==(const FrameSelection &) const = default;
    bool isWhole() const { return *this == FrameSelection(); }

    /// How many of so many frames they are.
    quint64 countOf(quint64 frames) const;
    /// Why a recording of so many frames doesn't hold them, a sentence; empty when it does.
    QString error(quint64 frames) const;

    /// "10-20", "10-", "-20", "10-10"; empty for all.
    QString text() const;
    /// Reads what text() writes, but for all. None when it is nothing of the kind.
    static std::optional<FrameSelection> fromText(const QString &text);

    /// In mlv_dump's words, which count from 0. Not for all frames.
    QString range() const;
};

} // namespace filmwright
