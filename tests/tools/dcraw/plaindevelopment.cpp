// SPDX-License-Identifier: MIT
// Must be compiled with -ffp-contract=off.
#include "plaindevelopment.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace plain {
namespace {

using dcraw::Development;
using dcraw::Highlights;
using dcraw::Interpolation;
using Pixel = std::array<int, 3>;

template <typename T>
struct Grid
{
    Grid(int gridWidth, int gridHeight, T value = {})
        : width(gridWidth)
        , height(gridHeight)
        , values(static_cast<std::size_t>(gridWidth) * static_cast<std::size_t>(gridHeight), value)
    {
    }
    bool contains(int y, int x) const { return y >= 0 && y < height && x >= 0 && x < width; }
    T &at(int y, int x) { return values[index(y, x)]; }
    const T &at(int y, int x) const { return values[index(y, x)]; }
    std::size_t index(int y, int x) const
    {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
               static_cast<std::size_t>(x);
    }

    int width;
    int height;
    std::vector<T> values;
};

using Picture = Grid<Pixel>;

constexpr int clip(int value)
{
    return std::clamp(value, 0, 65535);
}

int truncated(float value)
{
    return value >= -2147483648.0F && value < 2147483648.0F ? static_cast<int>(value)
                                                            : std::numeric_limits<int>::min();
}

class Mosaic
{
public:
    Mosaic(const Development &development, const dcraw::SampleRows &samples)
        : m_pattern(development.pattern)
        , m_light(development.width, development.height)
    {
        std::vector<std::uint16_t> row(static_cast<std::size_t>(development.width));
        for (int y = 0; y < height(); ++y) {
            samples.read(y, row);
            for (int x = 0; x < width(); ++x) {
                const int raw = row[static_cast<std::size_t>(x)];
                m_light.at(y, x) = clip(truncated(static_cast<float>(raw - development.black) *
                                                  development.scale[fourColour(y, x)]));
            }
        }
    }
    int width() const { return m_light.width; }
    int height() const { return m_light.height; }
    int at(int y, int x) const { return m_light.at(y, x); }
    /// 0 where the picture has ended.
    int atOrNothing(int y, int x) const { return m_light.contains(y, x) ? at(y, x) : 0; }
    unsigned fourColour(int y, int x) const { return m_pattern[y & 1][x & 1]; }
    unsigned colour(int y, int x) const { return fourColour(y, x) == 3 ? 1 : fourColour(y, x); }

    Pixel meanOfNeighbours(int y, int x) const
    {
        Pixel sum{};
        Pixel count{};
        for (int ny = y - 1; ny <= y + 1; ++ny) {
            for (int nx = x - 1; nx <= x + 1; ++nx) {
                if (!m_light.contains(ny, nx))
                    continue;
                sum[colour(ny, nx)] += at(ny, nx);
                ++count[colour(ny, nx)];
            }
        }
        Pixel pixel{};
        for (unsigned c = 0; c < 3; ++c)
            pixel[c] = c == colour(y, x) ? at(y, x) : sum[c] / count[c];
        return pixel;
    }

private:
    std::array<std::array<std::uint8_t, 2>, 2> m_pattern;
    Grid<int> m_light;
};

bool isInside(const Mosaic &mosaic, int y, int x, int margin)
{
    return y >= margin && y < mosaic.height() - margin && x >= margin &&
           x < mosaic.width() - margin;
}

template <typename Work>
void forInside(const Mosaic &mosaic, int margin, const Work &work)
{
    for (int y = margin; y < mosaic.height() - margin; ++y)
        for (int x = margin; x < mosaic.width() - margin; ++x)
            work(y, x);
}

Picture bilinear(const Mosaic &mosaic)
{
    Picture picture(mosaic.width(), mosaic.height());
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            picture.at(y, x) = mosaic.meanOfNeighbours(y, x);
            // In the middle the sums of two or four differ from this in nothing but green at green,
            // which stays.
        }
    }
    return picture;
}

