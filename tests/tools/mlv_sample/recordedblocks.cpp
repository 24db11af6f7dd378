// SPDX-License-Identifier: MIT
#include "recordedblocks.h"

#include <QFile>
#include <QTest>

QList<RecordedBlock> RecordedFile::ofType(const QByteArray &type) const
{
    QList<RecordedBlock> found;
    std::copy_if(blocks.begin(), blocks.end(), std::back_inserter(found),
                 [&](const RecordedBlock &block) { return block.type == type; });
    return found;
}

QList<quint32> RecordedFile::numbers(const QByteArray &type) const
{
    QList<quint32> found;
    for (const RecordedBlock &block : ofType(type))
        found.append(block.as<quint32>());
    return found;
}

RecordedFile readRecording(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        QTest::qFail(qPrintable(file.errorString()), __FILE__, __LINE__);
        return {};
    }
    const QByteArray bytes = file.readAll();
    const auto span = [&](qsizetype at) {
        return std::as_bytes(
            std::span(bytes.data() + at, static_cast<std::size_t>(bytes.size() - at)));
    };
    RecordedFile recording{mlv::decodeLayout<mlv::FileHeader>(span(0)), {}};
    for (qsizetype at = sizeof(mlv::FileHeader); at + qsizetype{16} <= bytes.size();) {
        const auto header = mlv::decodeLayout<mlv::BlockHeader>(span(at));
        if (header.size < sizeof header ||
            header.size > static_cast<std::size_t>(bytes.size() - at))
            break;
        recording.blocks.append({QByteArray(header.type.data(), 4), header.timestamp,
                                 bytes.mid(at + qsizetype{16}, qsizetype{header.size} - 16)});
        at += header.size;
    }
    return recording;
}
