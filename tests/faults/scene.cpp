// SPDX-License-Identifier: MIT
#include "scene.h"

#include "endtoend/commandline.h"
#include "endtoend/sample.h"
#include "scenefolders.h"
#include "support/programrun.h"

#include <QDir>
#include <QFile>
#include <QTest>
#include <QUuid>

#include <algorithm>
#include <csignal>
#include <sys/stat.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

constexpr std::chrono::milliseconds hanging = 60s;
constexpr int shortPause = 400;
/// More than a run needs.
constexpr qint64 ampleBytes = qint64(8) << 20;
constexpr uid_t nobody = 65534;
constexpr auto own = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool sanitized = true;
#elif defined(__has_feature)
constexpr bool sanitized = __has_feature(address_sanitizer);
#else
constexpr bool sanitized = false;
#endif

/// An administrator could read and write everything all the same.
bool needsOrdinaryUser(Event event)
{
    const bool needed = event == Event::RecordingClosed || event == Event::FolderClosed;
    return needed && geteuid() == 0;
}

const QStringList asOrdinaryUser{QStringLiteral("setpriv"), QStringLiteral("--reuid=65534"),
                                 QStringLiteral("--regid=65534"), QStringLiteral("--clear-groups")};

/// Not in a folder that is the administrator's alone.
bool ordinaryUserReachesProgram()
{
    QStringList command = asOrdinaryUser;
    command << CommandLine().program << QStringLiteral("--version");
    return runProgram(command.takeFirst(), command).status == 0;
}

void writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(path));
    file.write(content);
}

} // namespace

QString Scene::skipReason(const Strike &strike)
{
    const bool mounts = isOnTemporaryDisk(strike.event) || isOnMovieDisk(strike.event);
    if (mounts && !SmallDisk::isPossible())
        return QStringLiteral("a small disk can't be mounted here");
    if (needsOrdinaryUser(strike.event) && !ordinaryUserReachesProgram())
        return QStringLiteral("an ordinary user can't run the program in this folder");
    if (strike.event != Event::ClockChanged)
        return {};
    if (sanitized)
        return QStringLiteral("libfaketime and the address sanitizer don't go together");
    return ChangedClock::isPossible() ? QString()
                                      : QStringLiteral("libfaketime doesn't change the clock here");
}

Rehearsal Scene::rehearse(const Footage &footage, const Order &order)
{
    Strike none;
    none.order = order;
    none.keepsWork = true;
    Rehearsal rehearsal;
    Scene scene(footage, none, rehearsal);
    scene.m_time.start();
    scene.start();
    // Nothing tells how much a run needs at its peak but a look at it now and then.
    while (!scene.m_process.waitForFinished(1) && elapsed(scene.m_time) < hanging) {
        rehearsal.temporaryBytes =
            std::max(rehearsal.temporaryBytes, sizeOf(scene.path(temporaryName)));
    }
    rehearsal.duration = elapsed(scene.m_time);
    rehearsal.movie = readFile(scene.movie());
    rehearsal.frames = Movie::probe(scene.movie()).frames();
    return rehearsal;
}

Scene::Scene(const Footage &footage, const Strike &strike, const Rehearsal &rehearsal)
    : m_footage(footage)
    , m_strike(strike)
    , m_rehearsal(rehearsal)
    , m_identity("FILMWRIGHT_STRIKE=" + QUuid::createUuid().toByteArray())
{
    build();
}

Scene::~Scene()
{
    if (m_process.state() != QProcess::NotRunning) {
        m_process.kill();
        m_process.waitForFinished();
    }
}

void Scene::build()
{
    layOut();
    if (!m_strike.tool.isEmpty()) {
        m_tools = std::make_unique<ToolFolder>();
        const QString real = realTool(m_strike.tool);
        m_tools->addTool(m_strike.tool,
                         QString(m_strike.script).replace(QLatin1String("REAL"), real) +
                             QStringLiteral("\nexec %1 \"$@\"").arg(real));
    }
    if (m_strike.event == Event::ClockChanged) {
        m_clock = std::make_unique<ChangedClock>(path(QStringLiteral("clock")));
        m_clock->set("+0");
    }
    if (needsOrdinaryUser(m_strike.event))
        giveToOrdinaryUser();
}

