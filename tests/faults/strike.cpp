// SPDX-License-Identifier: MIT
#include "strike.h"

#include "dice.h"

#include <csignal>
#include <iterator>

namespace {

struct Tool
{
    const char *name;    ///< in the resources folder
    const char *purpose; ///< of the call, for a person
    const char *call;    ///< which of its calls is struck, a shell pattern of all its arguments
    const char *died;    ///< the reason when it doesn't do its work
    bool judgedByStatus; ///< a status other than 0 fails the recording, whatever it did
    bool read;           ///< what it prints decides
    double seconds;      ///< of its work, about
};

// The pattern of dcraw's call gets the frame's number.
const Tool tools[] = {
    {"mlv_dump", "of metadata", "-m\\ -v*", "^mlv_dump ended before it had read the recording$",
     false, true, 0.004},
    {"mlv_dump", "of the dark", "-a*",
     "^calibration failed: mlv_dump ended before it had averaged dark.MLV$", false, true, 0.004},
    {"mlv_dump", "of frames", "--dng*", "^mlv_dump ended before it had extracted the frames$",
     false, true, 0.006},
    {"dcraw", "", "*tmp00000%1.dng", "^dcraw converted only \\d of \\d frames$", false, false,
     0.006},
    {"cr2hdr", "", "*", "^cr2hdr ended with status %1: ", true, false, 0.02},
    {"ffmpeg", "", "*", "^ffmpeg ended with status %1: ", true, false, 0.1},
};

/// Of a run whose frames flow. Ranges have one frame, whose number the patterns get.
const Tool flowingTools[] = {
    tools[0],
    tools[1],
    {"mlv_dump", "of the survey", "--dng*--write-survey*",
     "^mlv_dump ended before it had extracted the frames$", false, true, 0.006},
    {"mlv_dump", "of a range", "--dng*-f\\ %1*--use-survey*",
     "^mlv_dump ended before it had extracted the frames$", false, true, 0.006},
    {"dcraw", "", "*tmp00000%1.dng", "^dcraw could not convert a frame$", false, false, 0.006},
    {"cr2hdr", "", "*", "^cr2hdr ended with status %1: ", true, false, 0.02},
    {"ffmpeg", "", "-f\\ rawvideo*", "^ffmpeg ended with status %1: ", true, false, 0.1},
};
const Tool &flowingEncoder = flowingTools[std::size(flowingTools) - 1];

struct Fault
{
    const char *name;
    void (*make)(Strike &strike, const Tool &tool, Dice &dice);
};

QString text(const char *latin1)
{
    return QString::fromLatin1(latin1);
}

void expectReason(Strike &strike, const Tool &tool, int status)
{
    strike.outcome = Outcome::Reason;
    strike.reason = text(tool.died);
    if (tool.judgedByStatus)
        strike.reason = strike.reason.arg(status);
}

/// Of 8 bits.
constexpr int sizeOfTwoFrames = 2 * 128 * 72 * 3;

void expectReasonIfRead(Strike &strike, const Tool &tool)
{
    strike.outcome = tool.read ? Outcome::Either : Outcome::Movie;
}

const Fault toolFaults[] = {
    {"dies at once",
     [](Strike &strike, const Tool &tool, Dice &dice) {
         strike.signal = dice.number(2) == 0 ? SIGKILL : SIGSEGV;
         strike.script = text("kill -%1 $$").arg(strike.signal);
         expectReason(strike, tool, strike.signal);
     }},
    {"dies in the middle",
     [](Strike &strike, const Tool &tool, Dice &dice) {
         strike.signal = dice.number(2) == 0 ? SIGKILL : SIGSEGV;
         strike.script = text("{ sleep %1; kill -%2 $$; } >/dev/null 2>&1 &")
                             .arg(dice.share() * tool.seconds)
                             .arg(strike.signal);
         strike.outcome = Outcome::Either;
     }},
    {"is stopped for a while",
     [](Strike &strike, const Tool &tool, Dice &dice) {
         strike.script =
             text("{ sleep %1; kill -STOP $$; sleep 0.4; kill -CONT $$; } >/dev/null 2>&1 &")
                 .arg(dice.share() * tool.seconds);
     }},
    {"exits without doing its work",
     [](Strike &strike, const Tool &tool, Dice &dice) {
         const int status = 1 + dice.number(255);
         strike.script = text("exit %1").arg(status);
         expectReason(strike, tool, status);
     }},
    {"does its work and exits with a status",
     [](Strike &strike, const Tool &tool, Dice &dice) {
         const int status = 1 + dice.number(255);
         strike.script = text("REAL \"$@\"; exit %1").arg(status);
         if (tool.judgedByStatus)
             expectReason(strike, tool, status);
     }},
    {"prints nothing",
     [](Strike &strike, const Tool &tool, Dice &) {
         strike.script = text("exec >/dev/null 2>&1");
         if (tool.read)
             expectReason(strike, tool, 0);
     }},
    {"prints a flood without a line end",
     [](Strike &strike, const Tool &tool, Dice &) {
         strike.script = text("head -c 10000000 /dev/zero | tr '\\0' x");
         expectReasonIfRead(strike, tool);
     }},
    {"prints invalid UTF-8",
     [](Strike &strike, const Tool &tool, Dice &) {
         strike.script = text("printf 'a\\377\\376\\n\\200'");
         expectReasonIfRead(strike, tool);
     }},
    {"ignores signals",
     [](Strike &strike, const Tool &, Dice &) { strike.script = text("trap '' TERM INT"); }},
    {"hangs, ignores signals, and the run is interrupted",
     [](Strike &strike, const Tool &, Dice &) {
         strike.script = text("trap '' TERM INT; : > \"$0.begun\"; exec sleep 1000");
         strike.event = Event::Interrupted;
         strike.signal = SIGINT;
         strike.waitsForTool = true;
         strike.outcome = Outcome::Interrupted;
     }},
    {"hangs, and the program is killed",
     [](Strike &strike, const Tool &, Dice &) {
         strike.script = text(": > \"$0.begun\"; exec sleep 1000");
         strike.event = Event::Killed;
         strike.waitsForTool = true;
     }},
    {"leaves a grandchild that holds the pipe",
     [](Strike &strike, const Tool &, Dice &) {
         strike.script = text("trap '' TERM INT HUP; sleep 1000 & trap - TERM INT HUP");
     }},
};

const char madeNoMovie[] = "^ffmpeg (encoded only|ended with status|wrote no|left its) ";

/// What only an encoder that reads a pipe can do.
const Fault encoderFaults[] = {
    {"begins late",
     [](Strike &strike, const Tool &, Dice &) { strike.script = text("sleep 0.5"); }},
    {"closes its input",
     [](Strike &strike, const Tool &, Dice &) {
         strike.script = text("exec <&-");
         strike.outcome = Outcome::Reason;
         strike.reason = text(madeNoMovie);
     }},
    {"closes its input and hangs",
     [](Strike &strike, const Tool &, Dice &) {
         strike.script = text("exec sleep 1000 <&-");
         strike.outcome = Outcome::Reason;
         strike.reason = text("^ffmpeg doesn't read its frames any more$");
     }},
    {"gets only a part of its frames",
     [](Strike &strike, const Tool &, Dice &dice) {
         strike.script =
             text("head -c %1 | REAL \"$@\"; exit $?").arg(1 + dice.number(sizeOfTwoFrames));
         strike.outcome = Outcome::Reason;
         strike.reason = text(madeNoMovie);
     }},
    {"gets its frames slowly",
     [](Strike &strike, const Tool &, Dice &) {
         strike.script = text("{ for i in 1 2 3 4 5; do sleep 0.1; head -c 8000; done; cat; } | "
                              "REAL \"$@\"; exit $?");
     }},
};

struct Happening
{
    const char *name;
    Event event;
    Outcome outcome;
    const char *reason; ///< a regular expression, when that is the end
    /// The part of a run in which it matters, in shares of its time.
    double from = 0;
    double to = 1.1;
};

const char temporaryDiskFull[] = "^no space left in the temporary folder |"
                                 "^its frames need .* free in the temporary folder |"
                                 "^calibration failed: .* No space left on device$";
const char movieDiskFull[] = "^no space left in the movie's folder |^its movie needs about |"
                             "^the rest of its movie needs about ";

const Happening happenings[] = {
    {"the program is killed", Event::Killed, Outcome::Movie, ""},
    {"the program is interrupted", Event::Interrupted, Outcome::Interrupted, ""},
    {"the program is stopped for a while", Event::Stopped, Outcome::Movie, ""},
    {"the recording is deleted", Event::RecordingDeleted, Outcome::Either, "", 0, 0.4},
    {"the recording is cut off", Event::RecordingTruncated, Outcome::Either, "", 0, 0.4},
    {"the recording becomes unreadable", Event::RecordingClosed, Outcome::Either, "", 0, 0.4},
    {"the movie's folder becomes read-only", Event::FolderClosed, Outcome::Either, ""},
    {"the temporary directory is removed", Event::WorkRemoved, Outcome::Either, ""},
    {"the temporary disk is small", Event::TemporaryDiskSmall, Outcome::Reason, temporaryDiskFull},
    {"the temporary disk fills", Event::TemporaryDiskFills, Outcome::Either, temporaryDiskFull, 0,
     0.7},
    {"the movie's disk is small", Event::MovieDiskSmall, Outcome::Reason, movieDiskFull},
    {"the movie's disk fills", Event::MovieDiskFills, Outcome::Either, movieDiskFull},
    {"the clock is changed", Event::ClockChanged, Outcome::Movie, ""},
};

void strikeWith(Strike &strike, const Tool &tool, const Fault &fault, Dice &dice)
{
    strike.tool = text(tool.name);
    QString call = text(tool.call);
    const QString frame = QString::number(dice.number(4));
    if (call.contains(QLatin1String("%1")))
        call = call.arg(frame);
    fault.make(strike, tool, dice);
    strike.script = QStringLiteral("case \"$*\" in %1) %2\n;; esac").arg(call, strike.script);
    strike.order.blendsAlternatingRows |= strike.tool == QLatin1String("cr2hdr");
    strike.order.hasDark = strike.order.hasDark || call.startsWith(QLatin1String("-a"));
    strike.name = QStringLiteral("%1 %2 %3").arg(strike.tool, text(tool.purpose), text(fault.name));
    strike.name = strike.name.simplified();
}

void strikeTool(Strike &strike, Dice &dice)
{
    const Tool &tool = tools[dice.number(std::size(tools))];
    strikeWith(strike, tool, toolFaults[dice.number(std::size(toolFaults))], dice);
}

void strikeFlowingTool(Strike &strike, Dice &dice)
{
    if (dice.number(3) == 0) {
        strikeWith(strike, flowingEncoder, encoderFaults[dice.number(std::size(encoderFaults))],
                   dice);
    } else {
        const Tool &tool = flowingTools[dice.number(std::size(flowingTools))];
        strikeWith(strike, tool, toolFaults[dice.number(std::size(toolFaults))], dice);
    }
}

void strikeRun(Strike &strike, Dice &dice)
{
    const Happening &happening = happenings[dice.number(std::size(happenings))];
    strike.event = happening.event;
    strike.outcome = happening.outcome;
    strike.reason = text(happening.reason);
    strike.moment = happening.from + dice.share() * (happening.to - happening.from);
    strike.space = 0.1 + dice.share() * 0.8;
    constexpr int endingSignals[] = {SIGINT, SIGTERM, SIGHUP};
    strike.signal = endingSignals[dice.number(3)];
    strike.name = text(happening.name);
}

} // namespace

