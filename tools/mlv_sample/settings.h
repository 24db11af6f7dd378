// SPDX-License-Identifier: MIT
// What a recording shall be like.
#pragma once

#include <array>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace sample {

enum class Subject {
    Chart,     ///< the moving chart
    Dark,      ///< lens cap on
    Flat,      ///< an evenly lit wall
    Stars,     ///< a night sky on a tripod
    Texture,   ///< fine fabrics on a tripod
    Specular,  ///< glittering points on a tripod
    Grain,     ///< fine grain that moves
    Landscape, ///< a bright sky over a moving meadow
};

/// Whether everything of the scene may move from frame to frame.
constexpr bool isMoving(Subject subject)
{
    return subject == Subject::Grain || subject == Subject::Landscape;
}

/// A place in the sensor's read-out, of which the frame is a part.
struct Place
{
    int x;
    int y;
    bool operator==(const Place &) const = default;
};

/// Places of the read-out that repeat every so many columns and lines.
struct Lattice
{
    int columns = 1;
    int lines = 1;
    std::vector<Place> cell; ///< within the first columns and lines
};

/// What is wrong with the sensor.
struct SensorFaults
{
    int hotPixels = 0;
    int coldPixels = 0;
    int stuckPixels = 0;
    std::vector<Lattice> lattices{};
    double latticeRed = 0.88; ///< of the light is what a red sample of a lattice measures
    double latticeBlue = 1.1;
    int firstLatticeLine = 0; ///< of the read-out
    int lastLatticeLine = 65535;
    std::array<double, 8> columnGains{1, 1, 1, 1, 1, 1, 1, 1}; ///< from column 0 of the read-out on

    bool any() const
    {
        return hotPixels + coldPixels + stuckPixels > 0 || !lattices.empty() ||
               columnGains != SensorFaults().columnGains;
    }
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
    int setKelvin = 0; ///< the camera's white balance; 0: a white card in daylight

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
    int clip = 0;           ///< level of 14 bits at which the sensor is full; 0: the usual one
    int laterBlack = -1;    ///< black level that is noted halfway; -1: nothing is
    int laterWhite = 0;     ///< white level that is noted with it
    std::uint32_t cameraModel = 0x80F10001; ///< the camera's code
    std::array<int, 9> recordedMatrix{};    ///< times 10000; all 0: the true one
    std::array<double, 3> light{1, 1, 1};   ///< its colour, linear sRGB
    SensorFaults faults;
    Place crop{0, 0};  ///< of the frame's corner in the read-out
    bool pans = false; ///< the frame wanders over the read-out

    int chunks = 1;
    std::set<int> lostChunks;    ///< of the continuations, which aren't written
    bool lowerCaseParts = false; ///< the names of continuations, as some systems copy them
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