void Scene::layOut()
{
    const QDir root(m_root.path());
    for (const QString &folder : {footageName, darkFolderName, temporaryName})
        QVERIFY(root.mkdir(folder));
    const qint64 needed = shareOf(m_rehearsal.temporaryBytes, m_strike.space);
    const qint64 movieBytes = shareOf(m_rehearsal.movie.size(), m_strike.space);
    const qint64 page = 4096;
    switch (m_strike.event) {
    case Event::TemporaryDiskSmall:
        m_disk = std::make_unique<SmallDisk>(path(temporaryName), std::max(needed, 2 * page));
        break;
    case Event::MovieDiskSmall:
        m_disk = std::make_unique<SmallDisk>(path(footageName),
                                             (m_footage.recording.size() + page - 1) / page * page +
                                                 movieBytes / page * page);
        break;
    case Event::TemporaryDiskFills:
        m_disk = std::make_unique<SmallDisk>(path(temporaryName), ampleBytes);
        break;
    case Event::MovieDiskFills:
        m_disk = std::make_unique<SmallDisk>(path(footageName), ampleBytes);
        break;
    default:
        break;
    }
    QVERIFY(QFile::setPermissions(path(temporaryName), own));
    writeFile(path(clipName), m_footage.recording);
    writeFile(path(darkName), m_footage.dark);
}

void Scene::giveToOrdinaryUser()
{
    for (const QString &name :
         {QString(), footageName, darkFolderName, temporaryName, clipName, darkName}) {
        const QByteArray owned = QFile::encodeName(path(name));
        QCOMPARE(chown(owned.constData(), nobody, nobody), 0);
    }
}

QString Scene::movie() const
{
    return path(footageName + QStringLiteral("/clip.") + m_strike.order.format);
}

void Scene::start()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TMPDIR"), path(temporaryName));
    const QString identity = QString::fromLatin1(m_identity);
    environment.insert(identity.section(QLatin1Char('='), 0, 0),
                       identity.section(QLatin1Char('='), 1));
    const QString log = QStringLiteral("log_path=") + path(sanitizerLogName);
    // The sanitizer would take a strike for a find.
    const bool strikes = m_strike.signal == SIGSEGV;
    environment.insert(QStringLiteral("ASAN_OPTIONS"),
                       strikes ? log + QStringLiteral(":handle_segv=0") : log);
    environment.insert(QStringLiteral("UBSAN_OPTIONS"), log);
    if (m_clock)
        m_clock->addTo(environment);
    QStringList command;
    if (needsOrdinaryUser(m_strike.event))
        command = asOrdinaryUser;
    command << CommandLine().program << QStringLiteral("convert") << m_strike.order.options();
    if (m_strike.order.hasDark)
        command << QStringLiteral("--dark") << path(darkName);
    if (m_strike.keepsWork)
        command << QStringLiteral("--temp-dir") << path(temporaryName);
    command << QStringLiteral("--report") << path(reportName) << path(clipName);
    m_process.setProcessEnvironment(environment);
    QFile::remove(path(reportName));
    m_time.start();
    m_process.start(command.takeFirst(), command, QIODevice::ReadOnly);
    m_process.waitForStarted();
}

QStringList Scene::play()
{
    start();
    if (m_strike.event != Event::None)
        waitAndStrike();
    finish();
    m_ending = ended();
    undo();
    check();
    m_tools.reset();
    if (isDead() && !m_strike.keepsWork)
        failAgain();
    if (isDead() || goesOn())
        runAgain();
    return m_complaints;
}

bool Scene::toolHasBegun() const
{
    return QFile::exists(m_tools->path() + QLatin1Char('/') + m_strike.tool +
                         QStringLiteral(".begun"));
}

