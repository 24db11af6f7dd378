// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace filmwright {

/// Asks a person and waits for the answer. Main thread only.
class AlertPresenter
{
public:
    virtual ~AlertPresenter() = default;

    /// Blocks until one of the buttons is pressed: 1 stands for the default button, 0 for the
    /// alternate one, -1 for the other one. Buttons without a label are left out. All texts are
    /// plain text.
    virtual int runAlert(const QString &title, const QString &message, const QString &defaultButton,
                         const QString &alternateButton = {}, const QString &otherButton = {}) = 0;
};

} // namespace filmwright
