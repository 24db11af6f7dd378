// SPDX-License-Identifier: MIT
#pragma once

#include "changedclock.h"
#include "smalldisk.h"
#include "strike.h"
#include "support/toolfolder.h"

#include <QElapsedTimer>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <chrono>
#include <memory>

struct Footage
{
    QByteArray recording;
    QByteArray dark;
};

/// What an undisturbed run takes and makes.
struct Rehearsal
{
    std::chrono::milliseconds duration{};
    qint64 temporaryBytes = 0;
    QByteArray movie;
    int frames = 0; ///< of the movie, as ffprobe counts them
};

/// A recording in a folder of its own, a temporary folder, and a run of filmwright-cli on it that
/// is struck. Nothing is judged by a clock but a run that takes more than a minute: it hangs.
class Scene
{
public:
    static constexpr int frames = 4;

    /// Why a run can't be struck so here, a sentence; empty when it can.
    static QString skipReason(const Strike &strike);
    static Rehearsal rehearse(const Footage &footage, const Order &order);

    Scene(const Footage &footage, const Strike &strike, const Rehearsal &rehearsal);
    ~Scene();

    /// Everything that is not as it has to be, a sentence each; empty when all is well.
    QStringList play();
    /// How the struck run ended, for a person.
    QString ending() const { return m_ending; }

private:
    // scene.cpp: the run and its strike
    void build();
    void layOut();
    void giveToOrdinaryUser();
    void start();
    void waitAndStrike();
    void happen();
    void sendSignal(int signal) const;
    void undo();
    void finish();
    void runAgain();
    void failAgain();

    // verdict.cpp: whether all is well
    QList<int> rightStatuses() const;
    void check();
    void checkReason();
    void checkMovie();
    void checkNoMovie();
    void checkMovieOfKilledRun();
    void checkRecordings();
    void checkLeftovers();
    void checkProcesses();
    bool movieIsWhole() const;
    bool isDead() const { return m_strike.event == Event::Killed; }
    bool goesOn() const;
    QJsonObject reported() const;
    QString reason() const;
    QString ended() const;
    void complain(const QString &complaint) { m_complaints << complaint; }

    QString path(const QString &name) const { return m_root.filePath(name); }
    QString movie() const;
    bool toolHasBegun() const;
    int status() const;

    const Footage m_footage;
    const Strike m_strike;
    const Rehearsal m_rehearsal;
    const QByteArray m_identity; ///< in the environment of every process of the run
    QTemporaryDir m_root;
    std::unique_ptr<ToolFolder> m_tools;
    std::unique_ptr<SmallDisk> m_disk;
    std::unique_ptr<ChangedClock> m_clock;
    QProcess m_process;
    QElapsedTimer m_time;
    QByteArray m_messages;
    QString m_ending;
    QStringList m_complaints;
};