Picture halfSize(const Mosaic &mosaic)
{
    Picture picture((mosaic.width() + 1) / 2, (mosaic.height() + 1) / 2);
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            Pixel &pixel = picture.at(y, x);
            for (int part = 0; part < 4; ++part) {
                const int sampleY = 2 * y + part / 2;
                const int sampleX = 2 * x + part % 2;
                pixel[mosaic.colour(sampleY, sampleX)] += mosaic.atOrNothing(sampleY, sampleX);
            }
            pixel[1] >>= 1;
        }
    }
    return picture;
}

struct Step
{
    int y;
    int x;
};

constexpr std::array<Step, 2> forward{{{0, 1}, {1, 0}}}; // of each direction

struct Lab
{
    int l;
    int a;
    int b;
};

float cubeRoot(int value)
{
    const float r = static_cast<float>(value / 65535.0);
    return r > 0.008856 ? static_cast<float>(std::pow(static_cast<double>(r), 1 / 3.0))
                        : static_cast<float>(7.787 * static_cast<double>(r) + 16 / 116.0);
}

Lab lab(const dcraw::Matrix &toXyz, const Pixel &pixel)
{
    static const std::vector<float> cubeRoots = [] {
        std::vector<float> roots(65536);
        for (int i = 0; i < 65536; ++i)
            roots[static_cast<std::size_t>(i)] = cubeRoot(i);
        return roots;
    }();
    std::array<float, 3> u{};
    for (unsigned i = 0; i < 3; ++i) {
        float t = 0.5F;
        for (unsigned c = 0; c < 3; ++c) {
            const float part = toXyz[i][c] * static_cast<float>(pixel[c]);
            t = t + part;
        }
        u[i] = cubeRoots[static_cast<std::size_t>(clip(truncated(t)))];
    }
    return {truncated(64 * (116 * u[1] - 16)), truncated(32000 * (u[0] - u[1])),
            truncated(12800 * (u[1] - u[2]))};
}

/// The picture with colours found along the rows (direction 0) or the columns (1).
Picture candidate(const Mosaic &mosaic, unsigned direction)
{
    Picture picture(mosaic.width(), mosaic.height());
    const Step step = forward[direction];
    Grid<int> delta(mosaic.width(), mosaic.height());
    forInside(mosaic, 2, [&](int y, int x) {
        int &green = picture.at(y, x)[1];
        green = mosaic.at(y, x);
        if (mosaic.colour(y, x) == 1)
            return;
        const auto beside = [&](int n) { return mosaic.at(y + n * step.y, x + n * step.x); };
        const int guess = (2 * (beside(-1) + beside(0) + beside(1)) - beside(-2) - beside(2)) >> 2;
        green = std::clamp(guess, std::min(beside(-1), beside(1)), std::max(beside(-1), beside(1)));
        delta.at(y, x) = mosaic.at(y, x) - green;
    });
    forInside(mosaic, 3, [&](int y, int x) {
        Pixel &pixel = picture.at(y, x);
        const unsigned own = mosaic.colour(y, x);
        pixel[own] = mosaic.at(y, x);
        if (own == 1) {
            pixel[mosaic.colour(y, x + 1)] =
                clip(mosaic.at(y, x) + ((delta.at(y, x - 1) + delta.at(y, x + 1)) >> 1));
            pixel[mosaic.colour(y + 1, x)] =
                clip(mosaic.at(y, x) + ((delta.at(y - 1, x) + delta.at(y + 1, x)) >> 1));
        } else {
            const int sum = delta.at(y - 1, x - 1) + delta.at(y - 1, x + 1) +
                            delta.at(y + 1, x - 1) + delta.at(y + 1, x + 1);
            pixel[2 - own] = clip(pixel[1] + ((sum + 1) >> 2));
        }
    });
    return picture;
}

