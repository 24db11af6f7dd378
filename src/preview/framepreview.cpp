// SPDX-License-Identifier: MIT
#include "preview/framepreview.h"

#include "runner/files.h"

#include <utility>

namespace filmwright {

namespace {

constexpr qsizetype keptKilobytes = qsizetype(128) * 1024;

} // namespace

FramePreview::FramePreview()
    : m_kept(keptKilobytes)
{
    connect(&m_developer, &FrameDeveloper::ended, this, &FramePreview::ended);
    connect(&m_surveyor, &Surveyor::ended, this, &FramePreview::surveyEnded);
}

FramePreview::~FramePreview() = default;

void FramePreview::show(const FrameRequest &request)
{
    m_wanted = request;
    const QByteArray survey = surveyOf(request);
    m_wantsQuick = needsMeasuring(request) && !m_surveys.contains(survey);
    if (m_surveyor.isBusy() && m_survey != survey)
        m_surveyor.stop();
    // What is in work is let go unless it is a step of the same slider.
    const bool isStep = !m_isPicture && m_current.recording == request.recording;
    if (m_developer.isBusy() && !isStep)
        m_developer.stop();
    next();
}

void FramePreview::showNothing()
{
    m_wanted.reset();
    m_surveyor.stop();
    if (m_developer.isBusy() && !m_isPicture)
        m_developer.stop();
    next();
}

void FramePreview::fetch(const QList<FrameRequest> &pictures)
{
    m_pictures = pictures;
    next();
}

void FramePreview::next()
{
    if (m_developer.isBusy() || showKept())
        return;
    if (m_wanted) {
        FrameRequest request = *m_wanted;
        const bool isMeasured = !needsMeasuring(request) || m_surveys.contains(surveyOf(request));
        if (!isMeasured && !m_wantsQuick) {
            if (!m_surveyor.isBusy())
                beginSurvey(request);
            return;
        }
        if (!isMeasured)
            request.quality = FrameRequest::Quick;
        m_wantsQuick = false;
        begin(request, false);
    } else if (!m_pictures.isEmpty()) {
        begin(m_pictures.constFirst(), true);
    }
}

/// Whoever is told may ask for the next one.
bool FramePreview::showKept()
{
    if (!m_wanted)
        return false;
    const DevelopedFrame *kept = m_kept.object(identityOf(*m_wanted));
    if (!kept)
        return false;
    const DevelopedFrame frame = *kept;
    const FrameRequest request = *std::exchange(m_wanted, std::nullopt);
    Q_EMIT shown(request, frame);
    next();
    return true;
}

void FramePreview::begin(const FrameRequest &request, bool isPicture)
{
    m_current = request;
    m_isPicture = isPicture;
    const QString folder = newFolder(QStringLiteral("frame"));
    if (folder.isEmpty())
        ended({{}, {}, m_folder->error()});
    else
        m_developer.develop(request, folder, m_surveys.value(surveyOf(request)));
}

/// Frames go on being shown quick meanwhile.
void FramePreview::beginSurvey(const FrameRequest &request)
{
    m_survey = surveyOf(request);
    const QString folder = newFolder(QStringLiteral("survey%1").arg(m_surveys.size()));
    if (folder.isEmpty())
        surveyEnded(m_folder->error());
    else
        m_surveyor.survey(request, folder);
}

void FramePreview::surveyEnded(const QString &error)
{
    if (error.isEmpty()) {
        m_surveys.insert(m_survey, folderOf(QStringLiteral("survey%1").arg(m_surveys.size())));
    } else if (m_wanted) {
        const FrameRequest request = *std::exchange(m_wanted, std::nullopt);
        Q_EMIT shown(request, {{}, {}, error});
    }
    next();
}

QString FramePreview::folderOf(const QString &name) const
{
    return m_folder->path() + QLatin1Char('/') + name + QLatin1Char('/');
}

/// Empty when it can't be made.
QString FramePreview::newFolder(const QString &name)
{
    if (!m_folder || !m_folder->isValid())
        m_folder = std::make_unique<PreviewFolder>();
    if (!m_folder->isValid())
        return {};
    removeFolder(folderOf(name));
    createPrivateFolder(folderOf(name));
    return folderOf(name);
}

void FramePreview::ended(const DevelopedFrame &frame)
{
    const FrameRequest request = m_current;
    if (m_isPicture) {
        m_pictures.removeIf([identity = identityOf(request)](const FrameRequest &picture) {
            return identityOf(picture) == identity;
        });
        Q_EMIT fetched(request, frame);
    } else {
        keep(request, frame);
        Q_EMIT shown(request, frame);
    }
    next();
}

/// A frame that can't be developed quick can't be otherwise.
void FramePreview::keep(const FrameRequest &request, const DevelopedFrame &frame)
{
    FrameRequest exact = request;
    exact.quality = FrameRequest::AsInMovie;
    const bool isLast = request.quality == FrameRequest::AsInMovie || !frame.error.isEmpty();
    if (isLast && m_wanted && identityOf(*m_wanted) == identityOf(exact))
        m_wanted.reset();
    if (frame.error.isEmpty())
        m_kept.insert(identityOf(request), new DevelopedFrame(frame),
                      frame.image.sizeInBytes() / 1024);
}

} // namespace filmwright

#include "moc_framepreview.cpp"