void Scene::waitAndStrike()
{
    const auto moment =
        std::chrono::duration<double, std::milli>(m_rehearsal.duration) * m_strike.moment;
    const auto isTime = [this, moment] {
        return m_strike.waitsForTool ? toolHasBegun() : elapsed(m_time) >= moment;
    };
    while (!isTime() && m_process.state() != QProcess::NotRunning && elapsed(m_time) < hanging)
        m_process.waitForFinished(2);
    happen();
}

void Scene::sendSignal(int signal) const
{
    const auto id = static_cast<pid_t>(m_process.processId());
    if (id > 0)
        ::kill(id, signal);
}

void Scene::happen()
{
    switch (m_strike.event) {
    case Event::Killed:
        sendSignal(SIGKILL);
        break;
    case Event::Interrupted:
        sendSignal(m_strike.signal);
        break;
    case Event::Stopped:
        sendSignal(SIGSTOP);
        QTest::qSleep(shortPause);
        sendSignal(SIGCONT);
        break;
    case Event::RecordingDeleted:
        QVERIFY(QFile::remove(path(clipName)));
        break;
    case Event::RecordingTruncated:
        QVERIFY(QFile::resize(path(clipName), shareOf(m_footage.recording.size(), m_strike.space)));
        break;
    case Event::RecordingClosed:
        QVERIFY(QFile::setPermissions(path(clipName), QFile::Permissions()));
        break;
    case Event::FolderClosed:
        QVERIFY(QFile::setPermissions(path(footageName), QFile::ReadOwner | QFile::ExeOwner));
        break;
    case Event::WorkRemoved:
        for (const QString &name : entries(path(temporaryName))) {
            const QString gone = path(temporaryName) + QLatin1Char('/') + name;
            QFile::remove(gone) || QDir(gone).removeRecursively();
        }
        break;
    case Event::TemporaryDiskFills:
        m_disk->fill(shareOf(m_rehearsal.temporaryBytes, m_strike.space * m_strike.space / 2));
        break;
    case Event::MovieDiskFills:
        m_disk->fill(shareOf(m_rehearsal.movie.size(), m_strike.space));
        break;
    case Event::ClockChanged:
        m_clock->set(m_strike.signal == SIGINT ? "-3d" : "+400d");
        break;
    case Event::None:
    case Event::TemporaryDiskSmall: // from the beginning
    case Event::MovieDiskSmall:
        break;
    }
}

/// What can be mended is mended, so that all can be looked at, and that a next run succeeds.
void Scene::undo()
{
    if (m_strike.event == Event::FolderClosed)
        QFile::setPermissions(path(footageName), own);
    if (m_strike.event == Event::RecordingClosed)
        QFile::setPermissions(path(clipName), QFile::ReadOwner);
    if (m_strike.event == Event::TemporaryDiskFills || m_strike.event == Event::MovieDiskFills)
        m_disk->empty();
}

void Scene::finish()
{
    if (m_process.state() != QProcess::NotRunning &&
        !m_process.waitForFinished(static_cast<int>(hanging.count()))) {
        complain(QStringLiteral("it hangs"));
        m_process.kill();
        m_process.waitForFinished();
    }
    m_messages = m_process.readAllStandardError();
}

/// The next start cleans up and makes the movie.
void Scene::runAgain()
{
    start();
    finish();
    if (status() != 0)
        complain(QStringLiteral("the next run fails: %1").arg(ended()));
    else
        checkMovie();
    checkRecordings();
    checkProcesses();
    checkLeftovers();
}

/// A next start that gets as far as the frames and no further doesn't leave the movie that the dead
/// run left unfinished.
void Scene::failAgain()
{
    m_tools = std::make_unique<ToolFolder>();
    m_tools->addTool(QStringLiteral("dcraw"), QStringLiteral("exit 1"));
    start();
    finish();
    if (status() != 1)
        complain(QStringLiteral("the next run should have failed: %1").arg(ended()));
    if (QFile::exists(movie()) && !movieIsWhole())
        complain(QStringLiteral("the next run leaves an unfinished movie"));
    checkLeftovers();
    m_tools.reset();
}
