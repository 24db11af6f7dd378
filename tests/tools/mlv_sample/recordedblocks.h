// SPDX-License-Identifier: MIT
// The blocks of a written recording, for tests that look at it byte by byte.
#pragma once

#include "mlv/blocks.h"

#include <QByteArray>
#include <QList>

struct RecordedBlock
{
    QByteArray type;
    quint64 timestamp;
    QByteArray payload; ///< everything behind the block header

    template <typename Layout>
    Layout as() const
    {
        return mlv::decodeLayout<Layout>(std::as_bytes(std::span(payload.data(), size())));
    }
    std::size_t size() const { return static_cast<std::size_t>(payload.size()); }
};

struct RecordedFile
{
    mlv::FileHeader header;
    QList<RecordedBlock> blocks; ///< whole ones only

    QList<RecordedBlock> ofType(const QByteArray &type) const;
    /// The numbers of the frames (type "VIDF") or pieces of sound (type "AUDF") in file order.
    QList<quint32> numbers(const QByteArray &type) const;
};

/// Fails the running test if the file can't be read.
RecordedFile readRecording(const QString &path);
