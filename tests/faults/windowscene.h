// SPDX-License-Identifier: MIT
#pragma once

#include "fakewindow.h"
#include "smalldisk.h"
#include "windowstrike.h"

#include <QElapsedTimer>
#include <QMap>
#include <QSet>

#include <chrono>
#include <memory>

// The recordings of the queue that have a part of their own.
inline const QString struckName = QStringLiteral("b.MLV");
inline const QString removedName = QStringLiteral("c.MLV");
inline const QString flawedName = QStringLiteral("d.MLV");

struct WindowFootage
{
    QMap<QString, QByteArray> recordings; ///< by name
    QByteArray dark;
};

/// What an undisturbed batch takes and makes.
struct WindowRehearsal
{
    std::chrono::milliseconds duration{};
    qint64 temporaryBytes = 0;
    QMap<QString, QByteArray> movies; ///< by the recordings' names
};

/// A queue of recordings in the window, pressed by its own buttons, on the real tools; the batch is
/// struck, then what can be mended is mended and the batch started again. Nothing is judged by a
/// clock but a batch that takes more than a minute: it hangs.
class WindowScene
{
public:
    static constexpr std::chrono::milliseconds hanging = std::chrono::minutes(1);

    static QString skipReason(const WindowStrike &strike);
    static WindowRehearsal rehearse(const WindowFootage &footage, const Order &order);

    /// `plain` and `calibrated` are what batches without and with the dark make.
    WindowScene(const WindowFootage &footage, const WindowStrike &strike,
                const WindowRehearsal &plain, const WindowRehearsal &calibrated);
    ~WindowScene();

    /// Everything that is not as it has to be, a sentence each; empty when all is well.
    QStringList play();
    /// What the window said at the end of the struck batch.
    QString ending() const { return m_ending; }

private:
    // windowscene.cpp: the batch and its strike
    void layOut();
    void addTools(bool struck);
    void waitAndStrike();
    void happen();
    void rest(const char *when);
    void mend();
    void startAgain();

    // windowmoves.cpp: what the person does
    void launch();
    void openAll();
    void pressStart();
    void chooseDark();
    void freeFromHangingTool();
    void make(Move move);
    QString begunPath() const;
    bool toolHangs() const;

    // windowverdict.cpp: whether all is well
    void checkRecordings();
    void checkMovies(bool allMade);
    void checkMovie(const QString &name, bool isQueued, bool isMade);
    void checkRemoved();
    void checkAfterQuit();
    bool isSound(const QString &name) const;
    void complain(const QString &complaint) { m_complaints << complaint; }

    bool isResting() const;
    bool hangs() const { return m_strike.strike.waitsForTool; }
    bool canBeMended() const;
    QString path(const QString &name) const { return m_window->recordings() + u'/' + name; }
    QString moviePath(const QString &name) const;
    QString darkPath() const;
    void write(const QString &name, const QByteArray &content) const;

    const WindowFootage m_footage;
    const WindowStrike m_strike;
    const WindowRehearsal m_plain;
    const WindowRehearsal m_calibrated;
    const QByteArray m_identity; ///< in the environment of every process that the window starts
    QTemporaryDir m_calibrationFolder;
    std::unique_ptr<FakeWindow> m_window;
    std::unique_ptr<SmallDisk> m_disk; // ends before the folder that it lies over
    QString m_temporaryFolder;
    QElapsedTimer m_time;
    bool m_hasDark = false;
    bool m_changesDark = false; ///< a movie of this batch may be with or without it
    QSet<QString> m_damaged;    ///< recordings that the strike has changed
    QString m_ending;
    QStringList m_complaints;
};