Picture adaptiveHomogeneity(const Development &development, const Mosaic &mosaic)
{
    const std::array<Picture, 2> candidates{candidate(mosaic, 0), candidate(mosaic, 1)};
    std::array<Grid<Lab>, 2> labs{Grid<Lab>(mosaic.width(), mosaic.height()),
                                  Grid<Lab>(mosaic.width(), mosaic.height())};
    forInside(mosaic, 3, [&](int y, int x) {
        for (unsigned d = 0; d < 2; ++d) {
            labs[d].at(y, x) = lab(development.cameraToXyz, candidates[d].at(y, x));
        }
    });

    constexpr std::array<Step, 4> neighbours{{{0, -1}, {0, 1}, {-1, 0}, {1, 0}}};
    std::array<Grid<int>, 2> homogeneity{Grid<int>(mosaic.width(), mosaic.height()),
                                         Grid<int>(mosaic.width(), mosaic.height())};
    forInside(mosaic, 4, [&](int y, int x) {
        std::array<std::array<int, 4>, 2> lightness{};
        std::array<std::array<unsigned, 4>, 2> chroma{};
        for (unsigned d = 0; d < 2; ++d) {
            const Lab &here = labs[d].at(y, x);
            for (unsigned n = 0; n < 4; ++n) {
                const Lab &there = labs[d].at(y + neighbours[n].y, x + neighbours[n].x);
                const auto square = [](int value) {
                    return static_cast<unsigned>(value) * static_cast<unsigned>(value);
                };
                lightness[d][n] = std::abs(here.l - there.l);
                chroma[d][n] = square(here.a - there.a) + square(here.b - there.b);
            }
        }
        const auto limit = [](const auto &differences) {
            return std::min(std::max(differences[0][0], differences[0][1]),
                            std::max(differences[1][2], differences[1][3]));
        };
        for (unsigned d = 0; d < 2; ++d) {
            for (unsigned n = 0; n < 4; ++n) {
                if (lightness[d][n] <= limit(lightness) && chroma[d][n] <= limit(chroma))
                    ++homogeneity[d].at(y, x);
            }
        }
    });

    Picture picture(mosaic.width(), mosaic.height());
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            if (!isInside(mosaic, y, x, 5)) {
                picture.at(y, x) = mosaic.meanOfNeighbours(y, x);
                continue;
            }
            std::array<int, 2> sum{};
            for (unsigned d = 0; d < 2; ++d)
                for (int part = 0; part < 9; ++part)
                    sum[d] += homogeneity[d].at(y - 1 + part / 3, x - 1 + part % 3);
            const Pixel &across = candidates[0].at(y, x);
            const Pixel &down = candidates[1].at(y, x);
            for (unsigned c = 0; c < 3; ++c) {
                picture.at(y, x)[c] = sum[0] > sum[1]   ? across[c]
                                      : sum[1] > sum[0] ? down[c]
                                                        : (across[c] + down[c]) >> 1;
            }
        }
    }
    return picture;
}

void applyMedian(Picture &picture, unsigned colour)
{
    const Picture before = picture;
    for (int y = 1; y < picture.height - 1; ++y) {
        for (int x = 1; x < picture.width - 1; ++x) {
            std::array<int, 9> differences{};
            for (int part = 0; part < 9; ++part) {
                const Pixel &pixel = before.at(y - 1 + part / 3, x - 1 + part % 3);
                differences[static_cast<std::size_t>(part)] = pixel[colour] - pixel[1];
            }
            std::sort(differences.begin(), differences.end());
            picture.at(y, x)[colour] = clip(differences[4] + before.at(y, x)[1]);
        }
    }
}

