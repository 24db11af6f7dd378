// SPDX-License-Identifier: MIT
#include "project/framesize.h"

#include "encoding/ffmpegarguments.h"
#include "mlvdump/mlvdumpreport.h"

#include <QStringList>

#include <algorithm>
#include <cmath>

namespace filmwright {

namespace {

QString formatError(const QSize &size, qint32 format)
{
    if (holdsOddSides(format) || (size.width() % 2 == 0 && size.height() % 2 == 0))
        return {};
    return QStringLiteral("MOV holds no frames of %1x%2 pixels: both have to be even; choose AVI")
        .arg(size.width())
        .arg(size.height());
}

/// Formats with fewer samples of colour than of luma share one among two columns, or two rows, too.
QString recipeError(const QSize &size, const Recipe &recipe)
{
    const QString format = recipe.pixelFormat();
    const bool shareRows = format.contains(QLatin1String("420"));
    const bool shareColumns = shareRows || format.contains(QLatin1String("422"));
    if (recipe.developsHalfSize()) // cut to even sides
        return {};
    if ((!shareColumns || size.width() % 2 == 0) && (!shareRows || size.height() % 2 == 0))
        return {};
    return QStringLiteral("%1 holds no frames of %2x%3 pixels: odd sides need a recipe of "
                          "4:4:4 or RGB, such as prores-4444 or ffv1")
        .arg(recipe.name)
        .arg(size.width())
        .arg(size.height());
}

} // namespace

double pixelsOf(const QString &resolution)
{
    const QStringList sides = resolution.split(QLatin1Char('x'));
    if (sides.size() != 2)
        return 0;
    return static_cast<double>(sides.first().toUInt()) * static_cast<double>(sides.last().toUInt());
}

QSize developedSize(const MlvMetadata &metadata)
{
    const QStringList sides = metadata.resolution.split(QLatin1Char('x'));
    if (sides.size() != 2)
        return {};
    QSize size(sides.first().toInt(), sides.last().toInt());
    const QRect &active = metadata.activeArea;
    if (active.isValid() && QRect(QPoint(0, 0), size).contains(active))
        size = active.size();
    const QSize &sampling = metadata.sampling;
    if (sampling.isEmpty() || sampling.width() == sampling.height())
        return size;
    // The shorter measure is stretched to the even number that is nearest.
    const auto stretched = [](int side, int longer, int shorter) {
        constexpr double most = 1e8;
        return static_cast<int>(std::lround(std::min(0.5 * side * longer / shorter, most))) * 2;
    };
    if (sampling.height() > sampling.width())
        size.setHeight(stretched(size.height(), sampling.height(), sampling.width()));
    else
        size.setWidth(stretched(size.width(), sampling.width(), sampling.height()));
    return size;
}

QString sizeError(const QSize &size, qint32 format, const std::optional<Recipe> &recipe)
{
    if (size.isEmpty())
        return {};
    return recipe ? recipeError(size, *recipe) : formatError(size, format);
}

} // namespace filmwright
