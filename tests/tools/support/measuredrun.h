// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <chrono>

/// What a program did and what it took.
struct MeasuredRun
{
    QByteArray output;     ///< of both channels, in order
    int status = -1;       ///< the exit status, or -1 when it did not end by itself
    int signal = 0;        ///< that ended it, SIGKILL after the time limit
    qint64 peakMemory = 0; ///< bytes
    std::chrono::milliseconds duration{};
};

/// Whether peakMemory says something about the program: a sanitizer's own memory hides it.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool memoryIsTheProgramsOwn = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
inline constexpr bool memoryIsTheProgramsOwn = false;
#else
inline constexpr bool memoryIsTheProgramsOwn = true;
#endif
#else
inline constexpr bool memoryIsTheProgramsOwn = true;
#endif

/// Runs a program of the build's resources folder and kills it after `timeLimit`.
MeasuredRun runMeasured(const QString &program, const QStringList &arguments,
                        std::chrono::milliseconds timeLimit);
