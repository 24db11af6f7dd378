// SPDX-License-Identifier: MIT
// The window where nobody answers, and how long things in it take.
#pragma once

#include "app/alertpresenter.h"
#include "app/openpanel.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

/// Nobody is there to answer; the default buttons harm nothing.
class SilentAlerts : public filmwright::AlertPresenter
{
public:
    int runAlert(const QString &title, const QString &message, const QString &, const QString &,
                 const QString &) override
    {
        std::fprintf(stderr, "%s: %s\n", qPrintable(title), qPrintable(message));
        return 1;
    }
};

class NoPanel : public filmwright::OpenPanel
{
public:
    QStringList recordingsAndFolders() override { return {}; }
    QString recording(const QString &) override { return {}; }
    QString folder(const QString &) override { return {}; }
};

inline double milliseconds(const QElapsedTimer &timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

/// `part` from 0 to 1.
inline double percentile(std::vector<double> values, double part)
{
    std::sort(values.begin(), values.end());
    return values.at(static_cast<std::size_t>(part * static_cast<double>(values.size() - 1)));
}

inline void waitWhile(const std::function<bool()> &busy)
{
    while (busy())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}
