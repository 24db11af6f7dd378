// SPDX-License-Identifier: MIT
#pragma once

#include <sched.h>
#include <thread>

namespace dcraw {

/// The processor's cores that the calling thread may use.
class Cores
{
public:
    Cores();

    /// At least one.
    int count() const { return m_count; }

    /// Has a new thread begin on another core than the caller's. Systems are known to leave it
    /// there for some milliseconds, behind its creator, while another core has nothing to do.
    void takeElsewhere(std::jthread &thread) const;
    /// Lets the calling thread use all of them.
    void useAll() const;

private:
    cpu_set_t m_set;
    int m_count;
};

} // namespace dcraw
