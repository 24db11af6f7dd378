// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>

namespace filmwright {

struct MlvMetadata;

/// Something that a recording says of itself, for a person: "Length", "0:12, 288 frames".
struct RecordingFact
{
    QString name;
    QString value;

    friend bool operator==(const RecordingFact &, const RecordingFact &) = default;
};

/// Everything that is known of a recording that was read; what it doesn't tell is left out.
QList<RecordingFact> recordingFacts(const MlvMetadata &metadata);

} // namespace filmwright