QStringList Order::options() const
{
    QStringList options{QStringLiteral("--jobs"), QString::number(jobs)};
    // Room for two frames, so that most of the tools' work is still to come at any moment.
    if (recipe.isEmpty())
        options << QStringLiteral("--format") << format;
    else
        options << QStringLiteral("--recipe") << recipe << QStringLiteral("--buffer")
                << QStringLiteral("180000");
    if (mergesNeighbours)
        options << QStringLiteral("--hdr");
    if (blendsAlternatingRows)
        options << QStringLiteral("--dual-iso");
    return options;
}

QString Order::nameOfMovie() const
{
    return QStringLiteral("%1 %2 %3 %4 %5")
        .arg(recipe, format)
        .arg(mergesNeighbours)
        .arg(blendsAlternatingRows)
        .arg(hasDark);
}

namespace {

Strike ordered(Dice &dice)
{
    Strike strike;
    strike.order.jobs = 1 + dice.number(3);
    strike.order.format = dice.number(3) == 0 ? QStringLiteral("avi") : QStringLiteral("mov");
    strike.order.mergesNeighbours = dice.number(4) == 0;
    strike.order.blendsAlternatingRows = dice.number(6) == 0;
    strike.order.hasDark = dice.number(6) == 0;
    strike.keepsWork = dice.number(4) == 0;
    return strike;
}

} // namespace

bool isOnTemporaryDisk(Event event)
{
    return event == Event::TemporaryDiskSmall || event == Event::TemporaryDiskFills;
}

bool isOnMovieDisk(Event event)
{
    return event == Event::MovieDiskSmall || event == Event::MovieDiskFills;
}

Strike Strike::make(quint32 seed, int number)
{
    Dice dice(seed, number);
    Strike strike = ordered(dice);
    if (dice.number(2) == 0)
        strikeTool(strike, dice);
    else
        strikeRun(strike, dice);
    return strike;
}

Strike Strike::makeFlowing(quint32 seed, int number)
{
    Dice dice(seed, number);
    Strike strike = ordered(dice);
    const bool isForWeb = strike.order.format == QLatin1String("avi");
    strike.order.format = isForWeb ? QStringLiteral("mp4") : QStringLiteral("mov");
    strike.order.recipe = isForWeb ? QStringLiteral("web") : QStringLiteral("prores-lt");
    if (dice.number(2) == 0)
        strikeFlowingTool(strike, dice);
    else
        strikeRun(strike, dice);
    // Fewer frames at a time may still find room.
    if (strike.event == Event::TemporaryDiskSmall)
        strike.outcome = Outcome::Either;
    return strike;
}
