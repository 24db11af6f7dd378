// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>

/// The block layouts of the MLV 2.0 container.
///
/// All integers are little-endian. Every block but the file header starts with a BlockHeader; the
/// other structures describe what follows those 16 bytes. Text fields are padded with NUL and need
/// not end with one. Times are microseconds since the start of the recording.
///
/// The structures are read with decodeLayout(), never by casting a pointer into a buffer: a block
/// of a recording may be shorter or longer than its layout.
namespace mlv {

static_assert(std::endian::native == std::endian::little,
              "the layouts are copied from the file as they are");

using BlockType = std::array<char, 4>;

namespace blocktype {
inline constexpr BlockType fileHeader{'M', 'L', 'V', 'I'};
inline constexpr BlockType videoFrame{'V', 'I', 'D', 'F'};
inline constexpr BlockType audioFrame{'A', 'U', 'D', 'F'};
inline constexpr BlockType rawInfo{'R', 'A', 'W', 'I'};
inline constexpr BlockType rawCapture{'R', 'A', 'W', 'C'};
inline constexpr BlockType waveInfo{'W', 'A', 'V', 'I'};
inline constexpr BlockType clock{'R', 'T', 'C', 'I'};
inline constexpr BlockType identity{'I', 'D', 'N', 'T'};
inline constexpr BlockType exposure{'E', 'X', 'P', 'O'};
inline constexpr BlockType lens{'L', 'E', 'N', 'S'};
inline constexpr BlockType whiteBalance{'W', 'B', 'A', 'L'};
inline constexpr BlockType dualIso{'D', 'I', 'S', 'O'};
inline constexpr BlockType mark{'M', 'A', 'R', 'K'};
inline constexpr BlockType style{'S', 'T', 'Y', 'L'};
inline constexpr BlockType level{'E', 'L', 'V', 'L'};
inline constexpr BlockType info{'I', 'N', 'F', 'O'};
inline constexpr BlockType version{'V', 'E', 'R', 'S'};
inline constexpr BlockType debug{'D', 'E', 'B', 'G'};
inline constexpr BlockType filler{'N', 'U', 'L', 'L'};
inline constexpr BlockType backup{'B', 'K', 'U', 'P'};
inline constexpr BlockType index{'X', 'R', 'E', 'F'};
} // namespace blocktype

struct BlockHeader
{
    BlockType type;
    std::uint32_t size; ///< of the whole block in bytes, this header included
    std::uint64_t timestamp;
};

namespace videoclass {
inline constexpr std::uint16_t kindMask = 0x000f;
inline constexpr std::uint16_t raw = 0x01;
inline constexpr std::uint16_t losslessJpeg = 0x20;
inline constexpr std::uint16_t delta = 0x40;
inline constexpr std::uint16_t lzma = 0x80;
} // namespace videoclass

namespace audioclass {
inline constexpr std::uint16_t none = 0;
inline constexpr std::uint16_t wav = 1;
inline constexpr std::uint16_t lzma = 0x80;
} // namespace audioclass

/// "MLVI": the only block that has no time stamp behind its size.
#pragma pack(push, 4)
struct FileHeader
{
    BlockType type;
    std::uint32_t size;
    std::array<char, 8> version; ///< "v2.0"
    std::uint64_t guid;          ///< the same in all chunks of a recording
    std::uint16_t chunk;         ///< from 0
    std::uint16_t chunkCount;    ///< 0: not known
    std::uint32_t flags;
    std::uint16_t videoClass;
    std::uint16_t audioClass;
    std::uint32_t videoFrames; ///< in this chunk; 0 when the recording was not closed
    std::uint32_t audioFrames; ///< in this chunk; 0 when the recording was not closed
    std::uint32_t frameRateNumerator;
    std::uint32_t frameRateDenominator;
};
#pragma pack(pop)
static_assert(sizeof(FileHeader) == 52);

/// "RAWI": geometry, levels and colour of the frames.
struct RawInfo
{
    std::uint16_t width; ///< of the frames, pixels
    std::uint16_t height;
    std::uint32_t apiVersion; ///< 1
    std::uint32_t address;    ///< meaningless outside the camera
    std::int32_t bufferHeight;
    std::int32_t bufferWidth;
    std::int32_t bufferPitch; ///< bytes
    std::int32_t bufferSize;  ///< bytes
    std::int32_t bitsPerSample;
    std::int32_t blackLevel;
    std::int32_t whiteLevel;
    std::int32_t cropX;
    std::int32_t cropY;
    std::int32_t cropWidth;
    std::int32_t cropHeight;
    std::int32_t activeTop;
    std::int32_t activeLeft;
    std::int32_t activeBottom; ///< exclusive
    std::int32_t activeRight;  ///< exclusive
    std::int32_t exposureBiasNumerator;
    std::int32_t exposureBiasDenominator; ///< 0: no bias
    std::int32_t cfaPattern;              ///< one byte a cell of 2 x 2, first cell lowest
    std::int32_t calibrationIlluminant;
    std::array<std::int32_t, 18> colourMatrix; ///< XYZ to camera, 3 x 3 rationals, row by row
    std::int32_t dynamicRange;                 ///< EV x 100
};
static_assert(sizeof(RawInfo) == 164);

inline constexpr std::int32_t cfaRedGreenGreenBlue = 0x02010100;

/// "RAWC": how the sensor was sampled.
struct RawCapture
{
    std::uint16_t sensorWidth;
    std::uint16_t sensorHeight;
    std::uint16_t cropFactor; ///< x 100
    std::uint16_t reserved;
    std::uint8_t binningX;
    std::uint8_t skippingX;
    std::uint8_t binningY;
    std::uint8_t skippingY;
    std::int16_t offsetX; ///< unknownOffset: not known
    std::int16_t offsetY;
};
static_assert(sizeof(RawCapture) == 16);

inline constexpr std::int16_t unknownOffset = -32768;

/// "WAVI": the fields of a WAV file's "fmt " chunk.
struct WaveInfo
{
    std::uint16_t format; ///< 1: PCM
    std::uint16_t channels;
    std::uint32_t samplesPerSecond;
    std::uint32_t bytesPerSecond;
    std::uint16_t blockAlign;
    std::uint16_t bitsPerSample;
};
static_assert(sizeof(WaveInfo) == 16);

/// "RTCI": the clock of the camera at the block's time stamp.
struct Clock
{
    std::uint16_t second;
    std::uint16_t minute;
    std::uint16_t hour;
    std::uint16_t day;   ///< 1-31
    std::uint16_t month; ///< 0-11
    std::uint16_t year;  ///< minus 1900
    std::uint16_t dayOfWeek;
    std::uint16_t dayOfYear;
    std::uint16_t daylightSaving;
    std::int16_t gmtOffset;
    std::array<char, 8> zone;
};
static_assert(sizeof(Clock) == 28);

/// "IDNT": the camera.
struct Identity
{
    std::array<char, 32> name; ///< maker first
    std::uint32_t model;
    std::array<char, 32> serial;
};
static_assert(sizeof(Identity) == 68);

/// "EXPO"
struct Exposure
{
    std::uint32_t isoMode; ///< 0: set by hand
    std::uint32_t iso;
    std::uint32_t isoAnalog;   ///< the camera's own code
    std::uint32_t digitalGain; ///< 1/1024 EV
    std::uint64_t shutter;     ///< microseconds
};
static_assert(sizeof(Exposure) == 24);

/// "LENS"
struct Lens
{
    std::uint16_t focalLength;   ///< mm
    std::uint16_t focusDistance; ///< 65535: infinity
    std::uint16_t aperture;      ///< f-number x 100, 0: not known
    std::uint8_t stabiliser;
    std::uint8_t autofocus;
    std::uint32_t flags;
    std::uint32_t id;
    std::array<char, 32> name;
    std::array<char, 32> serial;
};
static_assert(sizeof(Lens) == 80);

enum class WhiteBalanceMode : std::uint32_t {
    Auto = 0,
    Daylight = 1,
    Cloudy = 2,
    Tungsten = 3,
    Fluorescent = 4,
    Flash = 5,
    Custom = 6,
    Shade = 8,
    Kelvin = 9,
};

/// "WBAL". The gains are the camera's neutral, 1024 = 1.0: red 512 means that red is doubled.
struct WhiteBalance
{
    WhiteBalanceMode mode;
    std::uint32_t kelvin;
    std::uint32_t gainRed;
    std::uint32_t gainGreen;
    std::uint32_t gainBlue;
    std::int32_t shiftGreenMagenta;
    std::int32_t shiftBlueAmber;
};
static_assert(sizeof(WhiteBalance) == 28);

/// "DISO"
struct DualIso
{
    std::uint32_t mode; ///< 0: off
    std::uint32_t iso;
};
static_assert(sizeof(DualIso) == 8);

/// "MARK"
struct Mark
{
    std::uint32_t button;
};
static_assert(sizeof(Mark) == 4);

/// "STYL"
struct Style
{
    std::uint32_t id;
    std::int32_t contrast;
    std::int32_t sharpness;
    std::int32_t saturation;
    std::int32_t colourTone;
    std::array<char, 16> name;
};
static_assert(sizeof(Style) == 36);

/// "ELVL", 1/100 degree
struct Level
{
    std::uint32_t roll;
    std::uint32_t pitch;
};
static_assert(sizeof(Level) == 8);

/// "VERS": the text's length, then the text.
struct VersionText
{
    std::uint32_t length;
};
static_assert(sizeof(VersionText) == 4);

/// "DEBG": what the data are and their length, then the data.
struct DebugText
{
    std::uint32_t kind;
    std::uint32_t length;
};
static_assert(sizeof(DebugText) == 8);

/// "VIDF": frameSpace bytes of padding follow, then the frame.
struct VideoFrame
{
    std::uint32_t number; ///< from 0, gaps where the camera dropped frames
    std::uint16_t cropX;
    std::uint16_t cropY;
    std::uint16_t panX;
    std::uint16_t panY;
    std::uint32_t frameSpace;
};
static_assert(sizeof(VideoFrame) == 16);

/// "AUDF": frameSpace bytes of padding follow, then interleaved little-endian PCM.
struct AudioFrame
{
    std::uint32_t number; ///< from 0, counted apart from the video frames
    std::uint32_t frameSpace;
};
static_assert(sizeof(AudioFrame) == 8);

/// The layout at the start of `bytes`. What the bytes do not reach is zero, what they have beyond
/// the layout is ignored.
template <typename Layout>
Layout decodeLayout(std::span<const std::byte> bytes)
{
    static_assert(std::is_trivially_copyable_v<Layout>);
    Layout layout{};
    if (!bytes.empty())
        std::memcpy(&layout, bytes.data(), std::min(bytes.size(), sizeof layout));
    return layout;
}

/// The bytes of a layout as they stand in a file. The span lives as long as the layout.
template <typename Layout>
std::span<const std::byte, sizeof(Layout)> encodeLayout(const Layout &layout)
{
    static_assert(std::has_unique_object_representations_v<Layout>, "a layout has no padding");
    return std::as_bytes(std::span<const Layout, 1>(&layout, 1));
}

} // namespace mlv
