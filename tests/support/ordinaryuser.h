// SPDX-License-Identifier: MIT
#pragma once

#include <QTest>

#include <unistd.h>

/// An administrator may write anywhere; while one lives, the process acts as an ordinary user.
class OrdinaryUser
{
public:
    OrdinaryUser()
    {
        if (m_wasRoot)
            QVERIFY2(setresuid(nobody, nobody, 0) == 0, "can't act as an ordinary user");
    }
    ~OrdinaryUser()
    {
        if (m_wasRoot && setresuid(0, 0, 0) != 0)
            qFatal("can't act as root again");
    }
    OrdinaryUser(const OrdinaryUser &) = delete;
    OrdinaryUser &operator=(const OrdinaryUser &) = delete;

    static constexpr uid_t nobody = 65534;

private:
    const bool m_wasRoot = geteuid() == 0;
};
