// SPDX-License-Identifier: MIT
#pragma once

#include "strike.h"

#include <QList>

/// What a person does with the window while the batch runs.
enum class Move {
    StopAndStart,
    Remove,
    Replace,
    QuitAndLaunch,
    ChooseDark,
    DeleteDark,
};

struct TimedMove
{
    double moment = 0; ///< after this share of the time that an undisturbed batch takes
    Move move = Move::StopAndStart;
};

/// What a recording of the queue is from the beginning that can't be used.
enum class Flaw {
    None,
    Empty,
    Text,
    NoFrame,
};

/// One fault of a batch of the window, what the person does meanwhile, and a recording that can't
/// be used. The same seed and number always give the same.
struct WindowStrike
{
    static WindowStrike make(quint32 seed, int number);

    bool makes(Move move) const;

    QString name;  ///< for a person
    Strike strike; ///< how it is expected to end is filmwright-cli's way
    QList<TimedMove> moves;
    Flaw flaw = Flaw::None;
};
