// SPDX-License-Identifier: MIT
#include "measuredrun.h"
#include "mutator.h"
#include "toolrun.h"

#include "support/filecontent.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

namespace {

enum class RunKind {
    Report,
    Frames,
    Average,
    RepairedFrames,
};

bool writesFrames(RunKind kind)
{
    return kind == RunKind::Frames || kind == RunKind::RepairedFrames;
}

} // namespace

/// Damaged recordings: every run ends in order, whatever it reads.
class TestMutations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void everyRunEndsInOrder();

private:
    void check(const MeasuredRun &run, RunKind kind, bool damagedReference, qint64 inputSize) const;
    static void checkWord(const QByteArray &error, RunKind kind, bool damagedReference);
    void checkFrames(const QString &count) const;
    void emptyOutputFolder() const;
    QStringList arguments(RunKind kind, bool damagedReference) const;
    QString out(const char *name) const { return m_folder.filePath(QLatin1String(name)); }

    QTemporaryDir m_folder;
    QByteArrayList m_recordings;
};

void TestMutations::initTestCase()
{
    for (const char *name : {"plain14", "bits10", "lossless14", "lzma14", "dropped", "shuffled"})
        m_recordings.append(recordingBytes(name));
    const QString common = QStringLiteral("--size 64x32 --frames 5 --sound --padding --change ");
    for (const char *more : {"--bits 14", "--bits 12 --compress lossless --shape camera",
                             "--bits 14 --compress lossless --shape folded --predictor 6",
                             "--bits 10 --compress lzma --shuffle --drop 2 --drop-sound 1"}) {
        const auto path = out("sample.MLV");
        const auto run =
            runBuilt(QStringLiteral("mlv_sample"),
                     (common + QLatin1String(more)).split(QLatin1Char(' ')) + QStringList{path});
        QCOMPARE(run.status, 0);
        m_recordings.append(contentOf(path));
    }
    for (const auto &recording : m_recordings)
        QVERIFY(!recording.isEmpty());
    QVERIFY(QDir(m_folder.path()).mkdir(QStringLiteral("out")));
}