/// Saturated samples of one colour follow the strongest colour.
void rebuild(Picture &picture, unsigned colour, unsigned strongest, int saturation, int blockSize)
{
    Grid<float> map(picture.width / blockSize, picture.height / blockSize);
    for (int my = 0; my < map.height; ++my) {
        for (int mx = 0; mx < map.width; ++mx) {
            float sum = 0;
            float strongestSum = 0;
            int count = 0;
            for (int y = my * blockSize; y < (my + 1) * blockSize; ++y) {
                for (int x = mx * blockSize; x < (mx + 1) * blockSize; ++x) {
                    const Pixel &pixel = picture.at(y, x);
                    if (pixel[colour] / saturation == 1 && pixel[strongest] > 24000) {
                        sum += static_cast<float>(pixel[colour]);
                        strongestSum += static_cast<float>(pixel[strongest]);
                        ++count;
                    }
                }
            }
            if (count == blockSize * blockSize)
                map.at(my, mx) = sum / strongestSum;
        }
    }
    constexpr std::array<Step, 8> around{
        {{-1, -1}, {-1, 0}, {-1, 1}, {0, 1}, {1, 1}, {1, 0}, {1, -1}, {0, -1}}};
    for (int pass = 0; pass < 16; ++pass) {
        const Grid<float> before = map;
        for (int my = 0; my < map.height; ++my) {
            for (int mx = 0; mx < map.width; ++mx) {
                if (before.at(my, mx) > 0)
                    continue;
                float sum = 0;
                int count = 0;
                for (const Step step : around) {
                    if (!map.contains(my + step.y, mx + step.x))
                        continue;
                    const float there = before.at(my + step.y, mx + step.x);
                    const int weight = step.y == 0 || step.x == 0 ? 2 : 1;
                    if (there > 0) {
                        const float part = static_cast<float>(weight) * there;
                        sum = sum + part;
                        count += weight;
                    }
                }
                if (count > 3)
                    map.at(my, mx) = (sum + 2) / static_cast<float>(count + 2);
            }
        }
    }
    for (int my = 0; my < map.height; ++my) {
        for (int mx = 0; mx < map.width; ++mx) {
            const float ratio = map.at(my, mx) > 0 ? map.at(my, mx) : 1;
            for (int y = my * blockSize; y < (my + 1) * blockSize; ++y) {
                for (int x = mx * blockSize; x < (mx + 1) * blockSize; ++x) {
                    Pixel &pixel = picture.at(y, x);
                    const float raised = static_cast<float>(pixel[strongest]) * ratio;
                    if (pixel[colour] / saturation > 1)
                        pixel[colour] = std::max(pixel[colour], clip(truncated(raised)));
                }
            }
        }
    }
}

void rebuild(const Development &development, Picture &picture)
{
    const auto &multipliers = development.multipliers;
    const auto strongest = static_cast<unsigned>(
        std::max_element(multipliers.begin(), multipliers.end()) - multipliers.begin());
    const int blockSize = development.interpolation == Interpolation::HalfSize ? 2 : 4;
    for (unsigned c = 0; c < 3; ++c)
        if (c != strongest)
            rebuild(picture, c, strongest, truncated(32000 * multipliers[c]), blockSize);
}

struct Opponent
{
    float p;
    float q;

    float saturation() const
    {
        const float pp = p * p;
        const float qq = q * q;
        return pp + qq;
    }
};

Opponent opponent(const std::array<float, 3> &v)
{
    const float red = 1.7320508F * v[0];
    const float green = 1.7320508F * v[1];
    const float blue = 2 * v[2];
    return {red - green, (-v[0] - v[1]) + blue};
}

