// SPDX-License-Identifier: MIT
#include "app/appdelegate.h"
#include "app/filepanel.h"
#include "app/messageboxpresenter.h"
#include "desktop/applicationservice.h"
#include "desktop/sessionbus.h"
#include "runner/systemlog.h"
#include "runner/utf8locale.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QIcon>

#include <cstdio>
#include <cstdlib>

using namespace filmwright;

namespace {

/// The system log is standard error: the message alone.
void printLogLine(QtMsgType, const QMessageLogContext &, const QString &message)
{
    std::fprintf(stderr, "%s\n", message.toUtf8().constData());
}

QStringList absolutePaths(const QStringList &paths)
{
    QStringList absolute;
    for (const QString &path : paths)
        absolute << QDir::current().absoluteFilePath(path);
    return absolute;
}

/// The paths to open. Help and version end the program; they need no display.
QStringList readCommandLine(int argc, char *argv[])
{
    const Utf8Locale locale;
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Turns MLV raw video recordings into movies."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("PATH"),
                                 QStringLiteral("recordings, or folders that hold some"),
                                 QStringLiteral("[PATH]..."));
    parser.parse(QCoreApplication::arguments());
    if (parser.isSet(QStringLiteral("version")))
        parser.showVersion();
    if (parser.isSet(QStringLiteral("help")))
        parser.showHelp();
    return absolutePaths(parser.positionalArguments());
}

/// Ends this start in favour of the one that runs.
int leaveToFirstInstance(const QStringList &paths)
{
    if (ApplicationService::handOver(paths))
        return EXIT_SUCCESS;
    systemLog(QStringLiteral("Filmwright is already running, but doesn't answer."));
    return EXIT_FAILURE;
}

void bringToFront(QWidget &window)
{
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.activateWindow();
}

} // namespace

int main(int argc, char *argv[])
{
    qInstallMessageHandler(printLogLine);
    QCoreApplication::setApplicationName(QStringLiteral("filmwright"));
    QCoreApplication::setApplicationVersion(QStringLiteral(FILMWRIGHT_VERSION));
    const QStringList paths = readCommandLine(argc, argv);

    const QApplication application(argc, argv);
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Filmwright"));
    QGuiApplication::setWindowIcon(QIcon(QStringLiteral(":/images/filmwright.svg")));
    QGuiApplication::setDesktopFileName(applicationId);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    ApplicationService service;
    if (!service.registerService())
        return leaveToFirstInstance(paths);

    MessageBoxPresenter alerts;
    FilePanel panel;
    AppDelegate delegate(alerts, panel);
    alerts.setWindow(delegate.window());
    panel.setWindow(delegate.window());
    QObject::connect(&application, &QCoreApplication::aboutToQuit, &delegate,
                     &AppDelegate::applicationWillTerminate);
    QObject::connect(&service, &ApplicationService::activated, delegate.window(),
                     [&delegate] { bringToFront(*delegate.window()); });
    QObject::connect(&service, &ApplicationService::filesOpened, &delegate,
                     &AppDelegate::applicationOpenFiles);
    delegate.window()->show();
    QMetaObject::invokeMethod(
        &delegate,
        [&delegate, paths] {
            delegate.applicationDidFinishLaunching();
            if (!paths.isEmpty())
                delegate.applicationOpenFiles(paths);
        },
        Qt::QueuedConnection);
    return QApplication::exec();
}
