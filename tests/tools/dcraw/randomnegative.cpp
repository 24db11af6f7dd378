// SPDX-License-Identifier: MIT
#include "randomnegative.h"

#include "dng/tags.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tag = dng::tag;

RandomNegative::RandomNegative(std::uint32_t seed)
    : m_random(seed)
{
    chooseShape();
    chooseLevels();
    chooseColours();
    chooseAreas();
    chooseTexts();
    paint();
    chooseArguments();
}

// The distributions of the standard library differ from one to the other.
int RandomNegative::between(int least, int most)
{
    return least + static_cast<int>(m_random() % static_cast<unsigned>(most - least + 1));
}

double RandomNegative::real(double least, double most)
{
    return least + (most - least) * static_cast<std::uint32_t>(m_random()) / 4294967296.0;
}

QString RandomNegative::number(double least, double most)
{
    return QString::number(real(least, most), 'f', between(1, 6));
}

void RandomNegative::chooseShape()
{
    const int largest = oneIn(20) ? 1100 : oneIn(4) ? 300 : 80;
    m_width = between(22, largest);
    m_height = between(22, largest);
    if (oneIn(250)) {
        m_width = 1920;
        m_height = 1080;
    }
    m_bits = between(8, 16);
    const bool isLossless = oneIn(3);
    if (isLossless) {
        m_width += m_width % 2;
        m_height += m_height % 2;
    }
    m_writer.setShape(m_width, m_height, m_bits);
    if (isLossless) {
        constexpr std::array shapes{sample::LosslessShape::Camera, sample::LosslessShape::Folded,
                                    sample::LosslessShape::Plain};
        m_writer.setLossless(shapes[static_cast<std::size_t>(between(0, 2))], between(1, 7));
    }
}

void RandomNegative::chooseLevels()
{
    const int range = (1 << m_bits) - 1;
    m_black = oneIn(4) ? 0 : between(0, range / 4);
    m_white = oneIn(4) ? range : between(m_black + 1 + range / 8, range);
    m_writer.image.setLongs(tag::blackLevel, {static_cast<std::uint32_t>(m_black)});
    m_writer.image.setLongs(tag::whiteLevel, {static_cast<std::uint32_t>(m_white)});
}

void RandomNegative::chooseColours()
{
    constexpr std::array<std::array<int, 9>, 4> cameras{
        {{6722, -635, -963, -4287, 12460, 2028, -908, 2162, 5668},
         {7034, -804, -1014, -4420, 12564, 2058, -851, 1994, 5758},
         {4763, 712, -646, -6821, 14399, 2640, -1921, 3276, 6561},
         {6602, -841, -939, -4472, 12458, 2247, -975, 2039, 6148}}};
    const auto &camera = cameras[static_cast<std::size_t>(between(0, 3))];
    const int spread = oneIn(3) ? 800 : 0;
    std::array<dng::SRational, 9> matrix{};
    std::transform(camera.begin(), camera.end(), matrix.begin(), [&](int value) {
        return dng::SRational{value + between(-spread, spread), 10000};
    });
    m_writer.image.setSRationals(tag::colorMatrix1, matrix);

    std::array<dng::Rational, 3> neutral{};
    for (auto &value : neutral) {
        value = {static_cast<std::uint32_t>(between(150000, oneIn(5) ? 2500000 : 1000000)),
                 1000000};
    }
    m_writer.image.setRationals(tag::asShotNeutral, neutral);

    switch (between(0, 3)) {
    case 0:
        return m_writer.image.setBytes(tag::cfaPattern, {0, 1, 1, 2});
    case 1:
        return m_writer.image.setBytes(tag::cfaPattern, {1, 0, 2, 1});
    case 2:
        return m_writer.image.setBytes(tag::cfaPattern, {1, 2, 0, 1});
    default:
        return m_writer.image.setBytes(tag::cfaPattern, {2, 1, 1, 0});
    }
}

void RandomNegative::chooseAreas()
{
    if (oneIn(3)) {
        const int top = between(0, std::min(9, m_height - 22));
        const int left = between(0, std::min(9, m_width - 22));
        const int bottom = between(std::max(top + 22, m_height - 9), m_height);
        const int right = between(std::max(left + 22, m_width - 9), m_width);
        m_writer.image.setLongs(tag::activeArea,
                                {static_cast<std::uint32_t>(top), static_cast<std::uint32_t>(left),
                                 static_cast<std::uint32_t>(bottom),
                                 static_cast<std::uint32_t>(right)});
    }
    if (oneIn(5)) {
        constexpr std::array<dng::Rational, 4> scales{{{5, 3}, {3, 1}, {1, 1}, {1001, 1000}}};
        std::array<dng::Rational, 2> scale{
            {{1, 1}, scales[static_cast<std::size_t>(between(0, 3))]}};
        if (oneIn(3))
            std::swap(scale[0], scale[1]);
        m_writer.image.setRationals(tag::defaultScale, scale);
    }
}

