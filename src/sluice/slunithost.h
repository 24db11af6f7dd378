// SPDX-License-Identifier: MIT
#pragma once

#include <QVariant>

class SLOutlet;

/// Who runs a unit, as the unit sees it. An internal of the library.
class SLUnitHost
{
public:
    /// A value waits at one of the unit's inputs. On the main thread.
    virtual void inputArrived() = 0;

    // On the thread that runs process(), inside it.
    virtual void deliverLater(const SLOutlet *output, const QVariant &value) = 0;
    virtual bool isStopped() const = 0;

protected:
    ~SLUnitHost() = default;
};
