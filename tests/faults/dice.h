// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <random>

/// Chance that comes again with the same seed and number.
class Dice
{
public:
    Dice(quint32 seed, int number)
        : m_sequence({seed, static_cast<quint32>(number)})
        , m_engine(m_sequence)
    {
    }

    /// From 0 to `below` - 1. Not by a standard distribution: those differ between libraries.
    int number(int below) { return static_cast<int>(m_engine() % static_cast<quint32>(below)); }
    double share() { return number(10000) / 10000.0; }

private:
    std::seed_seq m_sequence;
    std::mt19937 m_engine;
};
