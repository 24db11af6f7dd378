// SPDX-License-Identifier: MIT
#include "measuredrun.h"
#include "mutator.h"
#include "toolrun.h"

#include "mlv/framedecoder.h"
#include "raw/error.h"
#include "support/filecontent.h"
#include "support/testprogram.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <map>

namespace {

/// What can be had of a recording: frames that can be decoded and sound, by number.
struct Content
{
    std::map<std::uint32_t, std::size_t> frames;
    std::map<std::uint32_t, std::uint32_t> sounds;

    bool lacks(const Content &whole) const
    {
        const auto isSubset = [](const auto &all, const auto &there) {
            return std::ranges::all_of(all, [&there](const auto &entry) {
                const auto found = there.find(entry.first);
                return found != there.end() && found->second == entry.second;
            });
        };
        return !isSubset(whole.frames, frames) || !isSubset(whole.sounds, sounds);
    }
};

Content contentOfRecording(const QString &path)
{
    Content content;
    try {
        const mlv::Recording recording(path.toStdString());
        mlv::FrameDecoder decoder(recording);
        for (const auto &frame : recording.videoFrames()) {
            try {
                content.frames[frame.number] = decoder.decode(frame).size();
            } catch (const raw::Error &) {
                continue;
            }
        }
        for (const auto &sound : recording.audioBlocks())
            content.sounds[sound.number] = sound.size;
        if (!content.sounds.empty())
            content.sounds.rbegin()->second = 0; // the last one has any size
    } catch (const raw::Error &) {
        return content;
    }
    return content;
}

} // namespace

/// Damaged recordings: what is lost is told.
class TestVerifyMutations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void everyLossIsTold();

private:
    QString out(const char *name) const { return m_folder.filePath(QLatin1String(name)); }

    QTemporaryDir m_folder;
    QByteArrayList m_recordings;
};

void TestVerifyMutations::initTestCase()
{
    for (const char *name : {"plain14", "bits10", "lossless14", "lzma14"})
        m_recordings.append(recordingBytes(name));
    const QString common = QStringLiteral("--size 64x32 --frames 5 --sound --padding --change ");
    for (const char *more : {"--bits 14", "--bits 12 --compress lossless --shape camera",
                             "--bits 14 --compress lossless --shape folded --predictor 6",
                             "--bits 10 --compress lzma --shuffle"}) {
        const auto run = runBuilt(QStringLiteral("mlv_sample"),
                                  (common + QLatin1String(more)).split(QLatin1Char(' ')) +
                                      QStringList{out("sample.MLV")});
        QCOMPARE(run.status, 0);
        m_recordings.append(contentOf(out("sample.MLV")));
    }
    for (const auto &recording : m_recordings) {
        QVERIFY(!recording.isEmpty());
        setContent(out("a.MLV"), recording);
        QCOMPARE(
            runBuilt(QStringLiteral("mlv_dump"), {QStringLiteral("--verify"), out("a.MLV")}).status,
            0);
    }
}

void TestVerifyMutations::everyLossIsTold()
{
    int lossy = 0;
    for (int seed = 0; seed < mutationCount(); ++seed) {
        const auto &original = m_recordings[seed % m_recordings.size()];
        setContent(out("a.MLV"), original);
        const auto whole = contentOfRecording(out("a.MLV"));
        setContent(out("a.MLV"), Mutator(static_cast<quint32>(seed)).mutated(original));
        const auto left = contentOfRecording(out("a.MLV"));

        const auto run = runMeasured(QStringLiteral("mlv_dump"),
                                     {QStringLiteral("--verify"), out("a.MLV")}, hang);
        const auto context = QStringLiteral("seed %1\n%2")
                                 .arg(seed)
                                 .arg(QString::fromUtf8(run.output.right(2000)))
                                 .toUtf8();
        QVERIFY2(run.signal == 0 && run.status >= 0 && run.status <= 2, context.constData());
        QVERIFY2(run.output.endsWith("\nDone\n"), context.constData());
        const bool tellsLoss = run.output.contains("[LOST] ");
        const bool isUnusable = run.output.contains("[UNUSABLE] ");
        QVERIFY2(run.status == (isUnusable ? 2 : tellsLoss ? 1 : 0), context.constData());
        if (left.lacks(whole)) {
            ++lossy;
            QVERIFY2(run.status != 0 || run.output.contains("[NOTE] "), context.constData());
        }
    }
    qInfo("%d of %d damaged recordings have lost something, and all of them say so", lossy,
          mutationCount());
    QVERIFY(lossy > mutationCount() / 4);
}

FILMWRIGHT_TEST(TestVerifyMutations, QCoreApplication)
#include "tst_verify_mutations.moc"
