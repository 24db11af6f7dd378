// SPDX-License-Identifier: MIT
#include "app/appdelegate.h"
#include "app/filepanel.h"
#include "app/messageboxpresenter.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QIcon>

#include <cstdio>

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
    QGuiApplication::setQuitOnLastWindowClosed(false);

    MessageBoxPresenter alerts;
    FilePanel panel;
    AppDelegate delegate(alerts, panel);
    alerts.setWindow(delegate.window());
    panel.setWindow(delegate.window());
    QObject::connect(&application, &QCoreApplication::aboutToQuit, &delegate,
                     &AppDelegate::applicationWillTerminate);
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
