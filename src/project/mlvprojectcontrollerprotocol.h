// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>
#include <QString>

namespace filmwright {

class MLVProjectController;

/// Who is told of a recording's way to its movie. All calls arrive on the main thread.
class MLVProjectControllerProtocol
{
public:
    virtual ~MLVProjectControllerProtocol() = default;

    /// The mode has changed.
    virtual void controllerUpdated(MLVProjectController &controller) = 0;
    /// A frame was converted; a null image stands for one that couldn't be.
    virtual void imageRGBReceived(const QImage &image, MLVProjectController &forController) = 0;
    /// ffmpeg has ended and the working folder is gone. Sent once a run, never after stop().
    virtual void controllerWorkFinished(MLVProjectController &controller) = 0;
    /// mlv_dump printed an error line. The project goes on; whoever is told decides.
    virtual void controllerWorkError(const QString &error) = 0;
};

} // namespace filmwright
