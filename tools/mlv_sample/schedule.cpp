// SPDX-License-Identifier: MIT
#include "mlv_sample/schedule.h"

#include "mlv_sample/random.h"
#include "mlv_sample/sound.h"

#include <algorithm>
#include <cmath>

namespace sample {

namespace {

constexpr std::int64_t pictureStartUs = 2000000; // room for sound that starts earlier

std::uint64_t timestampOf(double secondsOfPicture)
{
    const std::int64_t us = pictureStartUs + std::llround(secondsOfPicture * 1e6);
    return static_cast<std::uint64_t>(std::max<std::int64_t>(us, 0));
}

void addFrames(std::vector<Event> &events, const Settings &settings)
{
    for (int frame = 0; frame < settings.frames; ++frame) {
        Event event{Event::Kind::Frame, frame, timestampOf(frame / settings.frameRate())};
        if (settings.hdrStops > 0) {
            Event change{Event::Kind::Exposure, 0, event.timestamp};
            change.stops = frame % 2 == 1 ? settings.hdrStops : 0;
            events.push_back(change);
        }
        if (!settings.droppedFrames.contains(frame))
            events.insert(events.end(), settings.repeatedFrames.contains(frame) ? 2 : 1, event);
    }
}

// The sound is as long as the picture. Unless the settings give their length, there are as many
// pieces as frames: some readers take one of each in turn.
void addSound(std::vector<Event> &events, const Settings &settings)
{
    const double pieceSeconds =
        settings.soundPieceMs > 0 ? settings.soundPieceMs / 1000.0 : 1 / settings.frameRate();
    const std::int64_t delay = static_cast<std::int64_t>(settings.soundDelayMs) * soundRate / 1000;
    const std::int64_t length = std::llround(settings.seconds() * soundRate);
    std::int64_t next = 0;
    for (int number = 0; next < length; ++number) {
        const std::int64_t start = next;
        next =
            std::min<std::int64_t>(std::llround((number + 1) * pieceSeconds * soundRate), length);
        Event event{Event::Kind::Sound, number,
                    timestampOf(static_cast<double>(delay + start) / soundRate)};
        event.firstSample = delay + start;
        event.sampleCount = static_cast<std::size_t>(next - start);
        if (!settings.droppedSound.contains(number))
            events.push_back(event);
    }
}

void addChanges(std::vector<Event> &events, const Settings &settings)
{
    const std::uint64_t half = timestampOf(settings.seconds() / 2);
    Event change{Event::Kind::Exposure, 0, half};
    change.stops = 1; // only said, not done: the frames stay what they are
    events.push_back(change);
    events.push_back({Event::Kind::Lens, 0, half});
}

/// Right before the frame in the middle.
void addLaterLevels(std::vector<Event> &events, const Settings &settings)
{
    const int frame = settings.frames / 2;
    events.push_back({Event::Kind::RawInfo, 0, timestampOf(frame / settings.frameRate())});
}

void disorder(std::vector<Event> &events, std::uint64_t seed)
{
    Random random(seed);
    for (std::size_t left = events.size(); left > 1; --left)
        std::swap(events[left - 1], events[random.next() % left]);
}

} // namespace

std::vector<Event> schedule(const Settings &settings)
{
    std::vector<Event> events;
    if (settings.changeSettings)
        addChanges(events, settings);
    if (settings.laterBlack >= 0)
        addLaterLevels(events, settings);
    addFrames(events, settings);
    if (settings.sound)
        addSound(events, settings);
    std::stable_sort(events.begin(), events.end(), [](const Event &one, const Event &other) {
        return one.timestamp < other.timestamp;
    });
    if (settings.shuffle)
        disorder(events, settings.seed);
    return events;
}

} // namespace sample
