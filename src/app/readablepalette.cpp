// SPDX-License-Identifier: MIT
#include "app/readablepalette.h"

#include <QApplication>
#include <QPalette>

#include <algorithm>
#include <cmath>

namespace filmwright {

namespace {

/// The constants are the guidelines'.
double linear(double component)
{
    return component <= 0.03928 ? component / 12.92 : std::pow((component + 0.055) / 1.055, 2.4);
}

double luminance(const QColor &colour)
{
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

QColor mixed(const QColor &one, const QColor &other, float part)
{
    const auto mix = [part](float from, float to) { return from + part * (to - from); };
    return QColor::fromRgbF(mix(one.redF(), other.redF()), mix(one.greenF(), other.greenF()),
                            mix(one.blueF(), other.blueF()));
}

/// The background, as near to black or white as the text needs it. Every colour stands out from one
/// of the two.
QColor readableBehind(const QColor &text, const QColor &background)
{
    const QColor end =
        contrast(text, Qt::black) > contrast(text, Qt::white) ? Qt::black : Qt::white;
    constexpr int steps = 20;
    QColor result = background;
    for (int step = 1; contrast(text, result) < leastContrast && step <= steps; ++step)
        result = mixed(background, end, static_cast<float>(step) / steps);
    return result;
}

} // namespace

double contrast(const QColor &one, const QColor &other)
{
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

void keepTextReadable()
{
    QPalette palette = QApplication::palette();
    const QPalette before = palette;
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
        palette.setColor(group, QPalette::Highlight,
                         readableBehind(palette.color(group, QPalette::HighlightedText),
                                        palette.color(group, QPalette::Highlight)));
        palette.setColor(group, QPalette::PlaceholderText, palette.color(group, QPalette::Text));
    }
    if (palette != before) // setting it is a change, too
        QApplication::setPalette(palette);
}

} // namespace filmwright
