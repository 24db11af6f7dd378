// SPDX-License-Identifier: MIT
#pragma once

#include <QTest>

#include <csignal>
#include <sys/resource.h>

/// While one lives, no file of this process grows beyond so many bytes, as on a disk that is full.
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        QVERIFY(getrlimit(RLIMIT_FSIZE, &m_before) == 0);
        const rlimit limit{bytes, m_before.rlim_max};
        QVERIFY(setrlimit(RLIMIT_FSIZE, &limit) == 0);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &m_before); }
    FullDisk(const FullDisk &) = delete;
    FullDisk &operator=(const FullDisk &) = delete;

private:
    rlimit m_before{};
};
