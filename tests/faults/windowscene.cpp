// SPDX-License-Identifier: MIT
#include "windowscene.h"

#include "endtoend/sample.h"
#include "project/moviemark.h"
#include "scenefolders.h"
#include "support/processes.h"

#include <QDialog>
#include <QUuid>

#include <algorithm>

namespace {

constexpr qint64 ampleBatchBytes = qint64(64) << 20;
const QStringList toolNames{QStringLiteral("mlv_dump"), QStringLiteral("dcraw"),
                            QStringLiteral("cr2hdr"), QStringLiteral("ffmpeg")};

qint64 sizeOfAll(const QMap<QString, QByteArray> &files)
{
    constexpr qint64 page = 4096;
    qint64 bytes = 0;
    for (const QByteArray &content : files)
        bytes += (content.size() + page - 1) / page * page;
    return bytes;
}

QByteArray contentOf(Flaw flaw)
{
    switch (flaw) {
    case Flaw::Text:
        return QByteArrayLiteral("this is no recording\n");
    case Flaw::NoFrame: {
        const QTemporaryDir folder;
        const QString clip = folder.filePath(QStringLiteral("clip.MLV"));
        [&] { QVERIFY(writeSample(clip, QStringLiteral("--size 64x48 --frames 1 --no-sound"))); }();
        const QByteArray bytes = readFile(clip);
        return bytes.left(bytes.indexOf("VIDF"));
    }
    default:
        return {};
    }
}

} // namespace

QString WindowScene::skipReason(const WindowStrike &strike)
{
    const Event event = strike.strike.event;
    const bool mounts = isOnTemporaryDisk(event) || isOnMovieDisk(event);
    return mounts && !SmallDisk::isPossible()
               ? QStringLiteral("only an administrator can mount a small disk")
               : QString();
}

WindowRehearsal WindowScene::rehearse(const WindowFootage &footage, const Order &order)
{
    WindowStrike none;
    none.strike.order = order;
    WindowScene scene(footage, none, {}, {});
    scene.launch();
    if (order.hasDark)
        scene.chooseDark();
    WindowRehearsal rehearsal;
    scene.m_time.start();
    scene.pressStart();
    const bool ends = QTest::qWaitFor(
        [&] {
            rehearsal.temporaryBytes =
                std::max(rehearsal.temporaryBytes, sizeOf(scene.m_temporaryFolder));
            return scene.isResting();
        },
        static_cast<int>(hanging.count()));
    [&] { QVERIFY(ends); }();
    rehearsal.duration = elapsed(scene.m_time);
    for (const QString &name : footage.recordings.keys())
        rehearsal.movies[name] = readFile(scene.moviePath(name));
    scene.m_window->quit();
    return rehearsal;
}

WindowScene::WindowScene(const WindowFootage &footage, const WindowStrike &strike,
                         const WindowRehearsal &plain, const WindowRehearsal &calibrated)
    : m_footage(footage)
    , m_strike(strike)
    , m_plain(plain)
    , m_calibrated(calibrated)
    , m_identity("FILMWRIGHT_STRIKE=" + QUuid::createUuid().toByteArray())
    , m_window(std::make_unique<FakeWindow>())
    , m_temporaryFolder(qEnvironmentVariable("TMPDIR"))
{
    qputenv("FILMWRIGHT_STRIKE", m_identity.mid(m_identity.indexOf('=') + 1));
    layOut();
    addTools(true);
}

WindowScene::~WindowScene()
{
    qunsetenv("FILMWRIGHT_STRIKE");
    m_window->quit();
    m_disk.reset();
}

void WindowScene::layOut()
{
    const Strike &strike = m_strike.strike;
    const WindowRehearsal &rehearsal = strike.order.hasDark ? m_calibrated : m_plain;
    const double share = strike.space;
    switch (strike.event) {
    case Event::TemporaryDiskSmall:
        m_disk = std::make_unique<SmallDisk>(m_temporaryFolder,
                                             shareOf(rehearsal.temporaryBytes, share) + 8192);
        break;
    case Event::MovieDiskSmall:
        m_disk = std::make_unique<SmallDisk>(m_window->recordings(),
                                             sizeOfAll(m_footage.recordings) + 16384 +
                                                 shareOf(sizeOfAll(rehearsal.movies), share));
        break;
    case Event::TemporaryDiskFills:
        m_disk = std::make_unique<SmallDisk>(m_temporaryFolder, ampleBatchBytes);
        break;
    case Event::MovieDiskFills:
        m_disk = std::make_unique<SmallDisk>(m_window->recordings(), ampleBatchBytes);
        break;
    default:
        break;
    }
    for (auto recording = m_footage.recordings.cbegin(); recording != m_footage.recordings.cend();
         ++recording)
        write(recording.key(), recording.value());
    if (m_strike.flaw != Flaw::None)
        write(flawedName, contentOf(m_strike.flaw));
    QFile dark(darkPath());
    QVERIFY(dark.open(QIODevice::WriteOnly));
    dark.write(m_footage.dark);
}

void WindowScene::write(const QString &name, const QByteArray &content) const
{
    QFile file(path(name));
    QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(name));
    file.write(content);
}

QString WindowScene::darkPath() const
{
    return m_calibrationFolder.filePath(QStringLiteral("dark.MLV"));
}

