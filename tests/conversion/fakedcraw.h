// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// A dcraw that writes the frame that is kept beside it where dcraw would.
inline const QString writeFrame =
    QStringLiteral("for last; do :; done; cp \"$0.tiff\" \"${last%.*}.tiff\"");

/// One that notes its process and stands in the middle of its output until it is killed, longer
/// than any test may take.
inline const QString writeHalf =
    QStringLiteral("for last; do :; done; head -c 20 \"$0.tiff\" > "
                   "\"${last%.*}.tiff\"; echo $$ > \"$0.pid\"; exec sleep 600");
