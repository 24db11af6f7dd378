// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

namespace filmwright {

/// A table of colours in three dimensions, from a .cube file.
struct CubeLut
{
    QByteArray text; ///< the table alone, in the form that every ffmpeg reads
    QString error;   ///< why it can't be used, a sentence that begins with file and line
};

/// Reads a table with 2 to 256 colours a side, whatever the file holds. Any thread.
CubeLut readCubeLut(const QString &path);

} // namespace filmwright
