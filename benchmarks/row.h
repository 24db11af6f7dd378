// SPDX-License-Identifier: MIT
#pragma once

#include <cstdio>

/// Prints what scripts/bench collects: six fields, divided by tabs. The result is
/// figure / reference, both in `unit`. A goal is "at most R" or "at least R" for that ratio, or
/// "at most D more" for the difference.
inline void printRow(const char *what, double figure, const char *unit, const char *beside,
                     double reference, const char *goal = "")
{
    std::printf("%s\t%g\t%s\t%s\t%g\t%s\n", what, figure, unit, beside, reference, goal);
    std::fflush(stdout);
}
