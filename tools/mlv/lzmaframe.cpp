// SPDX-License-Identifier: MIT
#include "mlv/lzmaframe.h"

#include "raw/error.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <lzma.h>

namespace mlv {
namespace {

constexpr std::size_t sizeFieldBytes = 4;
constexpr std::size_t propertyBytes = 5;

const std::uint8_t *asUnsigned(const std::byte *bytes)
{
    return reinterpret_cast<const std::uint8_t *>(bytes);
}

struct OptionsDeleter
{
    void operator()(lzma_options_lzma *options) const { std::free(options); }
};
using Options = std::unique_ptr<lzma_options_lzma, OptionsDeleter>;

Options decodeProperties(std::span<const std::byte> properties)
{
    lzma_filter filter{LZMA_FILTER_LZMA1, nullptr};
    if (lzma_properties_decode(&filter, nullptr, asUnsigned(properties.data()),
                               properties.size()) != LZMA_OK)
        throw raw::Error("has an LZMA frame with impossible properties");
    return Options(static_cast<lzma_options_lzma *>(filter.options));
}

struct Stream
{
    Stream() = default;
    Stream(const Stream &) = delete;
    Stream &operator=(const Stream &) = delete;
    ~Stream() { lzma_end(&state); }

    lzma_stream state = LZMA_STREAM_INIT;
};

} // namespace

bool canLzmaFrameHold(std::size_t size, std::size_t frameSize)
{
    // A match copies at most 273 bytes, and its eight or more decisions cost at least 0.02 bits
    // each.
    constexpr std::size_t bestRatio = 273 * 8 * 100 / (2 * 8);
    return size > sizeFieldBytes + propertyBytes && frameSize / size <= bestRatio;
}

void decodeLzmaFrame(std::span<const std::byte> data, std::span<std::byte> frame)
{
    std::uint32_t size = 0;
    if (data.size() < sizeFieldBytes + propertyBytes)
        throw raw::Error("has an LZMA frame without a whole header");
    std::memcpy(&size, data.data(), sizeof size);
    if (size != frame.size())
        throw raw::Error("has an LZMA frame of another size");
    const auto options = decodeProperties(data.subspan(sizeFieldBytes, propertyBytes));
    // Nothing is copied from further back than the start of the frame.
    options->dict_size = std::min(options->dict_size, std::max(size, 4096U));

    Stream stream;
    const lzma_filter filters[] = {{LZMA_FILTER_LZMA1, options.get()}, {LZMA_VLI_UNKNOWN, nullptr}};
    if (lzma_raw_decoder(&stream.state, filters) != LZMA_OK)
        throw raw::Error("has an LZMA frame that can't be read");
    const auto packed = data.subspan(sizeFieldBytes + propertyBytes);
    stream.state.next_in = asUnsigned(packed.data());
    stream.state.avail_in = packed.size();
    stream.state.next_out = reinterpret_cast<std::uint8_t *>(frame.data());
    stream.state.avail_out = frame.size();
    const lzma_ret result = lzma_code(&stream.state, LZMA_FINISH);
    // The end marker is optional, and padding may follow: only the frame has to be whole.
    if ((result != LZMA_OK && result != LZMA_STREAM_END && result != LZMA_BUF_ERROR) ||
        stream.state.avail_out != 0)
        throw raw::Error("has an LZMA frame that is damaged or cut off");
}

} // namespace mlv
