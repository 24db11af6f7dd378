// SPDX-License-Identifier: MIT
#include "preview/surveyor.h"

#include "mlvdump/mlvdumparguments.h"
#include "runner/files.h"
#include "runner/resources.h"
#include "runner/workingfiles.h"

#include <QFile>

namespace filmwright {

namespace {

const QString blendedFrames = QStringLiteral("dual");

ToolCall measuring(const FrameRequest &request, const QString &folder)
{
    const CalibrationChoice &calibration = request.settings.calibration;
    QStringList options = request.settings.corrections.arguments();
    options << QStringLiteral("--write-survey") << surveyIn(folder);
    if (request.settings.blendsAlternatingRows)
        options << QStringLiteral("--survey-frames") << folder + blendedFrames;
    return {mlvDumpName,
            frameArguments(request.recording, 0, calibration.darkAverage(),
                           calibration.flatAverage(), folder, options, surveyedFrames(request))};
}

} // namespace

QString surveyIn(const QString &folder)
{
    return folder + QStringLiteral("survey");
}

QString blendSurveyIn(const QString &folder)
{
    return folder + QStringLiteral("blend-survey");
}

Surveyor::Surveyor()
{
    connect(&m_tool, &ToolRun::ended, this, &Surveyor::callEnded);
}

Surveyor::~Surveyor()
{
    stop();
}

void Surveyor::survey(const FrameRequest &request, const QString &folder)
{
    m_folder = folder;
    m_calls = {measuring(request, folder)};
    if (request.settings.blendsAlternatingRows)
        m_calls.push_back(
            {cr2hdrName, {QStringLiteral("--write-survey"), blendSurveyIn(folder)}, folder});
    m_isBusy = true;
    m_tool.begin(m_calls.front());
}

/// Which frames there are for the blending is known when they are there. Neither they nor the
/// sound are needed any more at the end.
void Surveyor::callEnded()
{
    if (m_calls.empty())
        return; // stopped meanwhile
    m_calls.pop_front();
    if (!m_tool.hasSucceeded()) {
        end(m_tool.error());
        return;
    }
    const QStringList frames = folderEntries(m_folder).filter(QStringLiteral(".dng"));
    if (!m_calls.empty()) {
        m_calls.front().arguments += frames;
        m_tool.begin(m_calls.front());
        return;
    }
    for (const QString &name : frames + QStringList{extractedSound})
        QFile::remove(m_folder + name);
    end({});
}

void Surveyor::stop()
{
    m_calls.clear();
    m_tool.abort();
    m_isBusy = false;
}

void Surveyor::end(const QString &error)
{
    m_calls.clear();
    m_isBusy = false;
    Q_EMIT ended(error);
}

} // namespace filmwright

#include "moc_surveyor.cpp"
