// SPDX-License-Identifier: MIT
#pragma once

#include "faketools.h"
#include "project/mlvprojectcontroller.h"

/// A recording, tools that behave, and a log of what a project tells its delegate.
class FakeProject : public FakeTools, public filmwright::MLVProjectControllerProtocol
{
public:
    explicit FakeProject(int frames);
    ~FakeProject() override;

    /// Makes the project and reads the metadata.
    void read();
    /// What a batch run does with a project whose turn it is.
    void launch();

    QString recording() const { return path(QStringLiteral("clip.MLV")); }
    QString movie() const { return path(QStringLiteral("clip.mov")); }
    QString frame(int number, const QString &extension) const;

    void controllerUpdated(filmwright::MLVProjectController &controller) override;
    void imageRGBReceived(const QImage &image,
                          filmwright::MLVProjectController &forController) override;
    void controllerWorkFinished(filmwright::MLVProjectController &controller) override;
    void controllerWorkError(const QString &error) override;

    std::unique_ptr<filmwright::MLVProjectController> controller;
    /// The modes ("extracting"), "image", "no image", "error …", and "told": the work is finished.
    QStringList events;
    QString log() const { return events.join(QLatin1Char(' ')); }
};
