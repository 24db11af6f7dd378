// SPDX-License-Identifier: MIT
#include "windowscene.h"

#include "endtoend/sample.h"
#include "scenefolders.h"
#include "support/processes.h"

using namespace std::chrono_literals;

bool WindowScene::isSound(const QString &name) const
{
    return m_footage.recordings.contains(name) && !m_damaged.contains(name);
}

void WindowScene::checkRecordings()
{
    for (const QString &name : m_footage.recordings.keys()) {
        const QByteArray content = readFile(path(name));
        const QByteArray &before = m_footage.recordings[name];
        if (isSound(name) ? content != before : !before.startsWith(content))
            complain(QStringLiteral("%1 has changed").arg(name));
    }
    if (readFile(darkPath()) != m_footage.dark)
        complain(QStringLiteral("the dark has changed"));
}

/// The movies that are there, and, after a batch that nothing disturbed, that all are there.
void WindowScene::checkMovies(bool allMade)
{
    const bool onlyOneStruck =
        m_strike.strike.event == Event::None && m_strike.moves.isEmpty() && !hangs();
    QStringList others = entries(m_window->recordings());
    const QStringList queue = m_window->delegate ? m_window->queue() : QStringList();
    for (const QString &name : m_footage.recordings.keys()) {
        const bool isStruck = name == struckName;
        const bool isQueued = queue.contains(name);
        checkMovie(name, isQueued, isQueued && (allMade || (onlyOneStruck && !isStruck)));
        others.removeAll(name);
        others.removeAll(QFileInfo(moviePath(name)).fileName());
    }
    others.removeAll(flawedName);
    others.removeAll(QStringLiteral("filler"));
    if (!others.isEmpty())
        complain(QStringLiteral("left beside the recordings: %1")
                     .arg(others.join(QStringLiteral(", "))));
}

void WindowScene::checkMovie(const QString &name, bool isQueued, bool isMade)
{
    if (!QFile::exists(moviePath(name))) {
        if (isMade)
            complain(QStringLiteral("%1 has no movie: %2; %3; %4")
                         .arg(name, m_window->states().join(u'/'), m_window->status(),
                              m_window->alerts.shown.join(QStringLiteral(" // "))));
        return;
    }
    const QByteArray movie = readFile(moviePath(name));
    const QByteArray plain = m_plain.movies.value(name);
    const QByteArray calibrated = m_calibrated.movies.value(name);
    const bool isEither = m_changesDark || !isQueued;
    const bool isRight = isEither ? movie == plain || movie == calibrated
                                  : movie == (m_hasDark ? calibrated : plain);
    // What was cut off gives a shorter movie, with a warning.
    const bool isCutOff = !isSound(name) && Movie::probe(moviePath(name)).frames() > 0;
    if (!isRight && !isCutOff) {
        complain(QStringLiteral("the movie of %1 isn't that of an undisturbed batch: %2 frames")
                     .arg(name)
                     .arg(Movie::probe(moviePath(name)).frames()));
    }
}

/// What was taken out of the queue has nothing in the temporary directory any more.
void WindowScene::checkRemoved()
{
    const QStringList queue = m_window->queue();
    for (const QString &entry : entries(m_window->temporary(QString()))) {
        for (const QString &name : m_footage.recordings.keys())
            if (entry.startsWith(name) && !queue.contains(name))
                complain(QStringLiteral("%1 is left of what was removed").arg(entry));
    }
}

void WindowScene::checkAfterQuit()
{
    const auto isAlone = [this] { return processesCarrying(m_identity).isEmpty(); };
    if (!QTest::qWaitFor(isAlone, static_cast<int>(std::chrono::milliseconds(5s).count())))
        complain(QStringLiteral("still running: %1")
                     .arg(processesCarrying(m_identity).join(QStringLiteral(", "))));
    QStringList left = entries(m_temporaryFolder);
    left.removeAll(QStringLiteral("filler"));
    if (!left.isEmpty())
        complain(QStringLiteral("left in the temporary folder: %1")
                     .arg(left.join(QStringLiteral(", "))));
    checkMovies(false);
}
