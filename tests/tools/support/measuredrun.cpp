// SPDX-License-Identifier: MIT
#include "measuredrun.h"

#include "toolrun.h"

#include <array>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

pid_t spawn(const QStringList &command, int output)
{
    QByteArrayList encoded;
    std::vector<char *> arguments;
    for (const auto &argument : command)
        encoded.append(argument.toLocal8Bit());
    for (auto &argument : encoded)
        arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, output, STDERR_FILENO);
    pid_t child = -1;
    if (::posix_spawn(&child, arguments[0], &actions, nullptr, arguments.data(), environ) != 0)
        qFatal("%s can't be run", arguments[0]);
    ::posix_spawn_file_actions_destroy(&actions);
    return child;
}

/// Reads to the end and kills the child when that takes too long.
QByteArray readAll(int input, pid_t child, Clock::time_point deadline)
{
    QByteArray output;
    std::array<char, 65536> buffer;
    bool killed = false;
    while (true) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        pollfd descriptor{input, POLLIN, 0};
        const int wait = killed ? -1 : static_cast<int>(std::max<qint64>(0, left.count()));
        if (::poll(&descriptor, 1, wait) == 0) {
            ::kill(child, SIGKILL);
            killed = true;
            continue;
        }
        const auto size = ::read(input, buffer.data(), buffer.size());
        if (size <= 0)
            return output;
        output.append(buffer.data(), size);
    }
}

} // namespace

MeasuredRun runMeasured(const QString &program, const QStringList &arguments,
                        std::chrono::milliseconds timeLimit)
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        qFatal("there are no pipes");
    const auto start = Clock::now();
    const pid_t child = spawn(QStringList{builtProgram(program)} + arguments, ends[1]);
    ::close(ends[1]);
    MeasuredRun run;
    run.output = readAll(ends[0], child, start + timeLimit);
    ::close(ends[0]);
    int status = 0;
    rusage usage{};
    ::wait4(child, &status, 0, &usage);
    run.duration = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
    run.peakMemory = qint64{usage.ru_maxrss} * 1024;
    if (WIFEXITED(status))
        run.status = WEXITSTATUS(status);
    else
        run.signal = WTERMSIG(status);
    return run;
}
