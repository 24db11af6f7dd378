// SPDX-License-Identifier: MIT
#include "mlv_dump/clipchunks.h"

#include "mlv_dump/text.h"

#include <algorithm>
#include <bit>
#include <cinttypes>
#include <string>
#include <string_view>

namespace mlvdump {
namespace {

constexpr const char *program = "Filmwright mlv_dump " FILMWRIGHT_VERSION;

/// The fixed part of "bext"; the coding history follows. Texts are filled with NULs.
struct BroadcastExtension
{
    std::array<char, 256> description{};
    std::array<char, 32> originator{};
    std::array<char, 32> originatorReference{};
    std::array<char, 10> originationDate{};
    std::array<char, 8> originationTime{};
    std::array<std::uint16_t, 4> timeReference{}; ///< one number, the lowest part first
    std::uint16_t version = 1;
    std::array<std::byte, 64> umid{};
    std::array<std::int16_t, 5> loudness{};
    std::array<std::byte, 180> reserved{};
};
static_assert(sizeof(BroadcastExtension) == 602);

template <std::size_t size>
void fill(std::array<char, size> &field, std::string_view text)
{
    std::copy_n(text.begin(), std::min(size, text.size()), field.begin());
}

template <typename Layout>
std::string bytesOf(const Layout &layout)
{
    const auto bytes = mlv::encodeLayout(layout);
    return {reinterpret_cast<const char *>(bytes.data()), bytes.size()};
}

/// Chunks begin at even places; their size doesn't count the byte that is needed for it.
std::string chunk(const std::string &type, const std::string &data)
{
    return type + bytesOf(static_cast<std::uint32_t>(data.size())) + data +
           std::string(data.size() % 2, '\0');
}

std::string codingHistory(const mlv::WaveInfo &info)
{
    const std::string mode = info.channels == 1   ? "mono"
                             : info.channels == 2 ? "stereo"
                                                  : "multitrack";
    return format("A=PCM,F=%u,W=%u,M=%s,T=%s\r\n", info.samplesPerSecond,
                  unsigned{info.bitsPerSample}, mode.c_str(), program);
}

std::string broadcastExtension(const Slate &slate, std::uint64_t timeReference,
                               const CameraTime *begin, const mlv::WaveInfo &info)
{
    BroadcastExtension extension;
    fill(extension.description, slate.reel);
    fill(extension.originator, program);
    fill(extension.originatorReference, format("%016" PRIx64, slate.guid));
    if (begin != nullptr) {
        const std::string text = timeText(*begin);
        fill(extension.originationDate, text);
        fill(extension.originationTime, std::string_view(text).substr(text.find(' ') + 1));
    }
    extension.timeReference = std::bit_cast<std::array<std::uint16_t, 4>>(timeReference);
    return bytesOf(extension) + codingHistory(info);
}

std::string escaped(std::string_view text)
{
    std::string result;
    for (const char c : text) {
        switch (c) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        default:
            result += c;
        }
    }
    return result;
}

std::string element(const char *name, const std::string &value)
{
    return format("<%s>%s</%s>\n", name, value.c_str(), name);
}

std::string speed(const Slate &slate, std::uint64_t timeReference, const mlv::WaveInfo &info)
{
    const std::string rate = format("%u/%u", slate.rate.numerator, slate.rate.denominator);
    const std::string samples = std::to_string(info.samplesPerSecond);
    return "<SPEED>\n" + element("MASTER_SPEED", rate) + element("CURRENT_SPEED", rate) +
           element("TIMECODE_RATE", rate) + element("TIMECODE_FLAG", "NDF") +
           element("FILE_SAMPLE_RATE", samples) +
           element("AUDIO_BIT_DEPTH", std::to_string(info.bitsPerSample)) +
           element("DIGITIZER_SAMPLE_RATE", samples) +
           element("TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_HI", std::to_string(timeReference >> 32U)) +
           element("TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_LO",
                   std::to_string(timeReference & 0xffffffffU)) +
           element("TIMESTAMP_SAMPLE_RATE", samples) + "</SPEED>\n";
}

/// Elements without a value are left out, as the format wants it.
std::string ixml(const Slate &slate, std::uint64_t timeReference, const mlv::WaveInfo &info)
{
    const std::string reel = escaped(slate.reel);
    const std::string names =
        reel.empty() ? std::string() : element("SCENE", reel) + element("TAPE", reel);
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<BWFXML>\n" +
           element("IXML_VERSION", "1.5") + names + element("TAKE", "1") +
           element("CIRCLED", "FALSE") + element("FILE_UID", format("%016" PRIx64, slate.guid)) +
           speed(slate, timeReference, info) + "</BWFXML>\n";
}

} // namespace

std::string clipChunks(const Slate &slate, std::uint64_t firstFrame, const mlv::WaveInfo &info)
{
    const std::uint64_t timeReference =
        slate.rate.samplesOf(slate.firstNumber + firstFrame, info.samplesPerSecond);
    std::optional<CameraTime> begin = slate.begin;
    if (begin) {
        *begin += std::chrono::microseconds(
            static_cast<std::int64_t>(slate.rate.samplesOf(firstFrame, 1000000)));
    }
    return chunk("bext",
                 broadcastExtension(slate, timeReference, begin ? &*begin : nullptr, info)) +
           chunk("iXML", ixml(slate, timeReference, info));
}

} // namespace mlvdump
