// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <chrono>
#include <cstdint>
#include <random>

/// How many recordings are damaged: FILMWRIGHT_MUTATIONS, 10000 for the long run; by default 1000.
int mutationCount();

/// What nobody calls slow, on whatever machine; a hang is longer.
constexpr std::chrono::seconds hang{60};

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