void RandomNegative::chooseTexts()
{
    struct Camera
    {
        const char *make;
        const char *model;
    };
    constexpr std::array<Camera, 8> cameras{{{"Canon", "Canon EOS 5D Mark III"},
                                             {"Canon Inc.", "EOS M"},
                                             {"X", "X"},
                                             {"NIKON CORPORATION", "NIKON D800 "},
                                             {"Unknown", "Unknown camera"},
                                             {"RICOH", "PENTAX  "},
                                             {"ab", "c"},
                                             {"sony and canon", "Sony  x"}}};
    const Camera &camera = cameras[static_cast<std::size_t>(between(0, 7))];
    m_writer.image.setText(tag::make, camera.make);
    m_writer.image.setText(tag::model, camera.model);
    constexpr std::array<const char *, 4> descriptions{"", "a", "two words ", "Take 3\nof many"};
    m_writer.image.setText(tag::imageDescription,
                           descriptions[static_cast<std::size_t>(between(0, 3))]);
    constexpr std::array<const char *, 6> dates{"2026:03:21 14:30:02", "1969:12:31 23:59:59",
                                                "2025:13:31 25:61:61", "0000:00:00 00:00:00",
                                                "2026-03-21T14:30:02", "2031:04:31 00:00:01"};
    m_writer.image.setText(tag::dateTime, dates[static_cast<std::size_t>(between(0, 5))]);
    if (oneIn(4)) {
        m_writer.exif = {};
        return;
    }
    m_writer.exif.setText(tag::dateTimeOriginal, dates[static_cast<std::size_t>(between(0, 5))]);
    m_writer.exif.setRational(tag::exposureTime, {static_cast<std::uint32_t>(between(1, 99999)),
                                                  static_cast<std::uint32_t>(between(51, 999999))});
    m_writer.exif.setRational(tag::fNumber, {static_cast<std::uint32_t>(between(0, 999)),
                                             static_cast<std::uint32_t>(between(1, 99))});
    m_writer.exif.setShorts(tag::isoSpeedRatings, {static_cast<std::uint16_t>(between(0, 65535))});
}

/// The share of white at a place in a scene of a kind.
double RandomNegative::light(int x, int y, int kind) const
{
    switch (kind) {
    case 0: // a ramp into saturation
        return 1.3 * x / m_width;
    case 1: // a checkerboard, the finest the pattern has
        return (x + y) % 2 == 0 ? 0.9 : 0.1;
    case 2: // coarser edges, saturated
        return (x / 7 + y / 5) % 2 == 0 ? 1.2 : 0.2;
    case 3: // lamps
        return 2.5 * std::exp(-0.002 * (std::pow(x % 97 - 48, 2) + std::pow(y % 83 - 40, 2)));
    case 4: // everything saturated
        return 1.5;
    case 5: // fine stripes
        return 0.5 + 0.5 * std::sin(x * 1.1 + y * 0.3);
    default: // an even field
        return 0.3;
    }
}

void RandomNegative::paint()
{
    const int largest = (1 << m_bits) - 1;
    const int kind = between(0, 7);
    const double noise = oneIn(2) ? real(0, 0.05) : oneIn(3) ? 1 : 0;
    const double exposure = real(0.2, 1.5);
    // Each place of the pattern has its own sensitivity.
    std::array<double, 4> colours{};
    std::generate(colours.begin(), colours.end(), [this] { return real(0.3, 1.2); });
    auto sample = m_writer.samples.begin();
    for (int y = 0; y < m_height; ++y) {
        for (int x = 0; x < m_width; ++x) {
            const double colour = colours[static_cast<std::size_t>(y % 2 * 2 + x % 2)];
            const double value =
                m_black +
                (m_white - m_black) * (exposure * colour * light(x, y, kind) + noise * real(-1, 1));
            *sample++ = static_cast<std::uint16_t>(
                std::clamp(value, 0.0, static_cast<double>(oneIn(999) ? largest : m_white)));
        }
    }
}

void RandomNegative::chooseArguments()
{
    m_arguments = QStringList{QStringLiteral("-H"),
                              QStringLiteral("3"),
                              QStringLiteral("-q"),
                              QStringLiteral("3"),
                              QStringLiteral("-w"),
                              QStringLiteral("-W"),
                              QStringLiteral("-T"),
                              QStringLiteral("-b"),
                              QString::number(std::exp2(real(-1, 5)), 'f', 6)};
    if (oneIn(2))
        addFurtherOptions();
}

void RandomNegative::addFurtherOptions()
{
    const auto add = [this](const char *option, const QStringList &values = {}) {
        m_arguments << QString::fromLatin1(option) << values;
    };
    if (oneIn(2))
        m_arguments.removeOne(QStringLiteral("-w"));
    if (oneIn(3)) {
        add("-r", {number(0.3, 3), oneIn(4) ? QStringLiteral("0") : number(0.3, 3), number(0.3, 3),
                   oneIn(3) ? QStringLiteral("0") : number(0.3, 3)});
    }
    if (oneIn(2))
        add("-H", {QString::number(between(0, 3))});
    if (oneIn(3))
        add("-o", {QString::number(between(0, 6))});
    if (oneIn(2))
        add("-6");
    if (oneIn(4))
        add("-4");
    if (oneIn(4))
        add("-g", {number(1, 4), oneIn(4) ? QStringLiteral("0") : number(0.2, 20)});
    if (oneIn(4))
        add("-q", {QStringLiteral("0")});
    if (oneIn(4))
        add("-m", {QString::number(between(0, 3))});
    if (oneIn(6))
        add("-h");
    if (oneIn(4)) {
        listBadPixels();
        add("-P", {QStringLiteral("bad.txt")});
    }
}

void RandomNegative::listBadPixels()
{
    for (int lines = between(0, 40); lines > 0; --lines) {
        m_badPixels += QByteArray::number(between(-2, std::min(m_width, 60))) + ' ' +
                       QByteArray::number(between(-2, std::min(m_height, 60))) + ' ' +
                       (oneIn(5) ? "1900000000" : "0") + (oneIn(5) ? " 7 # dead" : "") + '\n';
    }
    m_badPixels += "# nothing\n\n1 2\nx 3 4 5\n";
}
