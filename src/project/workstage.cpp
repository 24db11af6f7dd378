// SPDX-License-Identifier: MIT
#include "project/workstage.h"

#include "mlvdump/mlvdumparguments.h"
#include "project/framesize.h"
#include "project/mlvprojectcontroller.h"

#include <QFileInfo>

#include <algorithm>

namespace filmwright {

namespace {

/// cr2hdr tells of each frame in a line that begins with its name.
quint64 blendedFrames(const CR2HDRTask &blender)
{
    const QStringList lines = blender.logs();
    const QStringList names = blender.arguments();
    quint64 told = 0;
    for (const QString &line : lines)
        if (told < static_cast<quint64>(names.size()) &&
            line.startsWith(names.at(static_cast<qsizetype>(told)) + QLatin1String(" : ")))
            ++told;
    return told;
}

quint64 framesOfMovie(const MLVProjectController &project)
{
    return static_cast<quint64>(project.framesOfMovie());
}

} // namespace

QString stageName(WorkStage stage)
{
    switch (stage) {
    case WorkStage::Reading:
        return QStringLiteral("reading");
    case WorkStage::Extracting:
        return QStringLiteral("extracting");
    case WorkStage::Blending:
        return QStringLiteral("blending");
    case WorkStage::Converting:
        return QStringLiteral("converting");
    case WorkStage::Merging:
        return QStringLiteral("merging");
    case WorkStage::Encoding:
        return QStringLiteral("encoding");
    case WorkStage::Finished:
        return QStringLiteral("finished");
    case WorkStage::Waiting:
        break;
    }
    return QStringLiteral("waiting");
}

RecordingWork workOf(const MLVProjectController &project)
{
    RecordingWork work;
    // What was extracted counts once it is known: a recording may be shorter than it says.
    work.frames = project.framesToConvert() > 0 ? static_cast<quint64>(project.framesToConvert())
                                                : project.framesToExtract();
    if (const double pixels = pixelsOf(project.resolution()); pixels > 0)
        work.megapixels = pixels / 1e6;
    work.settings.blendsAlternatingRows = project.blendsAlternatingRows();
    work.settings.mergesNeighbours = project.dualISO();
    work.settings.format = project.movieFormat();
    work.settings.quality = project.movieQuality();
    work.settings.recipe = project.recipe();
    work.settings.frameBuffer = project.frameBuffer();
    work.settings.workers = project.conversionWorkers();
    return work;
}

StageCounter::StageCounter(const MLVProjectController &project)
    : m_project(project)
{
}

StagePosition StageCounter::position()
{
    const MLVProjectMode mode = m_project.mlvProjectMode();
    if (mode != MLVProjectModeRGBConversion)
        m_merging = false;
    switch (mode) {
    case MLVProjectModeReadingData:
        return {WorkStage::Reading};
    case MLVProjectModeExtracting:
        return {WorkStage::Extracting, extractedFrames(), m_project.framesToExtract()};
    case MLVProjectModeRGBConversion:
        return conversion();
    case MLVProjectModeBuildingMovie:
        return encoding();
    case MLVProjectModeFinished:
        return {WorkStage::Finished};
    default:
        m_extractedFrames = 0;
        return {WorkStage::Waiting};
    }
}

/// Of frames that flow those count that have come through.
StagePosition StageCounter::encoding() const
{
    return {WorkStage::Encoding, m_project.encoder().encodedFrames(), framesOfMovie(m_project)};
}

StagePosition StageCounter::conversion()
{
    if (m_project.flow())
        return encoding();
    const CR2HDRTask &blender = m_project.blender();
    if (blender.isRunning()) {
        return {WorkStage::Blending, blendedFrames(blender),
                static_cast<quint64>(blender.arguments().size())};
    }
    const int frames = m_project.framesToConvert();
    if (m_project.movieKind() == MovieKind::Folder) {
        const auto all = static_cast<quint64>(frames);
        return {m_project.blendsAlternatingRows() ? WorkStage::Blending : WorkStage::Extracting,
                all, all};
    }
    const auto pairs = static_cast<quint64>(m_project.pairsToMerge());
    m_merging = m_merging || pairs > 0;
    if (m_merging) {
        const quint64 all = framesOfMovie(m_project);
        return {WorkStage::Merging, all - std::min(all, pairs), all};
    }
    return {WorkStage::Converting,
            static_cast<quint64>(std::max(0, frames - m_project.dngToProcess())),
            static_cast<quint64>(frames), static_cast<quint64>(m_project.convertedBefore())};
}

/// Frame files appear in order, so looking on from the last one is enough.
quint64 StageCounter::extractedFrames()
{
    const QString directory = m_project.extractionDirectory();
    while (QFileInfo::exists(directory + frameName(m_extractedFrames)))
        ++m_extractedFrames;
    return m_extractedFrames;
}

} // namespace filmwright
