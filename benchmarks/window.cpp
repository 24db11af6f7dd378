// SPDX-License-Identifier: MIT
// What the window costs: what a start takes more than that of an empty window, what a long queue
// costs, and how soon the window answers while a batch runs. Argument: the program's own start
// ("startup empty", "startup filmwright"), "pictures" for those of rows alone, or nothing for all
// measurements.
#include "app/appdelegate.h"
#include "app/queuetableview.h"
#include "row.h"
#include "unattended.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QMainWindow>
#include <QProcess>
#include <QScrollBar>
#include <QSettings>
#include <QTemporaryDir>
#include <QTimer>
#include <QWindow>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <sys/resource.h>
#include <vector>

using namespace filmwright;

namespace {

constexpr const char *allowed = "what we allow it";

QTableView *tableOf(const AppDelegate &delegate)
{
    return delegate.window()->findChild<QueueTableView *>(QStringLiteral("queueTableView"));
}

bool isReading(const AppDelegate &delegate)
{
    return !delegate.window()->findChild<QAction *>(QStringLiteral("sourceItem"))->isEnabled();
}

void writeRecording(const QString &path, const QStringList &options)
{
    if (QProcess::execute(QStringLiteral(FILMWRIGHT_RESOURCES_DIR "/mlv_sample"),
                          options + QStringList{path}) != 0)
        qFatal("mlv_sample failed");
}

/// How late a timer of 5 ms comes while recordings of full size are made into movies.
void measureLatency(const QString &folder)
{
    QDir().mkpath(folder);
    for (int number = 0; number < 2; ++number) {
        writeRecording(QStringLiteral("%1/full%2.MLV").arg(folder).arg(number),
                       {QStringLiteral("--size"), QStringLiteral("1920x1080"),
                        QStringLiteral("--frames"), QStringLiteral("24")});
    }
    SilentAlerts alerts;
    NoPanel panel;
    AppDelegate delegate(alerts, panel);
    delegate.window()->show();
    delegate.applicationDidFinishLaunching();
    delegate.applicationOpenFiles({folder});
    waitWhile([&] { return isReading(delegate); });

    constexpr double interval = 5;
    std::vector<double> late;
    QElapsedTimer since;
    QTimer timer;
    timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
        late.push_back(std::max(0.0, milliseconds(since) - interval));
        since.start();
    });
    since.start();
    timer.start(static_cast<int>(interval));
    delegate.start();
    waitWhile([&] { return delegate.isWorking(); });
    printRow("event loop during a batch of 1920x1080, lateness, 99th percentile",
             percentile(late, 0.99), "ms", allowed, 100, "at most 1");
    printRow("event loop during a batch of 1920x1080, lateness, longest", percentile(late, 1), "ms",
             allowed, 100);
    delegate.applicationWillTerminate();
}

/// Milliseconds.
struct QueueTimes
{
    double adding = 0;
    double reload = 0;
    double scrollStep = 0;
};

QueueTimes timesOfQueue(const QString &folder, int recordings)
{
    QDir().mkpath(folder);
    const QString original = folder + QStringLiteral("/0.MLV");
    writeRecording(original,
                   {QStringLiteral("--size"), QStringLiteral("64x36"), QStringLiteral("--frames"),
                    QStringLiteral("1"), QStringLiteral("--no-sound")});
    for (int number = 1; number < recordings; ++number)
        QFile::copy(original, QStringLiteral("%1/%2.MLV").arg(folder).arg(number));

    SilentAlerts alerts;
    NoPanel panel;
    AppDelegate delegate(alerts, panel);
    delegate.window()->show();
    delegate.applicationDidFinishLaunching();
    QueueTimes times;
    QElapsedTimer timer;
    timer.start();
    delegate.applicationOpenFiles({folder});
    times.adding = milliseconds(timer);
    waitWhile([&] { return isReading(delegate); });

    QScrollBar *scrollBar = tableOf(delegate)->verticalScrollBar();
    constexpr int rounds = 100;
    std::vector<double> reloads;
    std::vector<double> scrollSteps;
    for (int round = 0; round < rounds; ++round) {
        timer.start();
        delegate.controllerUpdated(*delegate.projectList().front());
        QCoreApplication::processEvents();
        reloads.push_back(milliseconds(timer));
        timer.start();
        scrollBar->setValue(scrollBar->maximum() * round / rounds);
        QCoreApplication::processEvents();
        scrollSteps.push_back(milliseconds(timer));
    }
    times.reload = percentile(reloads, 0.5);
    times.scrollStep = percentile(scrollSteps, 0.5);
    delegate.applicationWillTerminate();
    return times;
}

/// Whether every row in sight has its picture.
bool arePictured(const QueueTableView &table)
{
    const auto [first, last] = table.rowsInSight();
    for (int row = first; row <= last; ++row) {
        const auto icon = table.model()->index(row, 0).data(Qt::DecorationRole).value<QIcon>();
        const QImage picture = icon.pixmap(table.iconSize()).toImage();
        if (picture.pixelColor(picture.rect().center()).alpha() != 255)
            return false;
    }
    return true;
}

