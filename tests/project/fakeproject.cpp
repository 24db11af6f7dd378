// SPDX-License-Identifier: MIT
#include "fakeproject.h"

#include "runner/temporarydirectory.h"

#include <QFile>
#include <QTest>

using namespace filmwright;

namespace {

QString name(MLVProjectMode mode)
{
    switch (mode) {
    case MLVProjectModeIdle:
        return QStringLiteral("idle");
    case MLVProjectModeReadingData:
        return QStringLiteral("reading");
    case MLVProjectModeReady:
        return QStringLiteral("ready");
    case MLVProjectModePending:
        return QStringLiteral("pending");
    case MLVProjectModeExtracting:
        return QStringLiteral("extracting");
    case MLVProjectModeRGBConversion:
        return QStringLiteral("converting");
    case MLVProjectModeBuildingMovie:
        return QStringLiteral("encoding");
    case MLVProjectModeFinished:
        return QStringLiteral("finished");
    }
    return {};
}

} // namespace

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
    events << name(project.mlvProjectMode());
}

void FakeProject::imageRGBReceived(const QImage &image, MLVProjectController &)
{
    events << (image.isNull() ? QStringLiteral("no image") : QStringLiteral("image"));
}

void FakeProject::controllerWorkFinished(MLVProjectController &)
{
    events << QStringLiteral("told");
}

void FakeProject::controllerWorkError(const QString &error)
{
    events << QStringLiteral("error ") + error;
}
