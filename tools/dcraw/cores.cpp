// SPDX-License-Identifier: MIT
#include "dcraw/cores.h"

#include <pthread.h>

namespace dcraw {

Cores::Cores()
    // On a machine with more cores than the set has room for, one is all that is certain.
    : m_count(::sched_getaffinity(0, sizeof m_set, &m_set) == 0 ? CPU_COUNT(&m_set) : 1)
{
}

void Cores::takeElsewhere(std::jthread &thread) const
{
    const int own = ::sched_getcpu();
    if (m_count < 2 || own < 0)
        return;
    cpu_set_t others = m_set;
    CPU_CLR(static_cast<unsigned>(own), &others);
    ::pthread_setaffinity_np(thread.native_handle(), sizeof others, &others);
}

void Cores::useAll() const
{
    if (m_count > 1)
        ::sched_setaffinity(0, sizeof m_set, &m_set);
}

} // namespace dcraw
