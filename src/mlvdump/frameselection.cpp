// SPDX-License-Identifier: MIT
#include "mlvdump/frameselection.h"

#include <QRegularExpression>

#include <algorithm>

namespace filmwright {

quint64 FrameSelection::countOf(quint64 frames) const
{
    const quint64 end = last == 0 ? frames : std::min(last, frames);
    return end < first ? 0 : end - first + 1;
}

QString FrameSelection::error(quint64 frames) const
{
    if (std::max(first, last) <= frames)
        return {};
    return QStringLiteral("the frames %1 are asked for, but it has only %2")
        .arg(text())
        .arg(frames);
}

QString FrameSelection::text() const
{
    if (isWhole())
        return {};
    const QString begin = first == 1 && last != 1 ? QString() : QString::number(first);
    return begin + QLatin1Char('-') + (last == 0 ? QString() : QString::number(last));
}

std::optional<FrameSelection> FrameSelection::fromText(const QString &text)
{
    static const QRegularExpression form(QStringLiteral("^\\d{0,9}-\\d{0,9}$"));
    if (!form.match(text).hasMatch() || text == QLatin1String("-"))
        return std::nullopt;
    const QString begin = text.section(QLatin1Char('-'), 0, 0);
    const QString end = text.section(QLatin1Char('-'), 1);
    const FrameSelection selection{begin.isEmpty() ? 1 : begin.toULongLong(), end.toULongLong()};
    const bool isEmpty = !end.isEmpty() && selection.last < selection.first;
    return selection.first == 0 || isEmpty ? std::nullopt : std::optional(selection);
}

/// There an end of 0 behind a dash is no limit, so that frames from the first one on are given by
/// their last one alone.
QString FrameSelection::range() const
{
    if (first == 1)
        return QString::number(last - 1);
    return QStringLiteral("%1-%2").arg(first - 1).arg(last == 0 ? 0 : last - 1);
}

} // namespace filmwright
