// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>
#include <QtGlobal>

/// While one lives, the lines of the system log are collected instead of printed. One at a time.
class LogCapture
{
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture &) = delete;
    LogCapture &operator=(const LogCapture &) = delete;

    static QStringList lines();

private:
    QtMessageHandler m_previous;
};
