// SPDX-License-Identifier: MIT
#include "dcraw/instructionset.h"

#include <atomic>

namespace dcraw {
namespace {

std::atomic<InstructionSet> &used()
{
    static std::atomic<InstructionSet> set = bestInstructionSet();
    return set;
}

} // namespace

InstructionSet instructionSet()
{
    return used().load(std::memory_order_relaxed);
}

InstructionSet bestInstructionSet()
{
#ifdef __x86_64__
    __builtin_cpu_init();
    const bool ssse3 = __builtin_cpu_supports("ssse3");
    const bool sse4 = ssse3 && __builtin_cpu_supports("sse4.2") && __builtin_cpu_supports("aes") &&
                      __builtin_cpu_supports("pclmul");
    const bool avx2 = sse4 && __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
                      __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2");
    const bool avx512 = avx2 && __builtin_cpu_supports("avx512f") &&
                        __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq") &&
                        __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512cd");
    return avx512  ? InstructionSet::Avx512
           : avx2  ? InstructionSet::Avx2
           : sse4  ? InstructionSet::Sse4
           : ssse3 ? InstructionSet::Ssse3
                   : InstructionSet::Portable;
#else
    return InstructionSet::Portable;
#endif
}

void useInstructionSet(InstructionSet set)
{
    used() = set;
}

} // namespace dcraw
