// SPDX-License-Identifier: MIT
#pragma once

#include "negativewriter.h"

#include <QByteArray>
#include <QStringList>

#include <cstdint>
#include <random>

/// A random picture and how it is to be developed: all that may differ between two recordings, and
/// scenes that are hard to develop. The same seed gives the same.
class RandomNegative
{
public:
    explicit RandomNegative(std::uint32_t seed);

    /// The DNG's bytes.
    QByteArray encoded() const { return m_writer.encoded(); }
    /// What dcraw is called with before the file; a list of bad pixels is "bad.txt".
    const QStringList &arguments() const { return m_arguments; }
    /// A list for -P.
    const QByteArray &badPixels() const { return m_badPixels; }

private:
    int between(int least, int most);
    bool oneIn(int count) { return between(1, count) == 1; }
    double real(double least, double most);
    QString number(double least, double most);

    void chooseShape();
    void chooseLevels();
    void chooseColours();
    void chooseAreas();
    void chooseTexts();
    void paint();
    double light(int x, int y, int kind) const;
    void chooseArguments();
    void addFurtherOptions();
    void listBadPixels();

    std::mt19937 m_random;
    NegativeWriter m_writer;
    int m_width = 0;
    int m_height = 0;
    int m_bits = 0;
    int m_black = 0;
    int m_white = 0;
    QStringList m_arguments;
    QByteArray m_badPixels;
};
