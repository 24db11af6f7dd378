// SPDX-License-Identifier: MIT
#pragma once

// The levels of the sample recordings' 14 bits.
constexpr int black = 2048;
constexpr int white = 15000;
