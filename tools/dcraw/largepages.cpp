// SPDX-License-Identifier: MIT
#include "dcraw/largepages.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <malloc.h>
#include <memory>
#include <sys/mman.h>

namespace dcraw {
namespace {

constexpr std::size_t largePage = std::size_t{2} << 20; // of x86-64 and most others
constexpr std::size_t reserved = std::size_t{24} << 20; // what lies beyond it lies in small pages
constexpr int largestBlock = 32 * 1024 * 1024;          // that glibc takes from its heap

} // namespace

void useLargePages()
{
    // One heap for all threads, from which also large blocks are taken and which never shrinks:
    // what is reserved here is then what they take first.
    // NOLINTBEGIN(concurrency-mt-unsafe): there is no second thread yet.
    mallopt(M_ARENA_MAX, 1);
    mallopt(M_MMAP_THRESHOLD, largestBlock);
    mallopt(M_TRIM_THRESHOLD, 4 * largestBlock);
    // NOLINTEND(concurrency-mt-unsafe)
    void *const heap = std::malloc(reserved);
    void *aligned = heap;
    std::size_t space = reserved;
    if (heap != nullptr && std::align(largePage, largePage, aligned, space) != nullptr)
        madvise(aligned, space / largePage * largePage, MADV_HUGEPAGE);
    std::free(heap);
}

} // namespace dcraw
