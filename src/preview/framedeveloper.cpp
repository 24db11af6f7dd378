// SPDX-License-Identifier: MIT
#include "preview/framedeveloper.h"

#include "conversion/dcrawarguments.h"
#include "conversion/mergebitmaps.h"
#include "conversion/tiffbitmap.h"
#include "mlvdump/mlvdumparguments.h"
#include "preview/surveyor.h"
#include "runner/resources.h"

#include <QtConcurrent>

#include <cmath>

namespace filmwright {

namespace {

ToolCall extraction(const FrameRequest &request, quint64 frames, const QString &folder,
                    const QString &surveyFolder)
{
    const CalibrationChoice &calibration = request.settings.calibration;
    QStringList options = correctionsOf(request).arguments();
    if (needsMeasuring(request))
        options << QStringLiteral("--use-survey") << surveyIn(surveyFolder);
    return {mlvDumpName, frameArguments(request.recording, 0, calibration.darkAverage(),
                                        calibration.flatAverage(), folder, options,
                                        {request.frame, request.frame + frames - 1})};
}

/// By a survey, frames are numbered as those of the whole call.
QStringList namesOf(const FrameRequest &request, quint64 frames)
{
    const quint64 first =
        needsMeasuring(request) ? request.frame - surveyedFrames(request).first : 0;
    QStringList names;
    for (quint64 number = first; number < first + frames; ++number)
        names << frameName(number);
    return names;
}

/// Of one TIFF, or of two that are merged.
DevelopedFrame frameIn(const QStringList &tiffs, bool sixteenBits)
{
    TiffBitmap bitmap = TiffBitmap::read(tiffs.constFirst());
    if (tiffs.size() > 1 && !bitmap.isEmpty()) {
        const auto merge = sixteenBits ? mergeDeepBitmaps : mergeBitmaps;
        if (!merge(&bitmap, TiffBitmap::read(tiffs.constLast())))
            return {{}, {}, QStringLiteral("the frame can't be merged with its neighbour")};
    }
    return {bitmap.eightBits().toImage().convertToFormat(QImage::Format_RGB32),
            histogramOf(bitmap)};
}

} // namespace

FrameDeveloper::FrameDeveloper()
{
    connect(&m_tool, &ToolRun::ended, this, &FrameDeveloper::callEnded);
    connect(&m_reading, &QFutureWatcher<DevelopedFrame>::finished, this,
            &FrameDeveloper::frameRead);
}

FrameDeveloper::~FrameDeveloper()
{
    stop();
}

void FrameDeveloper::develop(const FrameRequest &request, const QString &folder,
                             const QString &surveyFolder)
{
    const ConversionSettings &settings = request.settings;
    const bool isExact = request.quality == FrameRequest::AsInMovie;
    const quint64 frames = isExact && settings.mergesNeighbours ? 2 : 1;
    const QStringList names = namesOf(request, frames);

    m_calls = {extraction(request, frames, folder, surveyFolder)};
    if (isExact && settings.blendsAlternatingRows) {
        const QStringList survey{QStringLiteral("--use-survey"), blendSurveyIn(surveyFolder)};
        m_calls.push_back({cr2hdrName, survey + names, folder});
    }
    m_tiffs.clear();
    for (const QString &name : names) {
        const auto brightness = static_cast<float>(std::exp2(settings.corrections.exposure));
        m_calls.push_back(
            {dcrawName, dcRawArguments(folder + name, brightness, developOf(request))});
        m_tiffs << tiffPathFor(folder + name);
    }
    m_mergesSixteenBits = settings.recipe && settings.recipe->developsSixteenBits();
    m_isBusy = true;
    next();
}

void FrameDeveloper::next()
{
    if (m_calls.empty())
        readFrame();
    else
        m_tool.begin(m_calls.front());
}

/// dcraw is judged by its picture, as in a conversion.
void FrameDeveloper::callEnded()
{
    if (m_calls.empty())
        return; // stopped meanwhile
    const bool mattersHow = m_calls.front().tool != dcrawName;
    m_calls.pop_front();
    if (mattersHow && !m_tool.hasSucceeded())
        end({{}, {}, m_tool.error()});
    else
        next();
}

void FrameDeveloper::readFrame()
{
    m_reading.setFuture(QtConcurrent::run([tiffs = m_tiffs, sixteenBits = m_mergesSixteenBits] {
        return frameIn(tiffs, sixteenBits);
    }));
}

void FrameDeveloper::frameRead()
{
    if (m_reading.future().resultCount() == 0)
        return; // stopped meanwhile
    const DevelopedFrame frame = m_reading.result();
    const bool isTold = !frame.image.isNull() || !frame.error.isEmpty();
    end(isTold ? frame : DevelopedFrame{{}, {}, m_tool.error()});
}

void FrameDeveloper::stop()
{
    m_calls.clear();
    m_tool.abort();
    m_reading.setFuture({});
    m_isBusy = false;
}

void FrameDeveloper::end(const DevelopedFrame &frame)
{
    m_calls.clear();
    m_isBusy = false;
    Q_EMIT ended(frame);
}

} // namespace filmwright

#include "moc_framedeveloper.cpp"
