// SPDX-License-Identifier: MIT
// How soon a recording can be seen: from the click on a row to its first frame painted, frames a
// second while the slider is dragged, and how late the window's events come meanwhile, alone and
// beside a batch.
#include "app/appdelegate.h"
#include "app/frameslider.h"
#include "app/imageview.h"
#include "app/previewpane.h"
#include "app/queuetableview.h"
#include "row.h"
#include "unattended.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QMainWindow>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <vector>

using namespace filmwright;
using namespace std::chrono_literals;

namespace {

constexpr const char *allowed = "what we allow it";
constexpr int recordings = 12;
constexpr int framesEach = 48;

/// Notes how late a timer of 5 ms comes.
class Lateness
{
public:
    Lateness()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setInterval(static_cast<int>(interval));
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] {
            m_late.push_back(std::max(0.0, milliseconds(m_since) - interval));
            m_since.start();
        });
        m_since.start();
        m_timer.start();
    }

    void print(const QString &when) const
    {
        printRow(
            qPrintable(QStringLiteral("event loop while %1, lateness, 99th percentile").arg(when)),
            percentile(m_late, 0.99), "ms", allowed, 30, "at most 1");
    }

private:
    static constexpr double interval = 5;
    QTimer m_timer;
    QElapsedTimer m_since;
    std::vector<double> m_late;
};

/// Counts the pictures that are painted.
class PaintedPictures : public QObject
{
public:
    explicit PaintedPictures(ImageView &view)
        : m_view(view)
    {
        view.installEventFilter(this);
    }

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && !m_view.image().isNull() &&
            m_view.image().cacheKey() != last) {
            last = m_view.image().cacheKey();
            ++count;
        }
        return false;
    }

    int count = 0;
    qint64 last = 0;    // the picture that is being painted, or was painted last
    qint64 awaited = 0; // the one that is waited for; 0: not there yet

private:
    ImageView &m_view;
};

/// A window with recordings of 1920x1080 and 14 bits.
class Window
{
public:
    Window(const QString &folder, const QStringList &options)
        : m_delegate(m_alerts, m_panel)
    {
        QDir().mkpath(folder);
        const QString first = folder + QStringLiteral("/0.MLV");
        if (QProcess::execute(QStringLiteral(FILMWRIGHT_RESOURCES_DIR "/mlv_sample"),
                              QStringList{QStringLiteral("--size"), QStringLiteral("1920x1080"),
                                          QStringLiteral("--frames"), QString::number(framesEach)} +
                                  options + QStringList{first}) != 0)
            qFatal("mlv_sample failed");
        for (int number = 1; number < recordings; ++number)
            QFile::copy(first, QStringLiteral("%1/%2.MLV").arg(folder).arg(number));
        m_delegate.window()->show();
        m_delegate.applicationDidFinishLaunching();
        m_delegate.applicationOpenFiles({folder});
        waitWhile([this] {
            return !m_delegate.window()
                        ->findChild<QAction *>(QStringLiteral("sourceItem"))
                        ->isEnabled();
        });
        m_painted = std::make_unique<PaintedPictures>(*find<ImageView>("imageView"));
    }
    ~Window() { m_delegate.applicationWillTerminate(); }

    template <typename Widget>
    Widget *find(const char *name) const
    {
        return m_delegate.window()->findChild<Widget *>(QLatin1String(name));
    }
    AppDelegate &delegate() { return m_delegate; }

    /// From the selection of each row, one after the other, to its first picture on the screen.
    std::vector<double> clicks()
    {
        FramePreview &frames = find<PreviewPane>("previewPane")->frames();
        std::vector<double> times;
        for (int row = 0; row < recordings; ++row) {
            QElapsedTimer timer;
            timer.start();
            const auto whenShown = [&](const FrameRequest &, const DevelopedFrame &frame) {
                m_painted->awaited = frame.image.cacheKey();
            };
            const auto connection =
                QObject::connect(&frames, &FramePreview::shown, &frames, whenShown);
            m_painted->awaited = 0;
            find<QueueTableView>("queueTableView")->selectRow(row);
            waitWhile(
                [&] { return m_painted->awaited == 0 || m_painted->last != m_painted->awaited; });
            times.push_back(milliseconds(timer));
            QObject::disconnect(connection);
            waitWhile([&frames] { return frames.isAwaited(); });
        }
        return times;
    }

    /// Pictures a second while the slider is moved to another frame every 20 ms.
    double dragged()
    {
        auto *slider = find<FrameSlider>("frameSlider");
        QTimer mouse;
        QObject::connect(&mouse, &QTimer::timeout, slider,
                         [slider] { slider->setValue(1 + slider->value() % slider->maximum()); });
        const int before = m_painted->count;
        QElapsedTimer timer;
        timer.start();
        mouse.start(20ms);
        waitWhile([&timer] { return timer.elapsed() < 800; });
        return 1000 * (m_painted->count - before) / milliseconds(timer);
    }

private:
    SilentAlerts m_alerts;
    NoPanel m_panel;
    AppDelegate m_delegate;
    std::unique_ptr<PaintedPictures> m_painted;
};

void measure(const QString &folder, const QString &kind, const QStringList &options)
{
    Window window(folder, options);
    {
        const Lateness lateness;
        const std::vector<double> times = window.clicks();
        const QByteArray what =
            QStringLiteral("from a click to the first frame, 1920x1080 of 14 bits, %1, ")
                .arg(kind)
                .toUtf8();
        printRow(what + "median", percentile(times, 0.5), "ms", allowed, 120, "at most 1");
        printRow(what + "95th percentile", percentile(times, 0.95), "ms", allowed, 250,
                 "at most 1");
        lateness.print(QStringLiteral("recordings are clicked, %1").arg(kind));
    }
    {
        const Lateness lateness;
        printRow(
            qPrintable(QStringLiteral("frames shown while the slider is dragged, %1").arg(kind)),
            window.dragged(), "a second", "what we ask for", 12, "at least 1");
        lateness.print(QStringLiteral("the slider is dragged, %1").arg(kind));
    }
    window.delegate().start();
    {
        const Lateness lateness;
        printRow(
            qPrintable(QStringLiteral("frames shown while the slider is dragged beside a batch, %1")
                           .arg(kind)),
            window.dragged(), "a second", "what we ask for alone", 12);
        lateness.print(QStringLiteral("the slider is dragged beside a batch, %1").arg(kind));
    }
    if (window.delegate().isWorking())
        window.delegate().start();
}

} // namespace

int main(int argc, char *argv[])
{
    const QTemporaryDir work;
    qputenv("TMPDIR", work.path().toUtf8());
    qputenv("FILMWRIGHT_RESOURCES", FILMWRIGHT_RESOURCES_DIR);
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, work.path());
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    const QApplication application(argc, argv);
    measure(work.filePath(QStringLiteral("plain")), QStringLiteral("uncompressed"), {});
    measure(work.filePath(QStringLiteral("lossless")), QStringLiteral("lossless"),
            {QStringLiteral("--compress"), QStringLiteral("lossless")});
    return 0;
}
