// SPDX-License-Identifier: MIT
#include "mlv_sample/recording.h"

#include "mlv_sample/chunkwriter.h"
#include "mlv_sample/frames.h"
#include "mlv_sample/losslessjpeg.h"
#include "mlv_sample/lzmaframe.h"
#include "mlv_sample/metadata.h"
#include "mlv_sample/random.h"
#include "mlv_sample/schedule.h"
#include "mlv_sample/sound.h"

#include "raw/samples.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <vector>

namespace sample {

namespace {

constexpr std::size_t headBoundary = 512;
constexpr int focalLength = 35;

std::vector<std::string> chunkPaths(const Settings &settings)
{
    std::vector<std::string> paths{settings.path};
    for (int chunk = 1; chunk < settings.chunks; ++chunk) {
        std::string path = settings.path;
        path.replace(
            path.size() - 2, 2,
            {static_cast<char>('0' + (chunk - 1) / 10), static_cast<char>('0' + (chunk - 1) % 10)});
        if (settings.lowerCaseParts)
            path[path.size() - 3] = 'm';
        paths.push_back(path);
    }
    return paths;
}

std::span<const std::byte> bytesOf(std::string_view text)
{
    return std::as_bytes(std::span(text));
}

class Recorder
{
public:
    explicit Recorder(const Settings &settings)
        : m_settings(settings)
        , m_frames(settings)
    {
    }

    void writeChunk(const std::string &path, int chunk, std::span<const Event> events)
    {
        m_header = fileHeader(m_settings, chunk);
        ChunkWriter writer(path, m_header);
        if (chunk == 0)
            writeHead(writer);
        for (const Event &event : events) {
            write(writer, event);
            if (m_settings.cameraPadding)
                writer.fillTo(headBoundary);
        }
        if (m_settings.zeroCounts)
            m_header.videoFrames = m_header.audioFrames = 0;
        writer.close(m_header);
    }

private:
    template <typename Layout>
    void put(ChunkWriter &writer, mlv::BlockType type, const Layout &layout,
             std::uint64_t timestamp = 0, std::span<const std::byte> rest = {})
    {
        if (!m_settings.omittedBlocks.contains(std::string(type.data(), type.size())))
            writer.write(type, timestamp, {mlv::encodeLayout(layout), rest});
    }

    void writeHead(ChunkWriter &writer)
    {
        namespace type = mlv::blocktype;
        put(writer, type::rawInfo, rawInfo(m_settings));
        put(writer, type::rawCapture, rawCapture(m_settings));
        if (m_settings.sound)
            put(writer, type::waveInfo, waveInfo());
        put(writer, type::exposure, exposure(m_settings, 0));
        put(writer, type::lens, lens(focalLength));
        put(writer, type::clock, clock());
        put(writer, type::identity, identity(m_settings));
        put(writer, type::whiteBalance, whiteBalance(m_settings));
        if (m_settings.highIso > 0)
            put(writer, type::dualIso, dualIso(m_settings));
        std::string text = versionText();
        const mlv::VersionText length{static_cast<std::uint32_t>(text.size())};
        text.resize((text.size() + 3) / 4 * 4);
        put(writer, type::version, length, 0, bytesOf(text));
        writeText(writer, type::info, infoText(m_settings));
        if (m_settings.cameraPadding)
            writeText(writer, {'X', 'T', 'R', 'A'}, "a block that no reader knows");
        writer.fillTo(headBoundary);
    }

    void writeText(ChunkWriter &writer, mlv::BlockType type, const std::string &text)
    {
        if (!m_settings.omittedBlocks.contains(std::string(type.data(), type.size())))
            writer.write(type, 0, {bytesOf(text)});
    }

    void write(ChunkWriter &writer, const Event &event)
    {
        switch (event.kind) {
        case Event::Kind::Frame:
            writeFrame(writer, event);
            break;
        case Event::Kind::Sound:
            writeSound(writer, event);
            break;
        case Event::Kind::Exposure:
            put(writer, mlv::blocktype::exposure, exposure(m_settings, event.stops),
                event.timestamp);
            break;
        case Event::Kind::RawInfo:
            put(writer, mlv::blocktype::rawInfo, laterRawInfo(m_settings), event.timestamp);
            break;
        case Event::Kind::Lens:
            put(writer, mlv::blocktype::lens, lens(2 * focalLength), event.timestamp);
            break;
        }
    }

