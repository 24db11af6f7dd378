// SPDX-License-Identifier: MIT
#include "filmedfaults.h"

#include "mlv_sample/faults.h"
#include "mlv_sample/recording.h"

#include <QTemporaryDir>

#include <algorithm>
#include <iterator>

using mlvdump::Place;

sample::Settings film(sample::Subject subject)
{
    const bool isFull = qEnvironmentVariableIntValue("FILMWRIGHT_FULL_FRAMES") != 0;
    sample::Settings settings;
    settings.subject = subject;
    settings.sound = false;
    settings.width = isFull ? 1736 : 640;
    settings.height = isFull ? 1160 : 404;
    settings.frames = 20;
    settings.crop = {72, 28};
    return settings;
}

mlvdump::FoundRepair foundRepair(const sample::Settings &settings,
                                 const mlvdump::RepairChoice &choice)
{
    const QTemporaryDir folder;
    auto file = settings;
    file.path = folder.filePath(QStringLiteral("a.MLV")).toStdString();
    sample::writeRecording(file);
    const mlv::Recording recording(file.path);
    const auto format = mlv::frameFormat(*recording.rawInfo());
    const mlvdump::Calibration none({}, {}, format);
    return mlvdump::findRepair(recording, file.path, choice, format, none, 2);
}

std::vector<Place> faultyPlaces(const sample::Settings &settings)
{
    const sample::Faults faults(settings);
    std::vector<Place> places;
    for (const auto &pixel : faults.pixels())
        places.push_back({pixel.place.y, pixel.place.x});
    for (const auto &[x, y] : faults.latticePlaces(0))
        places.push_back({y, x});
    std::sort(places.begin(), places.end());
    return places;
}

std::vector<Place> repairedPlaces(const mlvdump::Repair &repair, const sample::Settings &settings)
{
    const auto crop = sample::cropOf(settings, 0);
    std::vector<Place> places;
    std::ranges::copy_if(repair.pixels, std::back_inserter(places), [&](const Place &place) {
        return place.x >= crop.x && place.x < crop.x + settings.width && place.y >= crop.y &&
               place.y < crop.y + settings.height;
    });
    for (int y = crop.y; repair.lattice && y < crop.y + settings.height; ++y) {
        for (int x = crop.x; x < crop.x + settings.width; ++x)
            if (repair.lattice->has(x, y))
                places.push_back({y, x});
    }
    std::sort(places.begin(), places.end());
    places.erase(std::unique(places.begin(), places.end()), places.end());
    return places;
}