QString WindowScene::moviePath(const QString &name) const
{
    return path(QFileInfo(name).completeBaseName() + u'.' + m_strike.strike.order.format);
}

/// The struck tool is itself on the work of one recording, and on the dark.
void WindowScene::addTools(bool struck)
{
    for (const QString &name : toolNames) {
        const QString real = realTool(name);
        QString script;
        if (struck && name == m_strike.strike.tool) {
            script = QStringLiteral("case \"$*:$PWD\" in *%1*|*dark.MLV*)\n%2\n;; esac\n")
                         .arg(struckName,
                              QString(m_strike.strike.script).replace(QLatin1String("REAL"), real));
        }
        m_window->tools.addTool(name, script + QStringLiteral("exec '%1' \"$@\"").arg(real));
    }
}

QStringList WindowScene::play()
{
    launch();
    if (m_strike.strike.order.hasDark)
        chooseDark();
    m_changesDark = m_strike.makes(Move::ChooseDark) || m_strike.makes(Move::DeleteDark) ||
                    m_hasDark != m_strike.strike.order.hasDark;
    m_time.start();
    pressStart();
    waitAndStrike();
    rest("the struck batch");
    m_ending = m_window->status();
    checkRecordings();
    checkMovies(false);
    checkRemoved();
    if (canBeMended()) {
        mend();
        startAgain();
        checkRecordings();
        checkMovies(true);
    }
    m_window->quit();
    checkAfterQuit();
    return m_complaints;
}

void WindowScene::waitAndStrike()
{
    const auto &rehearsal = m_strike.strike.order.hasDark ? m_calibrated : m_plain;
    const std::chrono::duration<double, std::milli> whole = rehearsal.duration;
    const auto waitFor = [&](double moment) {
        while (elapsed(m_time) < whole * moment) {
            QTest::qWait(1);
            freeFromHangingTool();
        }
    };
    QList<TimedMove> moves = m_strike.moves;
    bool struck = m_strike.strike.event == Event::None || hangs();
    while (!struck || !moves.isEmpty()) {
        if (!struck && (moves.isEmpty() || m_strike.strike.moment <= moves.first().moment)) {
            waitFor(m_strike.strike.moment);
            happen();
            struck = true;
        } else {
            const TimedMove next = moves.takeFirst();
            waitFor(next.moment);
            make(next.move);
        }
    }
}

void WindowScene::happen()
{
    const Strike &strike = m_strike.strike;
    const WindowRehearsal &rehearsal = strike.order.hasDark ? m_calibrated : m_plain;
    switch (strike.event) {
    case Event::Killed:
        make(Move::QuitAndLaunch);
        break;
    case Event::Interrupted:
        make(Move::StopAndStart);
        break;
    case Event::RecordingDeleted:
        m_damaged << struckName;
        QVERIFY(QFile::remove(path(struckName)));
        break;
    case Event::RecordingTruncated:
        m_damaged << struckName;
        QVERIFY(QFile::resize(path(struckName),
                              shareOf(m_footage.recordings[struckName].size(), strike.space)));
        break;
    case Event::WorkRemoved:
        for (const QString &name : entries(m_window->temporary(QString())))
            QDir(m_window->temporary(name)).removeRecursively();
        break;
    case Event::TemporaryDiskFills:
        m_disk->fill(shareOf(rehearsal.temporaryBytes, strike.space * strike.space / 2));
        break;
    case Event::MovieDiskFills:
        m_disk->fill(shareOf(sizeOfAll(rehearsal.movies), strike.space));
        break;
    default:
        break;
    }
}

bool WindowScene::isResting() const
{
    const bool isReading = !m_window->action(QStringLiteral("sourceItem"))->isEnabled();
    if (isReading || m_window->delegate->isWorking() || !runningChildren().isEmpty() ||
        m_window->widget<QDialog>(QStringLiteral("preprocessPanel"))->isVisible())
        return false;
    // A finished movie is brought to the disk after its batch.
    const QStringList names = m_footage.recordings.keys();
    return std::none_of(names.cbegin(), names.cend(), [this](const QString &name) {
        return QFile::exists(filmwright::MovieMark::pathFor(moviePath(name)));
    });
}

void WindowScene::rest(const char *when)
{
    const bool rests = QTest::qWaitFor(
        [this] {
            freeFromHangingTool();
            return isResting();
        },
        static_cast<int>(hanging.count()));
    if (rests)
        return;
    complain(QStringLiteral("%1 hangs: %2, %3")
                 .arg(QLatin1String(when), m_window->status(),
                      runningChildren().join(QStringLiteral(" "))));
    if (m_window->delegate->isWorking())
        pressStart();
}

bool WindowScene::canBeMended() const
{
    const Event event = m_strike.strike.event;
    return event != Event::TemporaryDiskSmall && event != Event::MovieDiskSmall;
}

void WindowScene::mend()
{
    addTools(false);
    if (m_disk)
        m_disk->empty();
    for (const QString &name : std::as_const(m_damaged))
        write(name, m_footage.recordings[name]);
    m_damaged.clear();
}

void WindowScene::startAgain()
{
    if (m_hasDark && !m_window->delegate->checkCalibrationIntegrity())
        chooseDark();
    m_changesDark = false;
    if (m_window->queue().isEmpty())
        return;
    pressStart();
    rest("the next batch");
}
