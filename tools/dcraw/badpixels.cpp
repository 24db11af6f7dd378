// SPDX-License-Identifier: MIT
#include "dcraw/badpixels.h"

#include "dcraw/decodedrows.h"
#include "dcraw/notcovered.h"
#include "raw/file.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <optional>
#include <string_view>

namespace dcraw {
namespace {

// A longer line is taken as several.
constexpr std::size_t longestLine = 127;

std::string readText(const std::string &path)
{
    const raw::File file(path);
    constexpr std::uint64_t largestList = 64 << 20;
    require(file.size() <= largestList, "has a list of bad pixels that is too long");
    std::string text(static_cast<std::size_t>(file.size()), '\0');
    file.read(0, std::as_writable_bytes(std::span(text)));
    require(text.find('\0') == std::string::npos, "has a list of bad pixels that is no text");
    return text;
}

/// Takes a line with its end off the front of the text.
std::string_view takeLine(std::string_view &text)
{
    const std::size_t end = text.find('\n');
    const std::size_t size =
        std::min({end == std::string_view::npos ? end : end + 1, text.size(), longestLine});
    const std::string_view line = text.substr(0, size);
    text.remove_prefix(size);
    return line.substr(0, line.find('#'));
}

/// Takes a whole number with the white space before it off the front of the text.
std::optional<int> takeNumber(std::string_view &text)
{
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-'))
            return std::nullopt;
    }
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    require(error != std::errc::result_out_of_range, "has a list of bad pixels with large numbers");
    if (error != std::errc())
        return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return number;
}

void requireShortNumbers(std::string_view line)
{
    constexpr int mostDigits = 10;
    int digits = 0;
    for (const char character : line) {
        digits = character >= '0' && character <= '9' ? digits + 1 : 0;
        require(digits <= mostDigits, "has a list of bad pixels with large numbers");
    }
}

/// The whole picture, in which samples can be replaced.
class Picture
{
public:
    Picture(const SampleRows &rows, int width, int height)
        : m_width(width)
        , m_height(height)
        , m_samples(static_cast<std::size_t>(width) * static_cast<std::size_t>(height))
    {
        for (int row = 0; row < height; ++row)
            rows.read(row, {&at(0, row), static_cast<std::size_t>(width)});
    }

    bool holds(int column, int row) const
    {
        return column >= 0 && column < m_width && row >= 0 && row < m_height;
    }

    /// The next samples of the same colour are two columns and rows away.
    void replace(int column, int row)
    {
        int sum = 0;
        int count = 0;
        for (int y = row - 2; y <= row + 2; y += 2) {
            for (int x = column - 2; x <= column + 2; x += 2) {
                if (holds(x, y) && (x != column || y != row)) {
                    sum += at(x, y);
                    ++count;
                }
            }
        }
        if (count > 0) // always, in a picture of the least size
            at(column, row) = static_cast<std::uint16_t>(sum / count);
    }

    std::vector<std::uint16_t> take() { return std::move(m_samples); }

private:
    std::uint16_t &at(int column, int row)
    {
        return m_samples[static_cast<std::size_t>(row) * static_cast<std::size_t>(m_width) +
                         static_cast<std::size_t>(column)];
    }

    int m_width;
    int m_height;
    std::vector<std::uint16_t> m_samples;
};

} // namespace

std::vector<BadPixel> readBadPixels(const std::string &path)
{
    const std::string text = readText(path);
    std::vector<BadPixel> pixels;
    for (std::string_view rest = text; !rest.empty();) {
        std::string_view line = takeLine(rest);
        requireShortNumbers(line);
        const auto column = takeNumber(line);
        const auto row = column ? takeNumber(line) : std::nullopt;
        const auto since = row ? takeNumber(line) : std::nullopt;
        if (since)
            pixels.push_back({*column, *row, *since});
    }
    return pixels;
}

void requireNoDefaultList()
{
    namespace fs = std::filesystem;
    for (fs::path folder = fs::current_path();; folder = folder.parent_path()) {
        std::error_code error;
        require(fs::symlink_status(folder / ".badpixels", error).type() == fs::file_type::not_found,
                "would be developed with a list of bad pixels");
        if (folder == folder.root_path())
            return;
    }
}

std::unique_ptr<SampleRows> withoutBadPixels(const SampleRows &samples,
                                             const Development &development,
                                             const std::vector<BadPixel> &pixels,
                                             std::time_t pictureTime)
{
    Picture picture(samples, development.width, development.height);
    for (const BadPixel &pixel : pixels)
        if (picture.holds(pixel.column, pixel.row) && pixel.since <= pictureTime)
            picture.replace(pixel.column, pixel.row);
    const auto width = static_cast<std::size_t>(development.width);
    return std::make_unique<DecodedRows>(picture.take(), 0, width, width);
}

} // namespace dcraw