void TestMutations::everyRunEndsInOrder()
{
    std::chrono::milliseconds longest{};
    qint64 mostMemory = 0;
    for (int seed = 0; seed < mutationCount(); ++seed) {
        Mutator mutator(static_cast<quint32>(seed));
        const auto &original = m_recordings[seed % m_recordings.size()];
        const auto recording = mutator.mutated(original);
        QFile file(out("a.MLV"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(recording);
        file.close();
        QFile undamaged(out("whole.MLV"));
        QVERIFY(undamaged.open(QIODevice::WriteOnly));
        undamaged.write(original);
        undamaged.close();

        const auto kind = static_cast<RunKind>(seed / m_recordings.size() % 4);
        const bool damagedReference = seed % 7 == 0;
        const auto run =
            runMeasured(QStringLiteral("mlv_dump"), arguments(kind, damagedReference), hang);
        longest = std::max(longest, run.duration);
        mostMemory = std::max(mostMemory, run.peakMemory);
        check(run, kind, damagedReference, recording.size() + original.size());
        if (QTest::currentTestFailed()) {
            qInfo("seed %d, arguments %s", seed,
                  qPrintable(arguments(kind, damagedReference).join(QLatin1Char(' '))));
            qInfo("%s", run.output.right(3000).constData());
            return;
        }
        emptyOutputFolder();
    }
    qInfo("%d runs, the longest %lld ms, at most %lld KiB", mutationCount(),
          static_cast<long long>(longest.count()), static_cast<long long>(mostMemory / 1024));
}

QStringList TestMutations::arguments(RunKind kind, bool damagedReference) const
{
    const auto damaged = out("a.MLV");
    const auto whole = out("whole.MLV");
    switch (kind) {
    case RunKind::Report:
        return {QStringLiteral("-m"), QStringLiteral("-v"), damaged};
    case RunKind::Frames:
        if (damagedReference) {
            return {QStringLiteral("--dng"), whole,   QStringLiteral("-s"), damaged,
                    QStringLiteral("-t"),    damaged, QStringLiteral("-o"), out("out/tmp")};
        }
        return {QStringLiteral("--dng"), damaged, QStringLiteral("-o"), out("out/tmp")};
    case RunKind::RepairedFrames:
        return {QStringLiteral("--dng"),
                damaged,
                QStringLiteral("--repair-pixels"),
                QStringLiteral("auto"),
                QStringLiteral("--repair-columns"),
                QStringLiteral("-o"),
                out("out/tmp")};
    case RunKind::Average:
        return {QStringLiteral("-a"), damaged, QStringLiteral("-o"), out("out/a.mlv")};
    }
    return {};
}

void TestMutations::check(const MeasuredRun &run, RunKind kind, bool damagedReference,
                          qint64 inputSize) const
{
    QCOMPARE(run.signal, 0);
    QVERIFY(run.status == 0 || run.status == 1);
    if (memoryIsTheProgramsOwn)
        QVERIFY(run.peakMemory < (64 << 20) + 2 * inputSize);
    QVERIFY(run.output.endsWith('\n'));
    const auto lines = run.output.chopped(1).split('\n');
    QByteArrayList errors;
    for (const auto &line : lines) {
        QVERIFY(line.size() < 4096);
        if (line.contains("[ERROR]") || line.contains("[UNUSABLE]"))
            errors.append(line);
    }
    static const QRegularExpression lastLines(QStringLiteral(
        "\\AProcessed (\\d+) video frames at \\d+\\.\\d\\d FPS \\(\\d+\\.\\d\\d s\\)\nDone\\z"));
    const auto end = QString::fromUtf8(lines.mid(lines.size() - 2).join('\n'));
    const auto match = lastLines.match(end);
    QCOMPARE(errors.size(), run.status);
    if (run.status != 0)
        checkWord(errors.first(), kind, damagedReference);
    if (run.status != 0 && writesFrames(kind)) {
        QVERIFY(!run.output.contains("Done"));
        QVERIFY(!run.output.contains("Processed"));
        return;
    }
    QVERIFY(match.hasMatch());
    QCOMPARE(run.output.count("Done"), 1);
    if (run.status != 0)
        QCOMPARE(match.captured(1), QStringLiteral("0"));
    else if (writesFrames(kind))
        checkFrames(match.captured(1));
}

/// What is wrong with the recording alone has its own word where other recordings follow.
void TestMutations::checkWord(const QByteArray &error, RunKind kind, bool damagedReference)
{
    if (kind == RunKind::Average) {
        QVERIFY(error.startsWith("[ERROR] "));
    } else if (kind == RunKind::Report || kind == RunKind::RepairedFrames || !damagedReference) {
        QVERIFY(error.startsWith("[UNUSABLE] "));
    } else {
        QVERIFY(error.startsWith(error.contains(", but the recording is ") ? "[UNUSABLE] The "
                                                                           : "[ERROR] The "));
    }
}

void TestMutations::checkFrames(const QString &count) const
{
    const QDir folder(out("out"));
    const auto names = folder.entryList(QDir::Files, QDir::Name);
    const auto frames = names.filter(QStringLiteral(".dng"));
    QCOMPARE(QString::number(frames.size()), count);
    for (int i = 0; i < frames.size(); ++i)
        QCOMPARE(frames[i], QStringLiteral("tmp%1.dng").arg(i, 6, 10, QLatin1Char('0')));
    QVERIFY(names.filter(QStringLiteral(".part")).isEmpty());
}

void TestMutations::emptyOutputFolder() const
{
    QDir folder(out("out"));
    for (const auto &name : folder.entryList(QDir::Files))
        folder.remove(name);
}

FILMWRIGHT_TEST(TestMutations, QCoreApplication)
#include "tst_mutations.moc"
