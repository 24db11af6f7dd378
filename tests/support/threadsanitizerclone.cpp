// SPDX-License-Identifier: MIT
// Compiled into the tests of a thread-sanitizer build only.
//
// QProcess starts a child by clone() with shared memory. The sanitizer takes that for a fork: its
// own clone() resets the state of the calling thread in the child, and so, the memory being
// shared, in the parent, which then aborts or sees races where there are none. This definition
// takes its place and goes to the C library directly.
#include <cstdarg>
#include <sched.h>

extern "C" int __clone(int (*function)(void *), void *stack, int flags, void *argument, ...);

extern "C" __attribute__((visibility("default"))) int clone(int (*function)(void *), void *stack,
                                                            int flags, void *argument, ...) noexcept
{
    std::va_list rest;
    va_start(rest, argument);
    auto *parentThreadId = va_arg(rest, pid_t *); // also where the kernel puts CLONE_PIDFD's
    auto *threadLocalStorage = va_arg(rest, void *);
    auto *childThreadId = va_arg(rest, pid_t *);
    va_end(rest);
    return __clone(function, stack, flags, argument, parentThreadId, threadLocalStorage,
                   childThreadId);
}
