// SPDX-License-Identifier: MIT
#include "mutator.h"

#include "mlv/blocks.h"

#include <QtEndian>

#include <vector>

namespace {

constexpr qsizetype sizeField = 4;

} // namespace

int mutationCount()
{
    const int wanted = qEnvironmentVariableIntValue("FILMWRIGHT_MUTATIONS");
    return wanted > 0 ? wanted : 1000;
}

Mutator::Mutator(std::uint32_t seed)
    : m_random(seed)
{
}

QByteArray Mutator::mutated(QByteArray recording)
{
    for (auto kinds = 1 + below(4); kinds > 0; --kinds)
        damage(recording);
    return recording;
}

void Mutator::damage(QByteArray &recording)
{
    switch (below(10)) {
    case 0:
        return flipBits(recording, {0, recording.size()});
    case 1:
    case 2:
        return flipBits(recording, randomBlock(recording));
    case 3:
        return removeBlock(recording);
    case 4:
        return moveBlock(recording);
    case 5:
        return repeatBlock(recording);
    case 6:
        return insertGarbage(recording);
    case 7:
        return cutTail(recording);
    default:
        return forgeHead(recording);
    }
}

void Mutator::flipBits(QByteArray &recording, Place within)
{
    for (auto flips = 1 + below(20); flips > 0 && within.size > 0; --flips) {
        const auto at = within.start + below(within.size);
        recording[at] = static_cast<char>(recording[at] ^ (1 << below(8)));
    }
}

void Mutator::forgeNumber(QByteArray &recording, qsizetype at)
{
    if (at < 0 || at + 4 > recording.size())
        return;
    const auto old = qFromLittleEndian<quint32>(recording.constData() + at);
    const quint32 forged[] = {0,           1,          15,         16,
                              17,          old + 1,    old - 1,    old * 2,
                              old / 2,     0x7fffffff, 0x80000000, 0xffffffff,
                              0xfffffff0,  0xffff,     0x10000000, static_cast<quint32>(m_random()),
                              old ^ 0x100, 0x00400040};
    qToLittleEndian(forged[below(std::size(forged))], recording.data() + at);
}

/// A number in the first bytes of a block or of the file: sizes, counts, frame numbers, frame
/// space, geometry, depth, formats.
void Mutator::forgeHead(QByteArray &recording)
{
    const auto block = below(4) == 0 ? Place{0, 52} : randomBlock(recording);
    const bool isSize = below(3) == 0;
    const auto field =
        isSize ? sizeField
               : below(std::max<qsizetype>(1, std::min<qsizetype>(block.size, 64) / 2)) * 2;
    forgeNumber(recording, block.start + field);
}

void Mutator::removeBlock(QByteArray &recording)
{
    const auto block = randomBlock(recording);
    recording.remove(block.start, below(2) == 0 ? block.size : below(block.size + 1));
}

void Mutator::moveBlock(QByteArray &recording)
{
    const auto block = randomBlock(recording);
    const auto bytes = recording.mid(block.start, block.size);
    recording.remove(block.start, block.size);
    recording.insert(randomBlock(recording).start, bytes);
}

void Mutator::repeatBlock(QByteArray &recording)
{
    const auto block = randomBlock(recording);
    recording.insert(randomBlock(recording).start, recording.mid(block.start, block.size));
}

void Mutator::insertGarbage(QByteArray &recording)
{
    QByteArray garbage(below(600), '\0');
    for (auto &byte : garbage)
        byte = static_cast<char>(m_random());
    recording.insert(randomBlock(recording).start, garbage);
}

void Mutator::cutTail(QByteArray &recording)
{
    recording.truncate(below(recording.size() + 1));
}

Mutator::Place Mutator::randomBlock(const QByteArray &recording)
{
    std::vector<Place> places;
    qsizetype at = sizeof(mlv::FileHeader);
    while (at + qsizetype{sizeof(mlv::BlockHeader)} <= recording.size()) {
        const qsizetype size = qFromLittleEndian<quint32>(recording.constData() + at + sizeField);
        if (size < qsizetype{sizeof(mlv::BlockHeader)} || size > recording.size() - at)
            break;
        places.push_back({at, size});
        at += size;
    }
    if (places.empty())
        return {0, recording.size()};
    return places[static_cast<std::size_t>(below(static_cast<qsizetype>(places.size())))];
}

qsizetype Mutator::below(qsizetype limit)
{
    return limit <= 0 ? 0 : static_cast<qsizetype>(m_random() % static_cast<std::uint64_t>(limit));
}
