// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

/// The least that counts as a finished movie of so many frames: the headers of an AVI file.
QByteArray fakeMovie(int frames);
