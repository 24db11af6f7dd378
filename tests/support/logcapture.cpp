// SPDX-License-Identifier: MIT
#include "support/logcapture.h"

#include <QMutex>

namespace {

QMutex mutex;
QStringList &captured()
{
    static QStringList lines;
    return lines;
}

void capture(QtMsgType, const QMessageLogContext &, const QString &message)
{
    const QMutexLocker lock(&mutex);
    captured() << message;
}

} // namespace

LogCapture::LogCapture()
    : m_previous(qInstallMessageHandler(capture))
{
    const QMutexLocker lock(&mutex);
    captured().clear();
}

LogCapture::~LogCapture()
{
    qInstallMessageHandler(m_previous);
}

QStringList LogCapture::lines()
{
    const QMutexLocker lock(&mutex);
    return captured();
}
