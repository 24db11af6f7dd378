// SPDX-License-Identifier: MIT
#include "mlv_dump/sound.h"

#include "mlv_dump/clipchunks.h"
#include "mlv_dump/soundplan.h"
#include "output/outputfile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

namespace mlvdump {
namespace {

constexpr std::uint16_t pcm = 1;

/// The first bytes of a WAV file.
struct FileHead
{
    std::array<char, 4> riff{'R', 'I', 'F', 'F'};
    std::uint32_t riffBytes = 0; ///< behind this field
    std::array<char, 4> wave{'W', 'A', 'V', 'E'};
};

/// What stands before the samples.
struct SampleHead
{
    std::array<char, 4> fmt{'f', 'm', 't', ' '};
    std::uint32_t fmtBytes = sizeof(mlv::WaveInfo);
    mlv::WaveInfo info{};
    std::array<char, 4> data{'d', 'a', 't', 'a'};
    std::uint32_t dataBytes = 0;
};
static_assert(sizeof(FileHead) + sizeof(SampleHead) == 44);

constexpr std::uint64_t maxFileBytes = std::numeric_limits<std::uint32_t>::max();

bool isReadable(const mlv::WaveInfo &info)
{
    const bool known = info.format == pcm && info.channels >= 1 && info.channels <= 8 &&
                       info.samplesPerSecond >= 4000 && info.samplesPerSecond <= 384000;
    return known && info.bitsPerSample >= 8 && info.bitsPerSample <= 32 &&
           info.bitsPerSample % 8 == 0;
}

/// The fields that follow from others, as they have to be.
mlv::WaveInfo completed(mlv::WaveInfo info)
{
    info.blockAlign = static_cast<std::uint16_t>(info.channels * info.bitsPerSample / 8);
    info.bytesPerSecond = info.samplesPerSecond * info.blockAlign;
    return info;
}

/// How far behind the picture the sound starts, bytes of whole samples; negative: before it.
std::int64_t leadBytes(std::uint64_t soundStart, std::uint64_t pictureStart,
                       const mlv::WaveInfo &info)
{
    const double difference = static_cast<double>(soundStart) - static_cast<double>(pictureStart);
    constexpr double aDay = 86400e6;
    const double microseconds = std::clamp(difference, -aDay, aDay);
    return std::llround(microseconds * info.samplesPerSecond / 1e6) * info.blockAlign;
}

/// Where the sound of a clip, or of a picture that is cut, ends.
std::uint64_t mostBytes(const PictureTime &picture, const std::optional<Slate> &slate,
                        const mlv::WaveInfo &info)
{
    if (slate)
        return slate->rate.samplesOf(picture.frames, info.samplesPerSecond) * info.blockAlign;
    if (!picture.isCut || picture.seconds <= 0)
        return endless;
    constexpr double aDay = 86400;
    const auto samples = std::llround(std::min(picture.seconds, aDay) * info.samplesPerSecond);
    return static_cast<std::uint64_t>(samples) * info.blockAlign;
}

void writeSilence(output::OutputFile &file, std::uint64_t bytes, const mlv::WaveInfo &info)
{
    // 8-bit samples are unsigned in a WAV file.
    const std::vector<std::byte> silence(65536, std::byte(info.bitsPerSample == 8 ? 0x80 : 0));
    while (bytes > 0) {
        const auto part = std::min<std::uint64_t>(bytes, silence.size());
        file.write(std::span(silence).first(static_cast<std::size_t>(part)));
        bytes -= part;
    }
}

/// Writes what stands before the samples; `chunks` belong between the two heads.
void writeHead(const mlv::WaveInfo &info, const std::string &chunks, std::uint64_t bytes,
               output::OutputFile &file)
{
    SampleHead samples;
    samples.info = info;
    samples.dataBytes = static_cast<std::uint32_t>(bytes);
    constexpr std::uint64_t uncounted = 8;
    FileHead head;
    head.riffBytes = static_cast<std::uint32_t>(sizeof head + chunks.size() + sizeof samples +
                                                bytes + bytes % 2 - uncounted);
    file.write(mlv::encodeLayout(head));
    file.write(std::as_bytes(std::span(chunks)));
    file.write(mlv::encodeLayout(samples));
}

void writePlan(const mlv::Recording &recording, const SoundPlan &plan, const mlv::WaveInfo &info,
               output::OutputFile &file)
{
    std::vector<std::byte> data;
    for (const auto &piece : plan.pieces) {
        writeSilence(file, piece.silence, info);
        data.resize(std::size_t{piece.skip} + piece.bytes);
        recording.read(*piece.block, data);
        file.write(std::span<const std::byte>(data).subspan(piece.skip));
    }
}

} // namespace

void writeSound(const mlv::Recording &recording, const PictureTime &picture,
                const std::optional<Slate> &slate, const SourceFiles &sources,
                const std::filesystem::path &path, Output &output)
{
    if (recording.audioBlocks().empty())
        return;
    if (!recording.waveInfo()) {
        output.warning("the recording does not say what its sound is (no WAVI block): left out");
        return;
    }
    const bool compressed = (recording.header().audioClass & mlv::audioclass::lzma) != 0;
    if (compressed || !isReadable(*recording.waveInfo())) {
        output.warning("the sound is of a kind that can't be read and is left out");
        return;
    }
    const auto info = completed(*recording.waveInfo());
    const auto &blocks = recording.audioBlocks();
    std::uint64_t mostSilence =
        static_cast<std::uint64_t>(std::clamp(picture.seconds, 0.0, 86400.0) * info.bytesPerSecond);
    for (const auto &block : blocks)
        mostSilence += block.size;
    const auto lead = leadBytes(blocks.front().timestamp, picture.start, info);
    const std::uint64_t most = mostBytes(picture, slate, info);
    const auto plan = planSound(blocks, lead, std::min(mostSilence, maxFileBytes), most);
    for (const auto &warning : plan.warnings)
        output.warning(warning);
    const std::uint64_t bytes = slate ? most : plan.bytes;
    const auto chunks = slate ? clipChunks(*slate, picture.firstFrame, info) : std::string();
    // Chunks have an even size.
    if (bytes + bytes % 2 > maxFileBytes - sizeof(FileHead) - chunks.size() - sizeof(SampleHead))
        throw RefusedOutput("The sound is too long for a WAV file");
    sources.requireOther(path);
    output::OutputFile file(path);
    writeHead(info, chunks, bytes, file);
    writePlan(recording, plan, info, file);
    writeSilence(file, bytes - plan.bytes + bytes % 2, info);
    file.commit();
}

} // namespace mlvdump
