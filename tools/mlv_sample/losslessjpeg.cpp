// SPDX-License-Identifier: MIT
#include "mlv_sample/losslessjpeg.h"

#include <array>
#include <bit>

namespace sample {

namespace {

// The lengths of the Huffman codes of the difference categories 0 to 16, the same for every frame:
// short where noise and edges of a raw frame put most differences.
constexpr std::array<int, 17> codeLengths{5, 4, 4, 3, 3, 3, 3, 4, 4, 5, 5, 5, 6, 6, 6, 7, 7};
constexpr int longestCode = 16;

struct Code
{
    std::uint32_t bits;
    int length;
};

struct CodeTable
{
    std::array<std::uint8_t, longestCode> countOfLength{};
    std::array<std::uint8_t, codeLengths.size()> categories{}; // in the order of their codes
    std::array<Code, codeLengths.size()> codes{};
};

// Codes of one length follow one another; the first of the next length goes on with a 0 behind.
constexpr CodeTable makeCodeTable()
{
    CodeTable table;
    std::uint32_t next = 0;
    std::size_t used = 0;
    for (int length = 1; length <= longestCode; ++length, next <<= 1U) {
        for (std::size_t category = 0; category < codeLengths.size(); ++category) {
            if (codeLengths[category] != length)
                continue;
            ++table.countOfLength[static_cast<std::size_t>(length - 1)];
            table.categories[used++] = static_cast<std::uint8_t>(category);
            table.codes[category] = {next++, length};
        }
    }
    return table;
}

constexpr CodeTable codeTable = makeCodeTable();

class BitWriter
{
public:
    explicit BitWriter(std::vector<std::byte> &bytes)
        : m_bytes(bytes)
    {
    }

    void put(std::uint32_t bits, int count)
    {
        m_pending = (m_pending << static_cast<unsigned>(count)) | bits;
        m_pendingBits += count;
        while (m_pendingBits >= 8) {
            m_pendingBits -= 8;
            putByte(static_cast<std::uint8_t>(m_pending >> static_cast<unsigned>(m_pendingBits)));
        }
    }

    void finish()
    {
        if (m_pendingBits > 0) {
            const int missing = 8 - m_pendingBits;
            put((1U << static_cast<unsigned>(missing)) - 1, missing);
        }
    }

private:
    void putByte(std::uint8_t byte)
    {
        m_bytes.push_back(std::byte{byte});
        if (byte == 0xff)
            m_bytes.push_back(std::byte{0}); // or it would start a marker
    }

    std::vector<std::byte> &m_bytes;
    std::uint64_t m_pending = 0;
    int m_pendingBits = 0;
};

void putDifference(BitWriter &writer, std::uint16_t difference)
{
    // Modulo 2^16; as a signed number from −32767 to 32768.
    const int value = difference <= 32768 ? difference : difference - 65536;
    const auto magnitude = static_cast<unsigned>(value < 0 ? -value : value);
    const auto category = static_cast<int>(std::bit_width(magnitude));
    const Code &code = codeTable.codes[static_cast<std::size_t>(category)];
    writer.put(code.bits, code.length);
    if (category > 0 && category < 16) {
        const unsigned mask = (1U << static_cast<unsigned>(category)) - 1;
        writer.put(static_cast<unsigned>(value < 0 ? value - 1 : value) & mask, category);
    }
}

/// The picture as the JPEG sees it.
struct Image
{
    std::span<const std::uint16_t> samples;
    std::size_t lineSamples; // width × components
    std::size_t components;
    int bits;

    int predicted(std::size_t line, std::size_t i, int predictor) const
    {
        const std::size_t at = line * lineSamples + i;
        if (i < components)
            return line == 0 ? 1 << (bits - 1) : samples[at - lineSamples];
        const int left = samples[at - components];
        if (line == 0)
            return left;
        const int above = samples[at - lineSamples];
        const int aboveLeft = samples[at - lineSamples - components];
        switch (predictor) {
        case 2:
            return above;
        case 3:
            return aboveLeft;
        case 4:
            return left + above - aboveLeft;
        case 5:
            return left + ((above - aboveLeft) >> 1);
        case 6:
            return above + ((left - aboveLeft) >> 1);
        case 7:
            return (left + above) >> 1;
        default:
            return left;
        }
    }
};

class Markers
{
public:
    explicit Markers(std::vector<std::byte> &bytes)
        : m_bytes(bytes)
    {
    }

    void byte(std::size_t value) { m_bytes.push_back(static_cast<std::byte>(value)); }
    void word(std::size_t value)
    {
        byte(value >> 8U & 0xffU);
        byte(value & 0xffU);
    }

    void huffmanTable(std::size_t id)
    {
        word(0xffc4);
        word(2 + 1 + longestCode + codeTable.categories.size());
        byte(id);
        for (const std::uint8_t count : codeTable.countOfLength)
            byte(count);
        for (const std::uint8_t category : codeTable.categories)
            byte(category);
    }

    void startOfFrame(const Image &image)
    {
        word(0xffc3);
        word(8 + 3 * image.components);
        byte(static_cast<std::size_t>(image.bits));
        word(image.samples.size() / image.lineSamples);
        word(image.lineSamples / image.components);
        byte(image.components);
        for (std::size_t i = 0; i < image.components; ++i) {
            byte(i + 1);
            byte(0x11); // not subsampled
            byte(0);
        }
    }

    void startOfScan(const Image &image, int predictor)
    {
        word(0xffda);
        word(6 + 2 * image.components);
        byte(image.components);
        for (std::size_t i = 0; i < image.components; ++i) {
            byte(i + 1);
            byte(i << 4U);
        }
        byte(static_cast<std::size_t>(predictor));
        byte(0);
        byte(0);
    }

private:
    std::vector<std::byte> &m_bytes;
};

} // namespace

std::vector<std::byte> encodeLosslessJpeg(std::span<const std::uint16_t> samples, int width,
                                          int height, int bits, LosslessShape shape, int predictor)
{
    const auto rowSamples = static_cast<std::size_t>(width);
    const bool plain = shape == LosslessShape::Plain;
    const Image image{samples.first(rowSamples * static_cast<std::size_t>(height)),
                      plain ? rowSamples : 2 * rowSamples,
                      shape == LosslessShape::Camera ? std::size_t{2} : std::size_t{1}, bits};

    std::vector<std::byte> bytes;
    Markers markers(bytes);
    markers.word(0xffd8);
    for (std::size_t i = 0; i < image.components; ++i)
        markers.huffmanTable(i);
    markers.startOfFrame(image);
    markers.startOfScan(image, predictor);

    BitWriter writer(bytes);
    const std::size_t lines = samples.size() / image.lineSamples;
    for (std::size_t line = 0; line < lines; ++line) {
        for (std::size_t i = 0; i < image.lineSamples; ++i) {
            const int difference =
                samples[line * image.lineSamples + i] - image.predicted(line, i, predictor);
            putDifference(writer, static_cast<std::uint16_t>(difference));
        }
    }
    writer.finish();
    markers.word(0xffd9);
    return bytes;
}

} // namespace sample
