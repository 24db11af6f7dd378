// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

namespace filmwright {

// What a recipe may say to the tools. A recipe is as trusted as a script that its owner runs, but
// it is about one movie: it names no further input or output and leaves alone what the application
// decides itself, the rate, the length, the colours. Each answers what is wrong, a sentence, or an
// empty string.

/// ffmpeg's arguments for one kind of stream, 'v' or 'a': options, each with its value, an encoder
/// among them.
QString encodingError(const QStringList &words, QChar stream);

/// dcraw's arguments in front of the usual ones: those that change no colours, which the movie is
/// tagged with.
QString developmentError(const QStringList &words);

/// The encoder that ffmpeg takes for streams of that kind; empty when the words name none.
QString encoderIn(const QStringList &words, QChar stream);

} // namespace filmwright
