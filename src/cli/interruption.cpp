// SPDX-License-Identifier: MIT
#include "cli/interruption.h"

#include "cli/exitstatus.h"

#include <QSocketNotifier>

#include <csignal>
#include <sys/signalfd.h>
#include <unistd.h>

namespace filmwright {

namespace {

sigset_t endingSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&signals, signal);
    return signals;
}

} // namespace

Interruption::Interruption()
{
    const sigset_t signals = endingSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    m_descriptor = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
    m_notifier = new QSocketNotifier(m_descriptor, QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &Interruption::receive);
}

Interruption::~Interruption()
{
    m_notifier->setEnabled(false);
    close(m_descriptor);
}

void Interruption::receive()
{
    signalfd_siginfo information = {};
    if (read(m_descriptor, &information, sizeof information) != sizeof information)
        return;
    m_happened = true;
    // From now on a signal does what it does to every program, in case ending takes too long.
    const sigset_t signals = endingSignals();
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    Q_EMIT happened();
}

} // namespace filmwright

#include "moc_interruption.cpp"
