// SPDX-License-Identifier: MIT
#include "mlvdump/mlvdumpreport.h"

#include "runner/systemlog.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <stdexcept>
#include <string>

namespace filmwright {

namespace {

/// The ASCII bytes that a number could be read from; without a digit or a point in front there is
/// no number ("nan" and "inf" are none).
std::string numericText(const QString &text)
{
    std::string digits = text.trimmed().toLatin1().toStdString();
    if (!digits.empty() && digits.front() == '+')
        digits.erase(0, 1);
    const std::size_t first = digits.find_first_not_of('-');
    const bool isNumber = first < 2 && first < digits.size() &&
                          (digits[first] == '.' || (digits[first] >= '0' && digits[first] <= '9'));
    return isNumber ? digits : std::string();
}

template <typename Float>
Float leadingFloat(const QString &text)
{
    const std::string digits = numericText(text);
    Float value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return value;
}

/// `count` lines from the one after the header on; the header itself is line 0 of the block.
QStringList linesAfter(const QStringList &lines, qsizetype header, qsizetype count)
{
    entryAt(lines, header + count);
    return lines.mid(header + 1, count);
}

QString afterFirst(const QString &line, const QString &separator)
{
    return entryAt(line.split(separator), 1);
}

/// The value on line `number` of a block whose lines after the header are given.
QString valueOf(const QStringList &block, qsizetype number)
{
    return afterFirst(entryAt(block, number - 1), QStringLiteral(":"));
}

/// Without white space at both ends, then without punctuation at both ends: names are printed in
/// quotes.
QString trimmedTwice(const QString &text)
{
    const QString trimmed = text.trimmed();
    qsizetype begin = 0;
    qsizetype end = trimmed.size();
    while (begin < end && trimmed.at(begin).isPunct())
        ++begin;
    while (end > begin && trimmed.at(end - 1).isPunct())
        --end;
    return trimmed.sliced(begin, end - begin);
}

/// The value behind a label that has no separator, by name; empty in a report without it, which is
/// as good.
QString labelled(const QStringList &block, const char *label)
{
    const QString name = QString::fromLatin1(label);
    for (const QString &line : block)
        if (const QString entry = line.trimmed(); entry.startsWith(name + QLatin1Char(' ')))
            return entry.mid(name.size()).trimmed();
    return {};
}

/// A number that can be reckoned with: 0 without one, and no more than any sensor has pixels on a
/// side.
int limited(const QString &text)
{
    constexpr int most = 1000000;
    return std::clamp(text.toInt(), -1, most);
}

void readFileHeaders(const QStringList &lines, MlvMetadata &metadata)
{
    const QString header = QStringLiteral("File Header (MLVI)");
    constexpr qsizetype headerLines = 7;
    qsizetype at = lines.indexOf(header);
    if (at < 0) {
        metadata.fps = 0;
        metadata.videoFrames = 0;
        metadata.audioFrames = 0;
        systemLog(QStringLiteral("Unable to read File Header (MLVI)"));
        return;
    }
    const QStringList first = linesAfter(lines, at, headerLines);
    metadata.fps = leadingFloat<float>(valueOf(first, 4));
    metadata.videoFrames = static_cast<quint64>(leadingInteger(valueOf(first, 6)));
    metadata.audioFrames = static_cast<quint64>(leadingInteger(valueOf(first, 7)));
    // A split recording prints one header a file, each with that file's counts.
    while ((at = lines.indexOf(header, at + 1)) >= 0) {
        const QStringList next = linesAfter(lines, at, headerLines);
        if (next.size() == headerLines) {
            metadata.videoFrames += static_cast<quint64>(leadingInteger(valueOf(next, 6)));
            metadata.audioFrames += static_cast<quint64>(leadingInteger(valueOf(next, 7)));
        } else {
            systemLog(QStringLiteral("Bad size (%1!=7) for File Header (MLVI)").arg(next.size()));
        }
    }
}

void readExposure(const QStringList &block, MlvMetadata &metadata)
{
    metadata.iso = static_cast<quint64>(leadingInteger(valueOf(block, 5)));
    const QString microseconds = valueOf(block, 8).split(QStringLiteral("\u00b5s")).constFirst();
    metadata.shutter = leadingFloat<double>(microseconds) / 1000000;
}

void readIdentity(const QStringList &block, MlvMetadata &metadata)
{
    metadata.camera = trimmedTwice(valueOf(block, 4));
    metadata.cameraSerial = trimmedTwice(valueOf(block, 5));
}

void readLens(const QStringList &block, MlvMetadata &metadata)
{
    metadata.lens = trimmedTwice(valueOf(block, 4));
    metadata.focal = trimmedTwice(valueOf(block, 6));
    metadata.aperture = leadingFloat<float>(afterFirst(valueOf(block, 8), QStringLiteral("f/")));
}

void readClock(const QStringList &block, MlvMetadata &metadata)
{
    metadata.date = valueOf(block, 4).trimmed();
    metadata.time = afterFirst(entryAt(block, 4), QStringLiteral("Time:")).trimmed();
}

void readRawInformation(const QStringList &block, MlvMetadata &metadata)
{
    metadata.resolution = valueOf(block, 4).trimmed();
    const auto number = [&block](const char *label) { return limited(labelled(block, label)); };
    metadata.bitsPerSample = number("bits_per_pixel");
    metadata.activeArea.setCoords(number("active_area.x1"), number("active_area.y1"),
                                  number("active_area.x2") - 1, number("active_area.y2") - 1);
}

/// Modes have the numbers of the camera's menu; in mode 9 a temperature was set.
QString whiteBalanceName(int mode, const QString &kelvin)
{
    switch (mode) {
    case 0:
        return QStringLiteral("automatic");
    case 1:
        return QStringLiteral("daylight");
    case 2:
        return QStringLiteral("cloudy");
    case 3:
        return QStringLiteral("tungsten");
    case 4:
        return QStringLiteral("fluorescent");
    case 5:
        return QStringLiteral("flash");
    case 6:
        return QStringLiteral("custom");
    case 8:
        return QStringLiteral("shade");
    case 9:
        return QStringLiteral("%1 K").arg(limited(kelvin));
    default:
        return {};
    }
}

/// The first one holds. It is for a person only: a report without it is as good.
void readWhiteBalance(const QStringList &lines, MlvMetadata &metadata)
{
    constexpr qsizetype modeLine = 4;
    const qsizetype header = lines.indexOf(QStringLiteral("Block: WBAL"));
    if (header < 0 || header + modeLine + 1 >= lines.size())
        return;
    const auto value = [&lines, header](qsizetype line) {
        return lines.at(header + line).section(QLatin1Char(':'), 1).trimmed();
    };
    bool isNumber = false;
    const int mode = value(modeLine).toInt(&isNumber);
    metadata.whiteBalance = isNumber ? whiteBalanceName(mode, value(modeLine + 1)) : QString();
}

/// "5x3 (1 of 5 lines read, 1 of 3 columns read)".
void readSampling(const QStringList &lines, MlvMetadata &metadata)
{
    constexpr qsizetype mostLines = 8;
    const qsizetype header = lines.indexOf(QStringLiteral("Block: RAWC"));
    if (header < 0)
        return;
    const QString sampling = labelled(lines.mid(header + 1, mostLines), "sampling");
    const QStringList sides = sampling.section(QLatin1Char(' '), 0, 0).split(QLatin1Char('x'));
    metadata.sampling = QSize(limited(sides.constLast()), limited(sides.constFirst()));
}

/// "Frames with filled gaps: 12", behind the blocks of a recording with gaps.
void readFilledFrames(const QStringList &lines, MlvMetadata &metadata)
{
    const QString label = QStringLiteral("Frames with filled gaps:");
    const auto line = std::find_if(lines.cbegin(), lines.cend(), [&label](const QString &text) {
        return text.startsWith(label);
    });
    metadata.filledFrames =
        line == lines.cend() ? 0 : line->mid(label.size()).trimmed().toULongLong();
}

struct BlockReader
{
    QLatin1String header;
    qsizetype lines;
    void (*read)(const QStringList &block, MlvMetadata &metadata);
    QLatin1String missingMessage;
};

/// The message of a missing exposure block serves identity and lens too: people search their logs
/// for that text.
constexpr QLatin1String missingBlockMessage("Unable to read Block: EXPO");

const BlockReader blockReaders[] = {
    {QLatin1String("Block: EXPO"), 8, readExposure, missingBlockMessage},
    {QLatin1String("Block: IDNT"), 6, readIdentity, missingBlockMessage},
    {QLatin1String("Block: LENS"), 12, readLens, missingBlockMessage},
    {QLatin1String("Block: RTCI"), 9, readClock, QLatin1String()},
    {QLatin1String("Block: RAWI"), 20, readRawInformation, QLatin1String()},
};

} // namespace

const QString &entryAt(const QStringList &list, qsizetype index)
{
    if (index < 0 || index >= list.size()) {
        throw std::out_of_range("Index " + std::to_string(index) + " is beyond the bounds of " +
                                std::to_string(list.size()) + " entries");
    }
    return list.at(index);
}

qint64 leadingInteger(const QString &text)
{
    const std::string digits = numericText(text);
    qint64 value = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        using Limits = std::numeric_limits<qint64>;
        return digits.front() == '-' ? Limits::min() : Limits::max();
    }
    return value;
}

void readReport(const QStringList &lines, MlvMetadata &metadata)
{
    readFileHeaders(lines, metadata);
    for (const BlockReader &reader : blockReaders) {
        const qsizetype header = lines.indexOf(reader.header);
        if (header >= 0)
            reader.read(linesAfter(lines, header, reader.lines), metadata);
        else if (!reader.missingMessage.isEmpty())
            systemLog(reader.missingMessage);
    }
    readSampling(lines, metadata);
    readFilledFrames(lines, metadata);
    readWhiteBalance(lines, metadata);
}

} // namespace filmwright