/// Memory of this process, MiB.
double residentMemory()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        qFatal("no /proc/self/status");
    const QString text = QString::fromLatin1(status.readAll());
    return text.section(QStringLiteral("VmRSS:"), 1)
               .trimmed()
               .section(QLatin1Char(' '), 0, 0)
               .toDouble() /
           1024;
}

/// A card of recordings of full size, each with its picture. Links to one recording are as good.
void measurePictures(const QString &folder)
{
    constexpr int recordings = 300;
    QDir().mkpath(folder);
    const QString original = folder + QStringLiteral("/0.MLV");
    writeRecording(original, {QStringLiteral("--size"), QStringLiteral("1920x1080"),
                              QStringLiteral("--frames"), QStringLiteral("1")});
    for (int number = 1; number < recordings; ++number)
        std::filesystem::create_hard_link(
            original.toStdString(),
            QStringLiteral("%1/%2.MLV").arg(folder).arg(number).toStdString());

    SilentAlerts alerts;
    NoPanel panel;
    AppDelegate delegate(alerts, panel);
    delegate.window()->show();
    delegate.applicationDidFinishLaunching();
    auto *table = delegate.window()->findChild<QueueTableView *>();
    QElapsedTimer timer;
    timer.start();
    delegate.applicationOpenFiles({folder});
    QCoreApplication::processEvents();
    printRow("300 recordings with pictures: added, until the window answers", milliseconds(timer),
             "ms", allowed, 2000, "at most 1");
    waitWhile([&] { return isReading(delegate); });

    QScrollBar *scrollBar = table->verticalScrollBar();
    std::vector<double> steps;
    while (true) {
        waitWhile([&] { return !arePictured(*table); });
        if (scrollBar->value() == scrollBar->maximum())
            break;
        timer.start();
        scrollBar->setValue(scrollBar->value() +
                            QApplication::wheelScrollLines() * scrollBar->singleStep());
        table->viewport()->repaint();
        steps.push_back(milliseconds(timer));
    }
    printRow("300 recordings with pictures: one step of the wheel, painted, median",
             percentile(steps, 0.5), "ms", allowed, 16, "at most 1");
    printRow("300 recordings with pictures: memory with all of them", residentMemory(), "MiB",
             allowed, 150, "at most 1");
    delegate.applicationWillTerminate();
}

void measureLongQueue(const QString &folder)
{
    const QueueTimes few = timesOfQueue(folder + QStringLiteral("/few"), 20);
    const QueueTimes many = timesOfQueue(folder + QStringLiteral("/many"), 2000);
    const char *withFew = "with 20 recordings";
    printRow("adding 2,000 recordings, in one event", many.adding, "ms", "20 recordings",
             few.adding);
    printRow("one reload of the table, painted, with 2,000 recordings", many.reload, "ms", allowed,
             5, "at most 1");
    printRow("one reload of the table, painted, with 2,000 recordings", many.reload, "ms", withFew,
             few.reload);
    printRow("one scroll step, painted, with 2,000 recordings", many.scrollStep, "ms", withFew,
             few.scrollStep);
}

/// User and system time of this process, from its beginning to a window on the screen.
double processorTime()
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return 1000 * (seconds(usage.ru_utime) + seconds(usage.ru_stime));
}

void showAndTell(QWidget &window)
{
    window.show();
    waitWhile([&] { return !window.windowHandle() || !window.windowHandle()->isExposed(); });
    QCoreApplication::processEvents();
    std::printf("%f\n", processorTime());
}

void measureStartUp()
{
    const auto timeOf = [](const QString &what) {
        std::vector<double> times;
        for (int round = 0; round < 9; ++round) {
            QProcess process;
            process.start(QCoreApplication::applicationFilePath(),
                          {QStringLiteral("startup"), what});
            process.waitForFinished();
            times.push_back(process.readAllStandardOutput().trimmed().toDouble());
        }
        return percentile(times, 0.5);
    };
    const double empty = timeOf(QStringLiteral("empty"));
    const double whole = timeOf(QStringLiteral("filmwright"));
    printRow("start-up with window, processor time", whole, "ms", "an empty window", empty,
             "at most 300 more");
}

} // namespace

int main(int argc, char *argv[])
{
    const QTemporaryDir work;
    qputenv("TMPDIR", work.path().toUtf8());
    qputenv("FILMWRIGHT_RESOURCES", FILMWRIGHT_RESOURCES_DIR);
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, work.path());
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    const QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == QLatin1String("pictures")) {
        measurePictures(work.filePath(QStringLiteral("pictures")));
        return 0;
    }

    if (arguments.value(1) == QLatin1String("startup")) {
        if (arguments.value(2) == QLatin1String("empty")) {
            QMainWindow window;
            window.resize(1100, 680);
            showAndTell(window);
        } else {
            SilentAlerts alerts;
            NoPanel panel;
            AppDelegate delegate(alerts, panel);
            delegate.applicationDidFinishLaunching();
            showAndTell(*delegate.window());
        }
        return 0;
    }
    measureStartUp();
    measurePictures(work.filePath(QStringLiteral("pictures")));
    measureLongQueue(work.path());
    measureLatency(work.filePath(QStringLiteral("full")));
    return 0;
}
