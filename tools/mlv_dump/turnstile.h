// SPDX-License-Identifier: MIT
#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>

namespace mlvdump {

/// Lets threads through one after the other in the order of their numbers, from 0. All operations
/// may be called from any thread.
class Turnstile
{
public:
    /// Waits for the turn of `number`. Answers false when the turnstile was closed: the caller does
    /// not go through.
    [[nodiscard]] bool enter(std::size_t number)
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return m_closed || m_turn == number; });
        return !m_closed;
    }

    /// The one that entered is through; the next may enter.
    void leave()
    {
        const std::lock_guard lock(m_mutex);
        ++m_turn;
        m_changed.notify_all();
    }

    /// Nobody enters any more.
    void close()
    {
        const std::lock_guard lock(m_mutex);
        m_closed = true;
        m_changed.notify_all();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::size_t m_turn = 0; // guarded by m_mutex
    bool m_closed = false;  // guarded by m_mutex
};

} // namespace mlvdump
