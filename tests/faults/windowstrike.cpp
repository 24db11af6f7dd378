// SPDX-License-Identifier: MIT
#include "windowstrike.h"

#include "dice.h"

#include <algorithm>
#include <iterator>

namespace {

const char *const moveNames[] = {"stop and start",  "remove",        "replace",
                                 "quit and launch", "choose a dark", "delete the dark"};
const char *const flawNames[] = {"", "an empty file", "a text", "a recording without a frame"};

/// What only another process could do to the window's, or only to an ordinary user.
bool isPossible(Event event)
{
    switch (event) {
    case Event::Stopped:
    case Event::RecordingClosed:
    case Event::FolderClosed:
    case Event::ClockChanged:
        return false;
    default:
        return true;
    }
}

} // namespace

bool WindowStrike::makes(Move move) const
{
    return std::any_of(moves.cbegin(), moves.cend(),
                       [move](const TimedMove &timed) { return timed.move == move; });
}

WindowStrike WindowStrike::make(quint32 seed, int number)
{
    WindowStrike made;
    made.strike = Strike::make(seed, number);
    // Other throws than the strike's.
    Dice dice(~seed, number);
    if (!isPossible(made.strike.event))
        made.strike.event = Event::None;
    const int moves = dice.number(4);
    for (int i = 0; i < moves; ++i)
        made.moves << TimedMove{dice.share() * 1.2,
                                static_cast<Move>(dice.number(std::size(moveNames)))};
    std::sort(made.moves.begin(), made.moves.end(),
              [](const TimedMove &a, const TimedMove &b) { return a.moment < b.moment; });
    made.flaw = static_cast<Flaw>(dice.number(std::size(flawNames)));

    QStringList parts{made.strike.event == Event::None && made.strike.tool.isEmpty()
                          ? QStringLiteral("no fault")
                          : made.strike.name};
    if (made.flaw != Flaw::None)
        parts << QString::fromLatin1(flawNames[static_cast<int>(made.flaw)]);
    for (const TimedMove &timed : std::as_const(made.moves))
        parts << QString::fromLatin1(moveNames[static_cast<int>(timed.move)]);
    made.name = parts.join(QStringLiteral(", "));
    return made;
}
