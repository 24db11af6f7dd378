// SPDX-License-Identifier: MIT
#include "support/fakemovie.h"

#include <QtEndian>

namespace {

QByteArray number(quint32 value)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

QByteArray chunk(const char *type, const QByteArray &content)
{
    return type + number(static_cast<quint32>(content.size())) + content;
}

} // namespace

QByteArray fakeMovie(int frames)
{
    constexpr qsizetype beforeLength = 32;
    const QByteArray stream = QByteArray("vids").leftJustified(beforeLength, '\0') +
                              number(static_cast<quint32>(frames)) + QByteArray(20, '\0');
    const QByteArray headers = "hdrl" + chunk("LIST", "strl" + chunk("strh", stream));
    return chunk("RIFF", "AVI " + chunk("LIST", headers));
}
