// SPDX-License-Identifier: MIT
// What the window costs: how soon it answers while a batch runs, what a long queue costs, and what
// a start costs more than that of an empty window. Argument: the program's own start ("startup
// empty", "startup filmwright"), or nothing for the whole table.
#include "app/appdelegate.h"
#include "app/queuetableview.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QMainWindow>
#include <QProcess>
#include <QScrollBar>
#include <QSettings>
#include <QTemporaryDir>
#include <QTimer>
#include <QWindow>

#include <algorithm>
#include <cstdio>
#include <sys/resource.h>
#include <vector>

using namespace filmwright;

namespace {

/// Nobody is there to answer; the default buttons harm nothing.
class SilentAlerts : public AlertPresenter
{
public:
    int runAlert(const QString &title, const QString &message, const QString &, const QString &,
                 const QString &) override
    {
        std::fprintf(stderr, "%s: %s\n", qPrintable(title), qPrintable(message));
        return 1;
    }
};

class NoPanel : public OpenPanel
{
public:
    QStringList recordingsAndFolders() override { return {}; }
    QString recording(const QString &) override { return {}; }
    QString folder(const QString &) override { return {}; }
};

double milliseconds(const QElapsedTimer &timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

double percentile(std::vector<double> values, double part)
{
    std::sort(values.begin(), values.end());
    return values.at(static_cast<std::size_t>(part * static_cast<double>(values.size() - 1)));
}

void waitWhile(const std::function<bool()> &busy)
{
    while (busy())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void row(const char *what, double value, const char *unit)
{
    std::printf("%-62s %10.2f %s\n", what, value, unit);
}

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
    row("event loop, lateness during a batch of 1920x1080, median", percentile(late, 0.5), "ms");
    row("event loop, lateness during a batch of 1920x1080, 99th percentile", percentile(late, 0.99),
        "ms");
    row("event loop, lateness during a batch of 1920x1080, longest", percentile(late, 1), "ms");
    delegate.applicationWillTerminate();
}

void measureLongQueue(const QString &folder)
{
    constexpr int recordings = 2000;
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
    QElapsedTimer timer;
    timer.start();
    delegate.applicationOpenFiles({folder});
    row("2,000 recordings: added, in one event", milliseconds(timer), "ms");
    waitWhile([&] { return isReading(delegate); });
    row("2,000 recordings: all read", milliseconds(timer) / 1000, "s");

    QTableView *table = tableOf(delegate);
    constexpr int rounds = 100;
    std::vector<double> reloads;
    std::vector<double> scrolls;
    for (int round = 0; round < rounds; ++round) {
        timer.start();
        delegate.controllerUpdated(*delegate.projectList().front());
        QCoreApplication::processEvents();
        reloads.push_back(milliseconds(timer));
        timer.start();
        table->verticalScrollBar()->setValue(table->verticalScrollBar()->maximum() * round /
                                             rounds);
        QCoreApplication::processEvents();
        scrolls.push_back(milliseconds(timer));
    }
    row("2,000 recordings: one reload of the table, painted, median", percentile(reloads, 0.5),
        "ms");
    row("2,000 recordings: one scroll step, painted, median", percentile(scrolls, 0.5), "ms");
    delegate.applicationWillTerminate();
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
    row("start-up, empty window, processor time, median of 9", empty, "ms");
    row("start-up, Filmwright, processor time, median of 9", whole, "ms");
    row("start-up, difference", whole - empty, "ms");
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
    for (const char *folder : {"full", "many"})
        QDir(work.path()).mkdir(QLatin1String(folder));
    measureStartUp();
    measureLongQueue(work.filePath(QStringLiteral("many")));
    measureLatency(work.filePath(QStringLiteral("full")));
    return 0;
}
