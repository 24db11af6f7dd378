// SPDX-License-Identifier: MIT
#include "flow/frameflow.h"

#include "conversion/cr2hdrtask.h"
#include "conversion/dcrawarguments.h"
#include "mlvdump/mlvdumparguments.h"
#include "mlvdump/mlvdumptask.h"
#include "runner/files.h"

#include <QFile>
#include <QRegularExpression>

#include <algorithm>
#include <utility>

namespace filmwright {

namespace {

/// Enough that starting the tools doesn't count beside the frames, few enough that the converter
/// doesn't wait long for the first.
constexpr quint64 mostFramesOfRange = 16;

/// One range is read while the one before is developed.
quint64 framesOfRange(quint64 room)
{
    return std::clamp<quint64>(room / 2, 1, mostFramesOfRange);
}

const QString rowFramePrefix = QStringLiteral("rows");

} // namespace

FrameFlow::FrameFlow(const Plan &plan, MlvDumpTask &reader, CR2HDRTask &blender,
                     std::function<void(const QString &path)> convert)
    : m_plan(plan)
    , m_reader(reader)
    , m_blender(blender)
    , m_convert(std::move(convert))
{
    m_readerOfPipe.setSingleShot(true);
    // An encoder that fails closes its end of the pipe a moment before it is gone.
    m_readerOfPipe.setInterval(TaskWrapper::gracePeriod());
    connect(&m_readerOfPipe, &QTimer::timeout, this,
            [this] { give(QStringLiteral("ffmpeg doesn't read its frames any more")); });
}

FrameFlow::~FrameFlow() = default;

QString FrameFlow::inFolder(const QString &name) const
{
    return m_reader.extractionDirectory() + name;
}

void FrameFlow::begin()
{
    m_reader.surveyFrames(survey(), m_plan.blendsRows ? inFolder(rowFramePrefix) : QString());
}

void FrameFlow::framesExtracted()
{
    if (m_step == Step::Surveying) {
        m_frames = m_reader.surveyedFrames();
        if (m_plan.blendsRows)
            surveyRows();
        else
            beginRanges();
        return;
    }
    const auto isThere = [this](const QString &name) { return QFile::exists(inFolder(name)); };
    const auto missing = std::find_if_not(m_range.cbegin(), m_range.cend(), isThere);
    if (missing != m_range.cend()) {
        give(QStringLiteral("mlv_dump extracted no frame %1").arg(*missing));
    } else if (m_plan.blendsRows) {
        m_step = Step::Blending;
        m_blender.blend(m_reader.extractionDirectory(), m_range,
                        {QStringLiteral("--use-survey"), rowSurvey()});
    } else {
        develop();
    }
}

void FrameFlow::surveyRows()
{
    static const QRegularExpression name(QStringLiteral("^%1[0-9]+\\.dng$").arg(rowFramePrefix));
    m_step = Step::SurveyingRows;
    m_range = folderEntries(m_reader.extractionDirectory()).filter(name);
    m_blender.blend(m_reader.extractionDirectory(), m_range,
                    {QStringLiteral("--write-survey"), rowSurvey()});
}

void FrameFlow::framesBlended()
{
    if (m_step == Step::Blending) {
        develop();
        return;
    }
    for (const QString &name : std::as_const(m_range))
        QFile::remove(inFolder(name));
    beginRanges();
}

void FrameFlow::beginRanges()
{
    m_step = Step::Waiting;
    Q_EMIT surveyed();
    readOn();
}

void FrameFlow::readOn()
{
    const quint64 count = std::min(framesOfRange(m_plan.room), m_frames - m_read);
    if (m_step != Step::Waiting || count == 0 || m_between + count > m_plan.room ||
        !m_error.isEmpty())
        return;
    m_step = Step::Extracting;
    m_range.clear();
    for (quint64 number = m_read; number < m_read + count; ++number)
        m_range << frameName(number);
    const quint64 first = m_plan.selection.first + m_read;
    m_read += count;
    m_between += count;
    m_reader.extractSurveyed(survey(), {first, first + count - 1});
}

void FrameFlow::develop()
{
    m_step = Step::Waiting;
    for (const QString &name : std::exchange(m_range, {})) {
        m_order.push_back(inFolder(name));
        m_convert(m_order.back());
    }
    readOn();
}

void FrameFlow::frameConverted(const QString &path)
{
    m_converted.insert(path);
    sendConverted();
}

/// Frames are ready in any order where several are developed at once.
void FrameFlow::sendConverted()
{
    while (!m_order.empty() && m_converted.remove(m_order.front())) {
        const QString path = std::move(m_order.front());
        m_order.pop_front();
        if (!m_error.isEmpty() || (!m_pipe && !openPipe(path)))
            return;
        m_pipe->write(path);
        if (m_order.empty() && m_step == Step::Waiting && m_read == m_frames)
            m_pipe->finish();
    }
}

/// The encoder has to know beforehand what it reads.
bool FrameFlow::openPipe(const QString &dngPath)
{
    constexpr int colours = 3;
    constexpr int bits = 8;
    const QString tiff = tiffPathFor(dngPath);
    const auto layout = TiffBitmap::layoutOf(tiff);
    if (!layout || layout->samplesPerPixel != colours ||
        (layout->bitsPerSample != bits && layout->bitsPerSample != 2 * bits)) {
        give(QStringLiteral("the developed frame %1 can't be read").arg(tiff));
        return false;
    }
    m_pipe = std::make_unique<FramePipe>(
        FramePipe::Frames{*layout, m_plan.mergesNeighbours, m_plan.sixteenBits});
    if (m_pipe->readEnd() < 0) {
        give(QStringLiteral("no pipe to ffmpeg could be made"));
        return false;
    }
    connect(m_pipe.get(), &FramePipe::taken, this, [this] {
        --m_between;
        readOn();
    });
    connect(m_pipe.get(), &FramePipe::failed, this, &FrameFlow::give);
    connect(m_pipe.get(), &FramePipe::closedByReader, &m_readerOfPipe, qOverload<>(&QTimer::start));
    Q_EMIT encoderWanted(
        {{layout->width, layout->height}, layout->bitsPerSample, !m_plan.mergesNeighbours});
    m_pipe->closeReadEnd();
    return true;
}

bool FrameFlow::lacksReader() const
{
    return (m_step == Step::Surveying || m_step == Step::Extracting) && !m_reader.isRunning();
}

bool FrameFlow::lacksBlender() const
{
    return (m_step == Step::SurveyingRows || m_step == Step::Blending) && !m_blender.isRunning();
}

void FrameFlow::give(const QString &error)
{
    if (!m_error.isEmpty())
        return;
    m_error = error;
    Q_EMIT stuck();
}

} // namespace filmwright

#include "moc_frameflow.cpp"
