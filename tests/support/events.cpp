// SPDX-License-Identifier: MIT
#include "support/events.h"

#include "support/processes.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QTest>
#include <QThreadPool>

void deliverEvents()
{
    do
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    while (QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents));
}

void settle(int children)
{
    do {
        QTRY_VERIFY_WITH_TIMEOUT(childProcesses() <= children, 30000);
        QThreadPool::globalInstance()->waitForDone();
        deliverEvents();
    } while (childProcesses() > children);
}
