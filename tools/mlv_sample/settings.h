// SPDX-License-Identifier: MIT
// What a recording shall be like.
#pragma once

#include <cstdint>
#include <set>
#include <string>

namespace sample {

enum class Subject {
    Chart, ///< the moving chart
    Dark,  ///< lens cap on
    Flat,  ///< an evenly lit wall
};

enum class Compression { None, Lossless, Lzma };

enum class LosslessShape {
    Camera, ///< two components; a line holds two rows
    Folded, ///< one component; a line holds two rows
    Plain,  ///< one component; a line is a row
};

struct Settings
{
    std::string path;
    int width = 1280;
    int height = 720;
    int frames = 48;
    int bits = 14;
    std::uint32_t rateNumerator = 24000;
    std::uint32_t rateDenominator = 1000;
    bool sound = true;
    Subject subject = Subject::Chart;
    std::uint64_t seed = 1;
    int iso = 100;

    int highIso = 0;       ///< dual ISO: the sensitivity of every other pair of rows; 0: none
    int dualIsoPhase = 0;  ///< the first row of a low pair, 0 to 3
    double hdrStops = 0;   ///< every other frame is this much brighter
    std::string truthPath; ///< also write the scene without noise, at `iso`, in 16 bits
    bool perfect = false;  ///< no noise and no dark signal

    Compression compression = Compression::None;
    LosslessShape losslessShape = LosslessShape::Camera;
    int predictor = 1; ///< of lossless JPEG, 1 to 7

    int sampledLines = 1;   ///< of the sensor, for each line of the frame
    int sampledColumns = 1; ///< of the sensor, for each column of the frame
    int recordedWhite = 0;  ///< white level that the recording states; 0: where its samples clip
    int recordedBlack = -1; ///< black level that the recording states; -1: that of its samples

    int chunks = 1;
    bool shuffle = false;
    std::set<int> droppedFrames;
    std::set<int> droppedSound;
    std::set<int> repeatedFrames;
    std::set<std::string> omittedBlocks; ///< four-letter types
    int soundDelayMs = 0;                ///< the sound starts this much after the picture
    int soundPieceMs = 0;                ///< length of a piece of sound; 0: that of a frame
    bool cameraPadding = false;          ///< padding and unknown blocks as cameras write them
    bool changeSettings = false;         ///< exposure and lens change halfway
    bool zeroCounts = false;             ///< as if the recording had never been closed
    std::uint64_t cutBytes = 0;          ///< missing at the end of the last file

    double frameRate() const
    {
        return static_cast<double>(rateNumerator) / static_cast<double>(rateDenominator);
    }
    double seconds() const { return frames / frameRate(); }
};

} // namespace sample
