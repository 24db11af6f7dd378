// SPDX-License-Identifier: MIT
// Runs the real mlv_sample and the programs that judge what it wrote.
#pragma once

#include "toolrun.h"

#include <QByteArray>
#include <QStringList>
#include <QTemporaryDir>

/// Writes a small recording (64 × 48, 3 frames unless `options` say otherwise) into `folder` and
/// answers its path. Fails the running test if mlv_sample doesn't end with status 0.
QString writeSample(const QTemporaryDir &folder, const QStringList &options,
                    const QString &name = QStringLiteral("clip.MLV"));
