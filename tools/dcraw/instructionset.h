// SPDX-License-Identifier: MIT
// Include before highway's headers.
//
// The loops in vectors are compiled once for each instruction set, and the best that the processor
// has is taken at run time. Highway's own choice isn't used, because it comes with its library, and
// that calibrates a timer whenever a program starts: two milliseconds, a tenth of a frame's time.
#pragma once

#include <array>

#ifndef __x86_64__
#define HWY_COMPILE_ONLY_STATIC // what all processors of the kind have
#endif

namespace dcraw {

/// Each has all that is in those before it.
enum class InstructionSet { Portable, Ssse3, Sse4, Avx2, Avx512 };

constexpr std::array<const char *, 5> instructionSetNames{"portable", "SSSE3", "SSE4", "AVX2",
                                                          "AVX-512"};

/// The one that is used.
InstructionSet instructionSet();
/// The best one that the processor has.
InstructionSet bestInstructionSet();
/// For tests and benchmarks: has a lower one used from now on.
void useInstructionSet(InstructionSet set);

} // namespace dcraw

/// The variant of a function in HWY_NAMESPACE for the instruction set that is used. Behind the last
/// HWY_AFTER_NAMESPACE(), where HWY_ONCE holds.
#define DCRAW_VARIANT(function)                                                                    \
    (std::array<decltype(&HWY_STATIC_DISPATCH(function)), 5>{                                      \
        &HWY_STATIC_DISPATCH(function), HWY_CHOOSE_SSSE3(function), HWY_CHOOSE_SSE4(function),     \
        HWY_CHOOSE_AVX2(function),                                                                 \
        HWY_CHOOSE_AVX3(function)}[static_cast<unsigned>(dcraw::instructionSet())])
