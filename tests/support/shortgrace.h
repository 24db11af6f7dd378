// SPDX-License-Identifier: MIT
#pragma once

#include "runner/taskwrapper.h"

/// While one lives, a child that should end by itself is hardly waited for.
class ShortGrace
{
public:
    ShortGrace() { filmwright::TaskWrapper::setGracePeriod(std::chrono::milliseconds(1)); }
    ~ShortGrace() { filmwright::TaskWrapper::setGracePeriod(m_usual); }
    ShortGrace(const ShortGrace &) = delete;
    ShortGrace &operator=(const ShortGrace &) = delete;

private:
    const std::chrono::milliseconds m_usual = filmwright::TaskWrapper::gracePeriod();
};
