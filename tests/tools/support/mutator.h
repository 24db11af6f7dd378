// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <cstdint>
#include <random>

/// Damages recordings: flips bits, cuts and moves blocks, forges sizes, numbers and settings. The
/// same seed damages the same recording in the same way.
class Mutator
{
public:
    explicit Mutator(std::uint32_t seed);

    /// The recording with one to four kinds of damage.
    QByteArray mutated(QByteArray recording);

private:
    struct Place
    {
        qsizetype start;
        qsizetype size;
    };

    void damage(QByteArray &recording);
    void flipBits(QByteArray &recording, Place within);
    void forgeNumber(QByteArray &recording, qsizetype at);
    void forgeHead(QByteArray &recording);
    void removeBlock(QByteArray &recording);
    void moveBlock(QByteArray &recording);
    void repeatBlock(QByteArray &recording);
    void insertGarbage(QByteArray &recording);
    void cutTail(QByteArray &recording);

    Place randomBlock(const QByteArray &recording);
    qsizetype below(qsizetype limit);

    std::mt19937 m_random;
};
