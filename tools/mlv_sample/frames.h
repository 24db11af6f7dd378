// SPDX-License-Identifier: MIT
// The frames of a recording, made one at a time in any order.
#pragma once

#include "mlv_sample/faults.h"
#include "mlv_sample/scene.h"
#include "mlv_sample/sensor.h"
#include "mlv_sample/settings.h"

#include <cstdint>
#include <vector>

namespace sample {

/// The frame in which the lamp goes on for the `tick`th time, from 0: half a second after each full
/// second.
int lampFrame(const Settings &settings, int tick);

/// Films the subject. Memory: a fixed number of values a pixel, however many frames are made.
class FrameMaker
{
public:
    explicit FrameMaker(const Settings &settings);
    FrameMaker(const FrameMaker &) = delete; // parts look at its settings
    FrameMaker &operator=(const FrameMaker &) = delete;

    /// The samples of frame `number`, row by row; valid until the next call.
    const std::vector<std::uint16_t> &make(int number);

private:
    Moment momentOf(int number) const;
    float lightAt(int x, int y, const Moment &moment) const;
    void draw(int left, int top, int right, int bottom, const Moment &moment);
    float gainOfRow(int y, int frame) const;

    Settings m_settings;
    Scene m_scene;
    Sensor m_sensor;
    Faults m_faults;
    std::vector<float> m_light;
    std::vector<std::uint16_t> m_samples;
};

} // namespace sample
