// SPDX-License-Identifier: MIT
#include "mlv_sample/lzmaframe.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <lzma.h>
#include <stdexcept>

namespace sample {

namespace {

constexpr std::uint32_t fastPreset = 1;
constexpr std::size_t sizeBytes = 4;
constexpr std::size_t propertyBytes = 5;

void check(lzma_ret result)
{
    if (result != LZMA_OK)
        throw std::runtime_error("liblzma can't compress a frame");
}

} // namespace

std::vector<std::byte> encodeLzmaFrame(std::span<const std::byte> packed)
{
    lzma_options_lzma options{};
    if (lzma_lzma_preset(&options, fastPreset))
        throw std::runtime_error("liblzma does not know its fast preset");
    const std::array<lzma_filter, 2> filters{
        {{LZMA_FILTER_LZMA1, &options}, {LZMA_VLI_UNKNOWN, nullptr}}};

    std::array<std::uint8_t, sizeBytes + propertyBytes> head{};
    const auto size = static_cast<std::uint32_t>(packed.size());
    std::memcpy(head.data(), &size, sizeBytes);
    check(lzma_properties_encode(filters.data(), head.data() + sizeBytes));

    const auto headBytes = std::as_bytes(std::span(head));
    std::vector<std::byte> payload(headBytes.begin(), headBytes.end());
    payload.resize(head.size() + lzma_stream_buffer_bound(packed.size()));
    std::size_t used = head.size();
    check(lzma_raw_buffer_encode(
        filters.data(), nullptr, reinterpret_cast<const std::uint8_t *>(packed.data()),
        packed.size(), reinterpret_cast<std::uint8_t *>(payload.data()), &used, payload.size()));
    payload.resize(used);
    return payload;
}

} // namespace sample
