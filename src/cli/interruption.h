// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

class QSocketNotifier;

namespace filmwright {

/// Turns the signals that end a program (interrupt, terminate, hang-up) into an event of the main
/// thread, once; a second one ends the program at once. Made before any thread is started.
class Interruption : public QObject
{
    Q_OBJECT

public:
    Interruption();
    ~Interruption() override;

    bool hasHappened() const { return m_happened; }

Q_SIGNALS:
    void happened();

private:
    void receive();

    int m_descriptor;
    bool m_happened = false;
    QSocketNotifier *m_notifier;
};

} // namespace filmwright
