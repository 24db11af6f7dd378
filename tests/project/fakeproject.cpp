// SPDX-License-Identifier: MIT
#include "fakeproject.h"

#include "runner/temporarydirectory.h"

#include <QFile>
#include <QTest>

using namespace filmwright;

FakeProject::FakeProject(int frames)
    : FakeTools(frames)
{
    QVERIFY2(setBaseTemporaryDirectory(path(QString())), "no temporary directory");
    QVERIFY2(QFile(recording()).open(QIODevice::WriteOnly), "no recording");
}

FakeProject::~FakeProject()
{
    if (controller)
        controller->setDelegate(nullptr);
}

void FakeProject::read()
{
    controller = std::make_unique<MLVProjectController>();
    controller->setDelegate(this);
    controller->setMovieFormat(MovieFormatMOV);
    controller->setMovieQuality(MovieQualityHigh);
    controller->setMlvPath(recording());
    QTRY_COMPARE(controller->mlvProjectMode(), MLVProjectModeReady);
    QTRY_VERIFY(!controller->isToolBusy());
    events.clear();
}

void FakeProject::launch()
{
    controller->readyToGo();
    controller->launchDNGExtraction();
}

QString FakeProject::frame(int number, const QString &extension) const
{
    return controller->extractionDirectory() +
           QStringLiteral("tmp%1.%2").arg(number, 6, 10, QLatin1Char('0')).arg(extension);
}

void FakeProject::controllerUpdated(MLVProjectController &project)
{
    events << QString::number(project.mlvProjectMode());
}

void FakeProject::imageRGBReceived(const QImage &image, MLVProjectController &)
{
    events << (image.isNull() ? QStringLiteral("no image") : QStringLiteral("image"));
}

void FakeProject::controllerWorkFinished(MLVProjectController &)
{
    events << QStringLiteral("finished");
}

void FakeProject::controllerWorkError(const QString &error)
{
    events << QStringLiteral("error ") + error;
}
