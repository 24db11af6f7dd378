// SPDX-License-Identifier: MIT
// Recordings of a camera with known faults, and what is found of these.
#pragma once

#include "mlv_dump/repairsurvey.h"
#include "mlv_sample/settings.h"

#include <QMetaType>

#include <vector>

Q_DECLARE_METATYPE(sample::Settings)

/// A camera that films `subject` with a part of its sensor. FILMWRIGHT_FULL_FRAMES=1 asks for
/// frames of full size, with which the tests take minutes.
sample::Settings film(sample::Subject subject);

/// What is found in a recording with those settings.
mlvdump::FoundRepair foundRepair(const sample::Settings &settings,
                                 const mlvdump::RepairChoice &choice);

/// The places of the first frame at which pixels or lattices are faulty; those of the sensor's own
/// hot pixels aren't among them. Ordered.
std::vector<mlvdump::Place> faultyPlaces(const sample::Settings &settings);

/// The places of the first frame at which the repair replaces samples. Ordered.
std::vector<mlvdump::Place> repairedPlaces(const mlvdump::Repair &repair,
                                           const sample::Settings &settings);
