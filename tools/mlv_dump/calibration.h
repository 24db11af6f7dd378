// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/framedecoder.h"
#include "mlv_dump/flatfield.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <stdexcept>
#include <vector>

namespace mlvdump {

/// A dark frame or a flat field can't be used, for whatever footage. The text says which and why.
class CalibrationError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// A dark frame or a flat field is of another size or depth than the footage.
class ShapeMismatch : public CalibrationError
{
public:
    using CalibrationError::CalibrationError;
};

/// What is done to the samples of every frame: a dark frame is subtracted, black level kept, then a
/// flat field is applied. Nothing changes after construction, so that threads may share it.
class Calibration
{
public:
    /// Takes the first frame of each recording; an empty path means none. `format` is the
    /// footage's. Throws CalibrationError.
    Calibration(const std::filesystem::path &dark, const std::filesystem::path &flat,
                const mlv::FrameFormat &format);

    bool isEmpty() const { return m_dark.empty() && !m_flat; }
    const std::optional<FlatField> &flat() const { return m_flat; }

    /// Calibrates the samples of a frame in place.
    void apply(std::span<std::uint16_t> samples) const;

private:
    void subtractDark(std::span<std::uint16_t> samples) const;

    mlv::FrameFormat m_format;
    std::vector<std::uint16_t> m_dark; ///< empty: none
    std::optional<FlatField> m_flat;
};

} // namespace mlvdump