void blend(const Development &development, Picture &picture)
{
    int limit = 65535;
    for (const float multiplier : development.multipliers)
        limit = std::min(limit, truncated(65535 * multiplier));
    for (Pixel &pixel : picture.values) {
        if (*std::max_element(pixel.begin(), pixel.end()) <= limit)
            continue;
        std::array<float, 3> full{};
        std::array<float, 3> limited{};
        for (unsigned c = 0; c < 3; ++c) {
            full[c] = static_cast<float>(pixel[c]);
            limited[c] = static_cast<float>(std::min(pixel[c], limit));
        }
        const Opponent opposed = opponent(full);
        const float squares = opposed.saturation();
        if (squares == 0) {
            pixel = {};
            continue;
        }
        const auto ratio = static_cast<float>(
            std::sqrt(static_cast<double>(opponent(limited).saturation() / squares)));
        const float light = (full[0] + full[1]) + full[2];
        const float p = opposed.p * ratio;
        const float q = opposed.q * ratio;
        const float across = 0.8660254F * p;
        const float half = 0.5F * q;
        const auto low16 = [](float value) { return truncated(value) & 0xffff; };
        pixel = {low16(((light + across) - half) / 3), low16(((light - across) - half) / 3),
                 low16((light + q) / 3)};
    }
}

void convert(const Development &development, Picture &picture)
{
    for (Pixel &pixel : picture.values) {
        const Pixel before = pixel;
        for (unsigned i = 0; i < 3; ++i) {
            std::array<float, 3> part{};
            for (unsigned c = 0; c < 3; ++c)
                part[c] = development.cameraToOutput[i][c] * static_cast<float>(before[c]);
            pixel[i] = clip(truncated((part[0] + part[1]) + part[2]));
        }
    }
}

Picture stretched(const Development &development, const Picture &picture)
{
    const double aspect = development.pixelAspect;
    const bool rows = aspect < 1;
    Picture result(development.outputWidth(), development.outputHeight());
    double position = 0;
    for (int line = 0; line < (rows ? result.height : result.width); ++line) {
        const int c = static_cast<int>(position);
        const double t = position - c;
        for (int i = 0; i < (rows ? result.width : result.height); ++i) {
            const Pixel &first = rows ? picture.at(c, i) : picture.at(i, c);
            const bool last = c + 1 == (rows ? picture.height : picture.width);
            const Pixel &second = last ? first : rows ? picture.at(c + 1, i) : picture.at(i, c + 1);
            for (unsigned colour = 0; colour < 3; ++colour) {
                (rows ? result.at(line, i) : result.at(i, line))[colour] =
                    static_cast<int>(first[colour] * (1 - t) + second[colour] * t + 0.5);
            }
        }
        position += rows ? aspect : 1 / aspect;
    }
    return result;
}

} // namespace

Samples::Samples(std::vector<std::uint16_t> values, int width)
    : m_values(std::move(values))
    , m_width(static_cast<std::size_t>(width))
{
}

void Samples::read(int row, std::span<std::uint16_t> samples) const
{
    std::copy_n(&m_values[static_cast<std::size_t>(row) * m_width], samples.size(),
                samples.begin());
}

std::vector<std::byte> develop(const Development &development, const dcraw::SampleRows &samples)
{
    const Mosaic mosaic(development, samples);
    Picture picture = development.interpolation == Interpolation::HalfSize ? halfSize(mosaic)
                      : development.interpolation == Interpolation::Bilinear
                          ? bilinear(mosaic)
                          : adaptiveHomogeneity(development, mosaic);
    for (int pass = 0; pass < development.medianPasses; ++pass) {
        applyMedian(picture, 0);
        applyMedian(picture, 2);
    }
    if (development.highlights == Highlights::Rebuild)
        rebuild(development, picture);
    if (development.highlights == Highlights::Blend)
        blend(development, picture);
    if (development.convertsColour)
        convert(development, picture);
    if (development.pixelAspect != 1)
        picture = stretched(development, picture);
    std::vector<std::byte> bytes;
    for (const Pixel &pixel : picture.values) {
        for (const int value : pixel) {
            const std::uint16_t written = development.tone[static_cast<std::size_t>(value)];
            bytes.push_back(static_cast<std::byte>(written & 0xff));
            if (development.sixteenBits)
                bytes.push_back(static_cast<std::byte>(written >> 8));
        }
    }
    return bytes;
}

} // namespace plain
