// SPDX-License-Identifier: MIT
// Starts a child that would run for long, prints the child's process id and waits to be killed.

#include "runner/taskwrapper.h"

#include <QCoreApplication>

#include <cstdio>

namespace {

class IdPrinter : public filmwright::TaskWrapperDelegate, public filmwright::TaskWrapperLineReceiver
{
public:
    void aborted() override {}
    void receivedLine(const QString &line, filmwright::TaskWrapper &) override
    {
        std::puts(line.toUtf8().constData());
        std::fflush(stdout);
    }
};

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    IdPrinter printer;
    filmwright::TaskWrapper wrapper;
    wrapper.setTaskWrapperdelegate(&printer);
    wrapper.setLaunchPath(QStringLiteral("/bin/sh"));
    wrapper.setArguments({QStringLiteral("-c"), QStringLiteral("echo $$; exec sleep 1000")});
    wrapper.start();
    return QCoreApplication::exec();
}
