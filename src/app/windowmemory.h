// SPDX-License-Identifier: MIT
#pragma once

#include <QSize>
#include <QString>

class QMainWindow;
class QWidget;

namespace Ui {
class MainWindow;
} // namespace Ui

namespace filmwright {

/// The largest size that a window has room for on its screen, borders and title around it. Main
/// thread only.
QSize roomForWindow(const QWidget &window);

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
