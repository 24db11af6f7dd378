// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

class QMainWindow;

namespace Ui {
class MainWindow;
} // namespace Ui

namespace filmwright {

/// What the window remembers of its last time: its place and size, its columns, the movie's format,
/// quality and recipe. Main thread only.
class WindowMemory
{
public:
    /// Both outlive it; the window has its layout.
    WindowMemory(QMainWindow &window, const Ui::MainWindow &ui)
        : m_window(window)
        , m_ui(ui)
    {
    }

    /// For a window that remembers nothing, the usual sizes.
    void restore() const;
    void save() const;

    /// The folder of the movies; empty: beside the recordings. Stored at once.
    static QString movieFolder();
    static void setMovieFolder(const QString &folder);

private:
    QMainWindow &m_window;
    const Ui::MainWindow &m_ui;
};

} // namespace filmwright
