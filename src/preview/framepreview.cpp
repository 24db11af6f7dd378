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
}

FramePreview::~FramePreview() = default;

void FramePreview::show(const FrameRequest &request)
{
    m_wanted = request;
    m_wantsQuick = needsMeasuring(request);
    // What is in work is let go unless it is a step of the same slider.
    const bool isStep =
        !m_isPicture && !needsMeasuring(m_current) && m_current.recording == request.recording;
    if (m_developer.isBusy() && !isStep)
        m_developer.stop();
    next();
}

void FramePreview::showNothing()
{
    m_wanted.reset();
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
        if (std::exchange(m_wantsQuick, false))
            request.quality = FrameRequest::Quick;
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
    if (!m_folder || !m_folder->isValid())
        m_folder = std::make_unique<PreviewFolder>();
    if (!m_folder->isValid()) {
        ended({{}, {}, m_folder->problem()});
        return;
    }
    const QString folder = m_folder->path() + QStringLiteral("/frame/");
    removeFolder(folder);
    createPrivateFolder(folder);
    m_developer.develop(request, folder);
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
    const bool isLast = request.quality == FrameRequest::AsInMovie || !frame.reason.isEmpty();
    if (isLast && m_wanted && identityOf(*m_wanted) == identityOf(exact))
        m_wanted.reset();
    if (frame.reason.isEmpty())
        m_kept.insert(identityOf(request), new DevelopedFrame(frame),
                      frame.image.sizeInBytes() / 1024);
}

} // namespace filmwright
