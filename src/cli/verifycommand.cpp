// SPDX-License-Identifier: MIT
#include "cli/verifycommand.h"

#include "cli/commandline.h"
#include "cli/interruption.h"
#include "cli/missingtools.h"
#include "cli/progressdisplay.h"
#include "cli/recordingsearch.h"
#include "cli/texttable.h"
#include "mlvdump/recordingcheck.h"
#include "project/recordingfiles.h"
#include "runner/readabletext.h"
#include "runner/resources.h"

#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace filmwright {

namespace {

struct Verified
{
    QString recording;
    CheckResult result;
};

/// What the table and the JSON call a verdict.
QString nameOf(CheckResult::Verdict verdict)
{
    switch (verdict) {
    case CheckResult::Whole:
        return QStringLiteral("whole");
    case CheckResult::Lossy:
        return QStringLiteral("not whole");
    case CheckResult::Unusable:
        break;
    }
    return QStringLiteral("unreadable");
}

quint64 bytesOf(const QString &recording)
{
    quint64 bytes = 0;
    for (const QString &file : recordingFiles(recording))
        bytes += static_cast<quint64>(QFileInfo(file).size());
    return bytes;
}

/// Checks recordings one after the other: each is as fast as the disk or all cores.
class Verification
{
public:
    Verification(const QStringList &recordings, ProgressDisplay &display)
        : m_recordings(recordings)
        , m_display(display)
    {
        for (const QString &recording : recordings)
            m_bytes += bytesOf(recording);
        QObject::connect(&m_check, &RecordingCheck::ended, &m_loop, &QEventLoop::quit);
        QObject::connect(&m_check, &RecordingCheck::progressed, &m_check, [this] { show(); });
        QObject::connect(&m_interruption, &Interruption::happened, &m_loop, &QEventLoop::quit);
    }

    /// False when it was interrupted.
    bool run()
    {
        m_time.start();
        for (const QString &recording : m_recordings) {
            m_display.beginStage(recording, QStringLiteral("verifying"), 0);
            m_check.check(recording, RecordingCheck::Everything);
            m_loop.exec();
            if (m_interruption.hasHappened()) {
                m_check.abort();
                return false;
            }
            m_bytesBefore += bytesOf(recording);
            m_verified << Verified{recording, m_check.result()};
        }
        return true;
    }

    const QList<Verified> &verified() const { return m_verified; }

private:
    void show()
    {
        const double done = static_cast<double>(m_bytesBefore + m_check.bytesDone());
        const double seconds = static_cast<double>(m_time.elapsed()) / 1000;
        const double left = seconds * std::max(0.0, static_cast<double>(m_bytes) - done) / done;
        m_display.showText(QStringLiteral("%1, %2 left")
                               .arg(percentText(static_cast<double>(m_check.bytesDone()),
                                                static_cast<double>(m_check.bytes())),
                                    timeText(std::chrono::duration<double>(left))));
    }

    const QStringList m_recordings;
    ProgressDisplay &m_display;
    Interruption m_interruption; // before the tool's first start
    RecordingCheck m_check;
    QEventLoop m_loop;
    QElapsedTimer m_time;
    QList<Verified> m_verified;
    quint64 m_bytes = 0;
    quint64 m_bytesBefore = 0;
};

void printJson(const QList<Verified> &verified)
{
    QJsonArray array;
    for (const auto &[recording, result] : verified) {
        array << QJsonObject{
            {QStringLiteral("path"), recording},
            {QStringLiteral("result"), nameOf(result.verdict)},
            {QStringLiteral("frames"), static_cast<qint64>(result.frames)},
            {QStringLiteral("losses"), QJsonArray::fromStringList(result.losses)},
            {QStringLiteral("warnings"), QJsonArray::fromStringList(result.remarks)},
            {QStringLiteral("reason"),
             result.error.isEmpty() ? QJsonValue() : QJsonValue(result.error)},
        };
    }
    printLine(QString::fromUtf8(QJsonDocument(array).toJson().trimmed()));
}

/// A line for each sentence; the first one beside the recording.
void printTable(const QList<Verified> &verified)
{
    QStringList paths;
    for (const Verified &one : verified)
        paths << one.recording;
    const qsizetype folderLength = commonFolder(paths).size();
    QList<QStringList> rows{{QStringLiteral("recording"), QStringLiteral("result"),
                             QStringLiteral("frames"), QStringLiteral("findings")}};
    for (const auto &[recording, result] : verified) {
        QStringList sentences = result.sentences();
        rows << QStringList{printable(recording.mid(folderLength)), nameOf(result.verdict),
                            QString::number(result.frames),
                            sentences.isEmpty() ? QString() : printable(sentences.takeFirst())};
        for (const QString &sentence : std::as_const(sentences))
            rows << QStringList{QString(), QString(), QString(), printable(sentence)};
    }
    for (const QString &line : textTable(rows, {2}))
        printLine(line);
}

} // namespace

int runVerify(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Reads recordings whole, decodes every frame and tells what is lost: before the card "
        "is wiped. Nothing is written."));
    const QString json = QStringLiteral("json");
    const QString quiet = QStringLiteral("quiet");
    parser.addOptions({{json, QStringLiteral("Print one JSON array.")},
                       {quiet, QStringLiteral("Print no progress.")}});
    parser.addPositionalArgument(QStringLiteral("path"),
                                 QStringLiteral("Recordings, or folders to be searched."));
    if (const auto ending =
            readArguments(parser, QStringLiteral("verify [options] path..."), arguments))
        return *ending;
    if (parser.positionalArguments().isEmpty()) {
        printError(QStringLiteral("name at least one recording or folder"));
        return ExitUnusable;
    }
    if (!checkTools({mlvDumpName}))
        return ExitUnusable;
    QList<Unreachable> unreachable;
    QStringList recordings;
    for (const QString &path : findRecordings(parser.positionalArguments(), &unreachable))
        recordings << QFileInfo(path).absoluteFilePath();
    if (recordings.isEmpty() && unreachable.isEmpty()) {
        printError(QStringLiteral("no recordings found"));
        return ExitUnusable;
    }

    ProgressDisplay display(parser.isSet(quiet));
    QList<Verified> verified;
    for (const Unreachable &item : unreachable) {
        CheckResult result;
        result.error = item.error;
        verified << Verified{item.path, result};
    }
    Verification verification(recordings, display);
    const bool isComplete = verification.run();
    verified += verification.verified();
    display.clear();
    if (parser.isSet(json))
        printJson(verified);
    else
        printTable(verified);
    if (!isComplete)
        return ExitInterrupted;
    int status = ExitSuccess;
    for (const Verified &one : std::as_const(verified))
        status = std::max<int>(status, one.result.verdict);
    return status;
}

} // namespace filmwright
