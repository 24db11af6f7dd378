// SPDX-License-Identifier: MIT
#pragma once

#include "preview/framedeveloper.h"
#include "preview/previewfolder.h"
#include "preview/surveyor.h"

#include <QCache>
#include <QHash>

#include <optional>

namespace filmwright {

/// Shows frames of recordings as their movies will have them, soon after they are asked for: one
/// frame is developed at a time, the newest request wins, nothing queues up, and the latest frames
/// are kept. Small pictures of recordings are made when no frame is asked for.
///
/// Main thread only, with an event loop. No child and no file is left when it is destroyed.
class FramePreview : public QObject
{
    Q_OBJECT

public:
    FramePreview();
    ~FramePreview() override;

    /// Asks for a frame in place of the one that was asked for before. Of the same recording, a
    /// frame that is already in work is shown, too, so that a slider that is dragged is followed.
    /// May show a frame before it returns.
    ///
    /// When the recording has to be measured first, which is done once, the frame is shown quick,
    /// then as in the movie.
    void show(const FrameRequest &request);
    /// No frame is asked for any more.
    void showNothing();
    /// Whether the frame as it will be in the movie is still to come.
    bool isAwaited() const { return m_wanted.has_value(); }

    /// Asks for pictures in this order, in place of those that were asked for before and aren't
    /// there yet: those of the rows that are in sight.
    void fetch(const QList<FrameRequest> &pictures);

Q_SIGNALS:
    /// `request` has the quality that the frame has.
    void shown(const filmwright::FrameRequest &request, const filmwright::DevelopedFrame &frame);
    /// Once for each picture that was asked for and not replaced.
    void fetched(const filmwright::FrameRequest &request, const filmwright::DevelopedFrame &frame);

private:
    void next();
    bool showKept();
    void begin(const FrameRequest &request, bool isPicture);
    void beginSurvey(const FrameRequest &request);
    void surveyEnded(const QString &error);
    QString folderOf(const QString &name) const;
    QString newFolder(const QString &name);
    void ended(const DevelopedFrame &frame);
    void keep(const FrameRequest &request, const DevelopedFrame &frame);

    std::unique_ptr<PreviewFolder> m_folder; // made for the first frame
    FrameDeveloper m_developer;              // ends before the folder goes
    Surveyor m_surveyor;                     // likewise
    QHash<QByteArray, QString> m_surveys;    // their folders
    QByteArray m_survey;                     // the one in work
    QCache<QByteArray, DevelopedFrame> m_kept;
    std::optional<FrameRequest> m_wanted;
    bool m_wantsQuick = false; // the wanted one is shown quick first
    QList<FrameRequest> m_pictures;
    FrameRequest m_current; // in work
    bool m_isPicture = false;
};

} // namespace filmwright
