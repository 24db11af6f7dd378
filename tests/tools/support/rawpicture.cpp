// SPDX-License-Identifier: MIT
#include "rawpicture.h"

#include "toolrun.h"

#include <QRegularExpression>
#include <QtEndian>

#include <algorithm>
#include <cstdlib>

namespace {

RawPicture parsePgm(const QByteArray &pgm)
{
    static const QRegularExpression head(QStringLiteral("^P5\\s(\\d+)\\s(\\d+)\\s65535\\s"));
    const auto match = head.match(QString::fromLatin1(pgm.left(40)));
    RawPicture picture;
    if (!match.hasMatch())
        return picture;
    picture.width = match.capturedView(1).toInt();
    picture.height = match.capturedView(2).toInt();
    const auto count = static_cast<qsizetype>(picture.width) * picture.height;
    const auto data = pgm.mid(match.capturedLength());
    if (data.size() != count * 2)
        return {};
    picture.samples.resize(static_cast<std::size_t>(count));
    qFromBigEndian<std::uint16_t>(data.constData(), count, picture.samples.data());
    return picture;
}

} // namespace

int RawPicture::largestDifference(const RawPicture &other) const
{
    if (samples.empty() || width != other.width || height != other.height)
        return -1;
    int largest = 0;
    for (std::size_t i = 0; i < samples.size(); ++i)
        largest = std::max(largest, std::abs(samples[i] - other.samples[i]));
    return largest;
}

int RawPicture::level() const
{
    const bool even = !samples.empty() &&
                      std::all_of(samples.begin(), samples.end(),
                                  [this](std::uint16_t sample) { return sample == samples[0]; });
    return even ? samples[0] : -1;
}

RawPicture readDng(const QString &path)
{
    return parsePgm(outputOf(QStringLiteral("dcraw"), {QStringLiteral("-D"), QStringLiteral("-4"),
                                                       QStringLiteral("-c"), path}));
}

RawPicture readPackedPgm(const QString &path)
{
    return parsePgm(outputOf(QStringLiteral("gzip"), {QStringLiteral("-dc"), path}));
}
