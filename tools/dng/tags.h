// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

/// The tags of TIFF 6.0, TIFF/EP, EXIF 2.3, DNG 1.4 and CinemaDNG that the tools use.
namespace dng::tag {

using Tag = std::uint16_t;

inline constexpr Tag newSubFileType = 254;
inline constexpr Tag imageWidth = 256;
inline constexpr Tag imageLength = 257;
inline constexpr Tag bitsPerSample = 258;
inline constexpr Tag compression = 259;
inline constexpr Tag photometricInterpretation = 262;
inline constexpr Tag fillOrder = 266;
inline constexpr Tag imageDescription = 270;
inline constexpr Tag make = 271;
inline constexpr Tag model = 272;
inline constexpr Tag stripOffsets = 273;
inline constexpr Tag orientation = 274;
inline constexpr Tag samplesPerPixel = 277;
inline constexpr Tag rowsPerStrip = 278;
inline constexpr Tag stripByteCounts = 279;
inline constexpr Tag xResolution = 282;
inline constexpr Tag planarConfiguration = 284;
inline constexpr Tag software = 305;
inline constexpr Tag dateTime = 306;
inline constexpr Tag subIfds = 330;
inline constexpr Tag cfaRepeatPatternDim = 33421;
inline constexpr Tag cfaPattern = 33422;
inline constexpr Tag exifIfd = 34665;
inline constexpr Tag gpsIfd = 34853;
inline constexpr Tag dngVersion = 50706;
inline constexpr Tag dngBackwardVersion = 50707;
inline constexpr Tag uniqueCameraModel = 50708;
inline constexpr Tag linearizationTable = 50712;
inline constexpr Tag blackLevel = 50714;
inline constexpr Tag whiteLevel = 50717;
inline constexpr Tag defaultScale = 50718;
inline constexpr Tag defaultCropOrigin = 50719;
inline constexpr Tag defaultCropSize = 50720;
inline constexpr Tag colorMatrix1 = 50721;
inline constexpr Tag asShotNeutral = 50728;
inline constexpr Tag baselineExposure = 50730;
inline constexpr Tag cameraSerialNumber = 50735;
inline constexpr Tag calibrationIlluminant1 = 50778;
inline constexpr Tag activeArea = 50829;
inline constexpr Tag timeCodes = 51043;
inline constexpr Tag frameRate = 51044;
inline constexpr Tag reelName = 51081;

// In the EXIF directory.
inline constexpr Tag exposureTime = 33434;
inline constexpr Tag fNumber = 33437;
inline constexpr Tag isoSpeedRatings = 34855;
inline constexpr Tag exifVersion = 36864;
inline constexpr Tag dateTimeOriginal = 36867;
inline constexpr Tag focalLength = 37386;
inline constexpr Tag subSecTimeOriginal = 37521;
inline constexpr Tag lensModel = 42036;
inline constexpr Tag lensSerialNumber = 42037;

} // namespace dng::tag

/// Values of compression.
namespace dng::compression {
inline constexpr std::uint16_t none = 1;
inline constexpr std::uint16_t losslessJpeg = 7;
} // namespace dng::compression

/// The value of photometricInterpretation for samples behind a colour filter pattern.
namespace dng::photometric {
inline constexpr std::uint16_t colourFilterArray = 32803;
} // namespace dng::photometric
