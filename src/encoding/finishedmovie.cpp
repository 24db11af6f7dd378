// SPDX-License-Identifier: MIT
#include "encoding/finishedmovie.h"

#include <QFile>
#include <QtEndian>

#include <vector>

// QuickTime File Format: atoms of a big-endian length (with its header) and a type.
// AVI (RIFF, with the OpenDML extension): chunks of a type and a little-endian length (without its
// header), padded to an even length; lists carry a second type in front of their chunks.

namespace filmwright {

namespace {

struct Part
{
    QByteArray type;
    qint64 begin = 0; ///< of what follows the header
    qint64 end = 0;
};
using Parts = std::vector<Part>;

template <typename T>
using Reader = T (*)(const void *);

template <typename T>
std::optional<T> numberAt(QFile &file, qint64 position, Reader<T> read)
{
    const QByteArray bytes = file.seek(position) ? file.read(sizeof(T)) : QByteArray();
    return bytes.size() == sizeof(T) ? std::optional(read(bytes.constData())) : std::nullopt;
}

QByteArray typeAt(QFile &file, qint64 position)
{
    return file.seek(position) ? file.read(4) : QByteArray();
}

// --- QuickTime ---

std::optional<Part> atomAt(QFile &file, qint64 position, qint64 end)
{
    constexpr qint64 header = 8;
    constexpr qint64 longHeader = 16;
    const auto shortSize = numberAt<quint32>(file, position, qFromBigEndian<quint32>);
    const QByteArray type = typeAt(file, position + 4);
    if (!shortSize || type.size() != 4)
        return {};
    if (*shortSize != 1) {
        if (*shortSize < header || *shortSize > end - position)
            return {};
        return Part{type, position + header, position + *shortSize};
    }
    const auto size = numberAt<quint64>(file, position + header, qFromBigEndian<quint64>);
    if (!size || *size < longHeader || *size > static_cast<quint64>(end - position))
        return {};
    return Part{type, position + longHeader, position + static_cast<qint64>(*size)};
}

/// The atoms that fill a range; none when they don't.
Parts atomsIn(QFile &file, qint64 begin, qint64 end)
{
    Parts atoms;
    while (begin < end) {
        const auto atom = atomAt(file, begin, end);
        if (!atom)
            return {};
        atoms.push_back(*atom);
        begin = atom->end;
    }
    return atoms;
}

Part child(QFile &file, const Part &parent, const char *type)
{
    for (const Part &atom : atomsIn(file, parent.begin, parent.end))
        if (atom.type == type)
            return atom;
    return {};
}

bool isVideoTrack(QFile &file, const Part &media)
{
    constexpr qint64 handlerType = 8;
    return typeAt(file, child(file, media, "hdlr").begin + handlerType) == "vide";
}

std::optional<quint64> framesOfQuickTime(QFile &file)
{
    constexpr qint64 sampleCount = 8;
    const Part movie = child(file, {{}, 0, file.size()}, "moov");
    for (const Part &track : atomsIn(file, movie.begin, movie.end)) {
        const Part media = child(file, track, "mdia");
        if (track.type != "trak" || !isVideoTrack(file, media))
            continue;
        const Part table = child(file, child(file, media, "minf"), "stbl");
        const Part sizes = child(file, table, "stsz");
        if (sizes.type.isEmpty())
            return {};
        return numberAt<quint32>(file, sizes.begin + sampleCount, qFromBigEndian<quint32>);
    }
    return {};
}

// --- AVI ---

/// The chunks that fill a range; none when they don't.
Parts chunksIn(QFile &file, qint64 begin, qint64 end)
{
    constexpr qint64 header = 8;
    Parts chunks;
    while (begin < end) {
        const QByteArray type = typeAt(file, begin);
        const auto size = numberAt<quint32>(file, begin + 4, qFromLittleEndian<quint32>);
        if (!size || *size > end - begin - header)
            return {};
        chunks.push_back({type, begin + header, begin + header + *size});
        begin = chunks.back().end + *size % 2;
    }
    return chunks;
}

/// The chunks in the list of that second type; none when it isn't among the chunks.
Parts listIn(QFile &file, const Parts &chunks, const char *type)
{
    for (const Part &chunk : chunks)
        if ((chunk.type == "LIST" || chunk.type == "RIFF") && typeAt(file, chunk.begin) == type)
            return chunksIn(file, chunk.begin + 4, chunk.end);
    return {};
}

std::optional<quint64> framesOfAvi(QFile &file)
{
    constexpr qint64 streamLength = 32;
    // A long movie is a row of RIFF chunks, of which the first has the headers.
    const Parts header = listIn(file, listIn(file, chunksIn(file, 0, file.size()), "AVI "), "hdrl");
    for (const Part &stream : header) {
        const Parts chunks = listIn(file, {stream}, "strl");
        if (!chunks.empty() && chunks.front().type == "strh" &&
            typeAt(file, chunks.front().begin) == "vids")
            return numberAt<quint32>(file, chunks.front().begin + streamLength,
                                     qFromLittleEndian<quint32>);
    }
    return {};
}

} // namespace

std::optional<quint64> framesOfFinishedMovie(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return typeAt(file, 0) == "RIFF" ? framesOfAvi(file) : framesOfQuickTime(file);
}

} // namespace filmwright
