// SPDX-License-Identifier: MIT
#include "scene.h"

#include "endtoend/sample.h"
#include "project/moviemark.h"
#include "scenefolders.h"
#include "support/processes.h"

#include <QDeadlineTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QTest>

#include <csignal>

using namespace std::chrono_literals;

/// What ended it is negative when it was a signal.
int Scene::status() const
{
    const bool ended = m_process.exitStatus() == QProcess::NormalExit;
    return ended ? m_process.exitCode() : -m_process.exitCode();
}

QJsonObject Scene::reported() const
{
    return QJsonDocument::fromJson(readFile(path(reportName)))
        .object()
        .value(QStringLiteral("recordings"))
        .toArray()
        .at(0)
        .toObject();
}

QString Scene::reason() const
{
    return reported().value(QStringLiteral("reason")).toString();
}

QString Scene::ended() const
{
    switch (status()) {
    case 0:
        return QStringLiteral("movie");
    case 1:
        return QStringLiteral("reason: %1").arg(reason());
    case 2:
        return QStringLiteral("not begun: %1").arg(QString::fromUtf8(m_messages).trimmed());
    default:
        return QStringLiteral("status %1").arg(status());
    }
}

QList<int> Scene::rightStatuses() const
{
    QList<int> right;
    switch (m_strike.outcome) {
    case Outcome::Movie:
        right = {0};
        break;
    case Outcome::Reason:
        right = {1};
        break;
    case Outcome::Either:
        right = {0, 1};
        break;
    case Outcome::Interrupted:
        right = {130};
        // A signal may come before the program listens or after its work.
        if (!m_strike.waitsForTool)
            right << 0 << -m_strike.signal;
        break;
    }
    switch (m_strike.event) {
    case Event::RecordingDeleted: // before the run looked for it, that is wrong usage
    case Event::RecordingClosed:
    case Event::WorkRemoved: // while it was being made
    case Event::TemporaryDiskFills:
        right << 2;
        break;
    case Event::Killed:
        right << -SIGKILL;
        break;
    default:
        break;
    }
    return right;
}

/// Whether the same command is to finish now what the struck run has left.
bool Scene::goesOn() const
{
    switch (m_strike.event) {
    case Event::RecordingDeleted:
    case Event::RecordingTruncated:
    case Event::TemporaryDiskSmall:
    case Event::MovieDiskSmall:
        return false;
    case Event::FolderClosed:
        return true; // what couldn't be removed then is removed now
    default:
        return m_strike.keepsWork && status() != 0;
    }
}

void Scene::check()
{
    checkProcesses();
    checkRecordings();
    if (!rightStatuses().contains(status()))
        complain(QStringLiteral("it ended with %1").arg(ended()));
    switch (status()) {
    case 0:
        checkMovie();
        break;
    case 1:
        checkReason();
        checkNoMovie();
        break;
    case 2:
        if (m_messages.trimmed().isEmpty())
            complain(QStringLiteral("it didn't say why it didn't begin"));
        checkNoMovie();
        break;
    default:
        checkMovieOfKilledRun();
        break;
    }
    const bool isKept = m_strike.keepsWork && status() != 0;
    if (!isDead() && !goesOn() && !isKept)
        checkLeftovers();
}

void Scene::checkReason()
{
    const QString told = reason();
    const bool right = m_strike.reason.isEmpty()
                           ? !told.isEmpty()
                           : QRegularExpression(m_strike.reason).match(told).hasMatch();
    if (!right)
        complain(QStringLiteral("its reason is \"%1\"").arg(told));
}

bool Scene::movieIsWhole() const
{
    return readFile(movie()) == m_rehearsal.movie;
}

void Scene::checkMovie()
{
    const int told = reported().value(QStringLiteral("frames")).toInt();
    const int probed = Movie::probe(movie()).frames();
    if (probed != told || told == 0)
        complain(QStringLiteral("its movie has %1 frames, told were %2").arg(probed).arg(told));
    const bool cutOff = m_strike.event == Event::RecordingTruncated;
    const bool warned =
        !reported().value(QStringLiteral("warnings")).toArray().isEmpty() && !m_messages.isEmpty();
    if (told != m_rehearsal.frames && !(cutOff && warned))
        complain(QStringLiteral("it made a movie of %1 frames and said nothing").arg(told));
    if (!movieIsWhole() && !(cutOff && warned))
        complain(QStringLiteral("its movie isn't that of an undisturbed run"));
}

void Scene::checkNoMovie()
{
    // A folder that is closed keeps what it has, with the mark of what is unfinished.
    if (m_strike.event == Event::FolderClosed)
        checkMovieOfKilledRun();
    else if (QFile::exists(movie()))
        complain(QStringLiteral("it failed and left a movie"));
}

/// What is there without a mark is whole.
void Scene::checkMovieOfKilledRun()
{
    if (!QFile::exists(movie()) || movieIsWhole())
        return;
    if (!isDead() && m_strike.event != Event::FolderClosed)
        complain(QStringLiteral("it left an unfinished movie"));
    else if (!QFile::exists(filmwright::MovieMark::pathFor(movie())))
        complain(QStringLiteral("it left an unfinished movie without a mark"));
}

void Scene::checkRecordings()
{
    const QByteArray clip = readFile(path(clipName));
    switch (m_strike.event) {
    case Event::RecordingDeleted:
        if (QFile::exists(path(clipName)))
            complain(QStringLiteral("the deleted recording is there"));
        break;
    case Event::RecordingTruncated:
        if (!m_footage.recording.startsWith(clip) || clip.isEmpty())
            complain(QStringLiteral("the rest of the recording has changed"));
        break;
    default:
        if (clip != m_footage.recording)
            complain(QStringLiteral("the recording has changed"));
        break;
    }
    if (readFile(path(darkName)) != m_footage.dark)
        complain(QStringLiteral("the dark has changed"));
}

void Scene::checkLeftovers()
{
    const QStringList temporary = entries(path(temporaryName));
    if (!temporary.isEmpty())
        complain(QStringLiteral("left in the temporary folder: %1")
                     .arg(temporary.join(QStringLiteral(", "))));
    QStringList beside = entries(path(footageName));
    for (const QString &known : {clipName, movie()})
        beside.removeAll(QFileInfo(known).fileName());
    if (!beside.isEmpty())
        complain(
            QStringLiteral("left beside the recording: %1").arg(beside.join(QStringLiteral(", "))));
    const QStringList findings =
        QDir(m_root.path()).entryList({sanitizerLogName + QLatin1Char('*')}, QDir::Files);
    if (!findings.isEmpty())
        complain(QString::fromUtf8(readFile(path(findings.first()))));
}

void Scene::checkProcesses()
{
    constexpr auto patience = 5s;
    const QDeadlineTimer deadline(patience);
    QStringList left = processesCarrying(m_identity);
    while (!left.isEmpty() && !deadline.hasExpired()) {
        QTest::qSleep(10);
        left = processesCarrying(m_identity);
    }
    if (!left.isEmpty())
        complain(QStringLiteral("still running: %1").arg(left.join(QStringLiteral(", "))));
}