    void writeFrame(ChunkWriter &writer, const Event &event)
    {
        const std::vector<std::byte> padding(m_settings.cameraPadding ? 224 : 0, std::byte{0x5a});
        mlv::VideoFrame frame{};
        frame.number = static_cast<std::uint32_t>(event.number);
        frame.frameSpace = static_cast<std::uint32_t>(padding.size());
        const Place crop = cropOf(m_settings, event.number);
        frame.cropX = frame.panX = static_cast<std::uint16_t>(crop.x);
        frame.cropY = frame.panY = static_cast<std::uint16_t>(crop.y);
        writer.write(mlv::blocktype::videoFrame, event.timestamp,
                     {mlv::encodeLayout(frame), padding, payload(m_frames.make(event.number))});
        ++m_header.videoFrames;
    }

    const std::vector<std::byte> &payload(const std::vector<std::uint16_t> &samples)
    {
        if (m_settings.compression == Compression::Lossless) {
            return m_payload = encodeLosslessJpeg(samples, m_settings.width, m_settings.height,
                                                  m_settings.bits, m_settings.losslessShape,
                                                  m_settings.predictor);
        }
        m_payload.resize(raw::packedSize(samples.size(), m_settings.bits));
        raw::packSamples(samples, m_settings.bits, raw::WordOrder::LittleEndian, m_payload);
        if (m_settings.compression == Compression::Lzma)
            m_payload = encodeLzmaFrame(m_payload);
        return m_payload;
    }

    void writeSound(ChunkWriter &writer, const Event &event)
    {
        const std::vector<std::byte> padding(m_settings.cameraPadding ? 232 : 0, std::byte{0x5a});
        const mlv::AudioFrame header{static_cast<std::uint32_t>(event.number),
                                     static_cast<std::uint32_t>(padding.size())};
        const auto samples = makeSound(m_settings, event.firstSample, event.sampleCount);
        writer.write(mlv::blocktype::audioFrame, event.timestamp,
                     {mlv::encodeLayout(header), padding, std::as_bytes(std::span(samples))});
        ++m_header.audioFrames;
    }

    const Settings &m_settings;
    FrameMaker m_frames;
    mlv::FileHeader m_header{};
    std::vector<std::byte> m_payload;
};

void cutEnd(const std::string &path, std::uint64_t bytes)
{
    const std::uint64_t size = std::filesystem::file_size(path);
    std::filesystem::resize_file(path, size - std::min(size, bytes));
}

void writeFiles(const Settings &settings, const std::vector<std::string> &paths)
{
    const std::vector<Event> events = schedule(settings);
    Recorder recorder(settings);
    for (std::size_t chunk = 0; chunk < paths.size(); ++chunk) {
        const std::size_t first = events.size() * chunk / paths.size();
        const std::size_t next = events.size() * (chunk + 1) / paths.size();
        recorder.writeChunk(paths[chunk], static_cast<int>(chunk),
                            std::span(events).subspan(first, next - first));
    }
    cutEnd(paths.back(), settings.cutBytes);
    for (const int lost : settings.lostChunks)
        if (lost >= 0 && lost + 1 < settings.chunks)
            std::filesystem::remove(paths[static_cast<std::size_t>(lost) + 1]);
}

/// The same scene as a perfect camera would record it at one sensitivity.
Settings truthOf(const Settings &settings)
{
    Settings truth;
    truth.path = settings.truthPath;
    truth.width = settings.width;
    truth.height = settings.height;
    truth.frames = settings.frames;
    truth.rateNumerator = settings.rateNumerator;
    truth.rateDenominator = settings.rateDenominator;
    truth.subject = settings.subject;
    truth.crop = settings.crop;
    truth.pans = settings.pans;
    truth.seed = settings.seed;
    truth.iso = settings.iso;
    truth.bits = 16;
    truth.sound = false;
    truth.perfect = true;
    return truth;
}

} // namespace

void writeRecording(const Settings &settings)
{
    const std::vector<std::string> paths = chunkPaths(settings);
    try {
        writeFiles(settings, paths);
    } catch (...) {
        for (const std::string &path : paths) {
            std::error_code ignored; // the first failure is the one to report
            std::filesystem::remove(path, ignored);
        }
        throw;
    }
    if (!settings.truthPath.empty())
        writeRecording(truthOf(settings));
}

} // namespace sample
