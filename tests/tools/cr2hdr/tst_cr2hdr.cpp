// SPDX-License-Identifier: MIT
// The program on the frames of real files: made by mlv_sample, extracted by mlv_dump, developed by
// dcraw.
#include "sampleprogram.h"

#include "dng/filehead.h"
#include "dng/rawfile.h"
#include "dng/tags.h"
#include "raw/samples.h"
#include "support/filecontent.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTest>

#include <cmath>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

Ended cr2hdr(const QStringList &arguments)
{
    return runProgram(builtProgram(QStringLiteral("cr2hdr")), arguments);
}

/// The frame as dcraw develops it for a movie: red, green, blue, 8 bits each.
QByteArray developed(const QString &path)
{
    const Ended ended =
        runProgram(QStringLiteral("dcraw"),
                   QStringLiteral("-c -H 3 -q 3 -w -W -b 4").split(QLatin1Char(' ')) << path);
    const qsizetype headEnd = ended.output.indexOf("\n255\n");
    return headEnd < 0 ? QByteArray() : ended.output.mid(headEnd + 5);
}

double meanDifference(const QByteArray &one, const QByteArray &other)
{
    double sum = 0;
    for (qsizetype i = 0; i < one.size(); ++i)
        sum += std::abs(int{static_cast<quint8>(one[i])} - int{static_cast<quint8>(other[i])});
    return sum / static_cast<double>(one.size()) / 255;
}

double mean(const QByteArray &picture)
{
    double sum = 0;
    for (const char value : picture)
        sum += static_cast<quint8>(value);
    return sum / static_cast<double>(picture.size());
}

double standardDeviation(const QList<double> &values)
{
    double sum = 0;
    double squares = 0;
    for (const double value : values) {
        sum += value;
        squares += value * value;
    }
    const auto count = static_cast<double>(values.size());
    return std::sqrt(std::max(0.0, squares / count - sum * sum / count / count));
}

} // namespace

class TestCr2hdr : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
    }

    void aDevelopedFrameIsNearTheTruth_data()
    {
        QTest::addColumn<QString>("isoPair");
        QTest::addColumn<int>("bits");
        for (const int highIso : {400, 800, 1600}) {
            for (const int bits : {10, 12, 14}) {
                QTest::addRow("100/%d, %d bits", highIso, bits)
                    << QStringLiteral("100/%1").arg(highIso) << bits;
            }
        }
    }

    void aDevelopedFrameIsNearTheTruth()
    {
        QFETCH(QString, isoPair);
        QFETCH(int, bits);
        const QStringList frames = dualFrames(1, {QStringLiteral("--dual-iso"), isoPair,
                                                  QStringLiteral("--bits"), QString::number(bits)});
        const QByteArray before = developed(frames.first());
        const Ended ended = cr2hdr(frames);
        QCOMPARE(ended.status, 0);
        const QByteArray after = developed(frames.first());
        const QByteArray truth = developed(m_truthFrames.first());
        QCOMPARE(after.size(), 320 * 200 * 3);
        QCOMPARE(truth.size(), after.size());
        QVERIFY(meanDifference(after, truth) < 0.02);
        QVERIFY(meanDifference(before, truth) > 0.05); // so the comparison can tell
    }

    void whatIsFoundIsPrintedOncePerCallAndEachFrameOnce()
    {
        const QStringList frames = dualFrames(3);
        const Ended ended = cr2hdr(frames);
        QCOMPARE(ended.errors, QByteArray());
        const QList<QByteArray> lines = ended.output.split('\n');
        QCOMPARE(lines.size(), 12); // the last is empty
        QCOMPARE(lines[0], "Frame size : 320x200, 14 bits");
        QCOMPARE(lines[1], "Levels : black 2048, white 15000");
        QCOMPARE(lines[2], "Row pattern : LLHH (L low, H high sensitivity)");
        QVERIFY(lines[3].startsWith("Exposure difference : 3.0") ||
                lines[3].startsWith("Exposure difference : 2.9"));
        for (qsizetype i = 0; i < frames.size(); ++i)
            QCOMPARE(lines[8 + i], frames[i].toLocal8Bit() + " : blended");
    }

    void theMeanBrightnessDoesNotFlicker()
    {
        const QStringList frames = dualFrames(12);
        QCOMPARE(cr2hdr(frames).status, 0);
        QList<double> means;
        QList<double> trueMeans;
        for (qsizetype i = 0; i < frames.size(); ++i) {
            means.append(mean(developed(frames[i])));
            trueMeans.append(mean(developed(m_truthFrames[i])));
        }
        // The scene itself changes: the counter's digits, the lamp.
        QVERIFY(standardDeviation(trueMeans) > 0);
        QVERIFY(standardDeviation(means) < 1.2 * standardDeviation(trueMeans));
    }

    void allTagsButThoseOfTheSamplesAreKept()
    {
        const QString path = dualFrames(1).first();
        const auto before = dng::RawFile(path.toStdString()).directories();
        QCOMPARE(cr2hdr({path}).status, 0);
        const dng::RawFile file(path.toStdString());
        QCOMPARE(file.format().bitsPerSample, 16);
        QCOMPARE(file.format().blackLevel, 8192U);
        QCOMPARE(file.format().whiteLevel, 60000U);

        const QList<std::uint16_t> changed{dng::tag::bitsPerSample,   dng::tag::stripOffsets,
                                           dng::tag::stripByteCounts, dng::tag::software,
                                           dng::tag::blackLevel,      dng::tag::whiteLevel};
        const auto &after = file.directories();
        QCOMPARE(after.image.fields().size(), before.image.fields().size());
        for (const auto &[tag, field] : before.image.fields())
            if (!changed.contains(tag))
                QVERIFY(after.image.fields().at(tag).data == field.data);
        QVERIFY(before.image.fields().contains(dng::tag::asShotNeutral));
        QVERIFY(!before.exif.fields().empty());
        for (const auto &[tag, field] : before.exif.fields())
            QVERIFY(after.exif.fields().at(tag).data == field.data);
    }

    void exiftoolFindsNothingToComplainOf()
    {
        const QString path = dualFrames(1).first();
        QCOMPARE(cr2hdr({path}).status, 0);
        QCOMPARE(runProgram(QStringLiteral("exiftool"),
                            {QStringLiteral("-validate"), QStringLiteral("-s3"), path})
                     .output,
                 QByteArray("OK\n"));
    }

    void anOrdinaryFrameIsLeftAsItIs()
    {
        const QString path = extracted(QStringLiteral("plain"), {}, 1).first();
        const QByteArray before = contentOf(path);
        const Ended ended = cr2hdr({path});
        QCOMPARE(ended.status, 0);
        QVERIFY(ended.output.endsWith(path.toLocal8Bit() + " : left as it is, not dual ISO\n"));
        QCOMPARE(contentOf(path), before);
    }

    void aDarkFrameAmongBrightOnesIsBlendedToo()
    {
        const QStringList frames = dualFrames(2);
        const QString dark = extracted(QStringLiteral("dark"),
                                       {QStringLiteral("--dark"), QStringLiteral("--dual-iso"),
                                        QStringLiteral("100/800")},
                                       1)
                                 .first();
        const Ended ended = cr2hdr({frames[0], dark, frames[1]});
        QCOMPARE(ended.status, 0);
        QVERIFY(ended.output.contains(dark.toLocal8Bit() + " : blended\n"));
    }

    void aSecondRunChangesNothing()
    {
        const QStringList frames = dualFrames(2);
        QCOMPARE(cr2hdr(frames).status, 0);
        const QByteArray blended = contentOf(frames.first());
        const Ended ended = cr2hdr(frames);
        QCOMPARE(ended.status, 0);
        QCOMPARE(ended.output, frames[0].toLocal8Bit() + " : left as it is, blended before\n" +
                                   frames[1].toLocal8Bit() + " : left as it is, blended before\n");
        QCOMPARE(contentOf(frames.first()), blended);
    }

    void anInterruptedRunCanBeContinued()
    {
        const QStringList frames = dualFrames(4);
        QCOMPARE(cr2hdr(frames.mid(0, 2)).status, 0);
        const QByteArray blended = contentOf(frames.first());
        const Ended ended = cr2hdr(frames);
        QCOMPARE(ended.status, 0);
        QCOMPARE(ended.output.count(" : blended\n"), 2);
        QCOMPARE(contentOf(frames.first()), blended);
    }

    void aKilledRunLeavesOnlyWholeFrames_data()
    {
        QTest::addColumn<int>("milliseconds");
        for (const int milliseconds : {5, 15, 25, 35, 50})
            QTest::addRow("after %d ms", milliseconds) << milliseconds;
    }

    void aKilledRunLeavesOnlyWholeFrames()
    {
        QFETCH(int, milliseconds);
        const QStringList frames = dualFrames(24);
        QProcess process;
        process.start(builtProgram(QStringLiteral("cr2hdr")), frames);
        QVERIFY(process.waitForStarted());
        QTest::qSleep(milliseconds);
        process.kill();
        QVERIFY(process.waitForFinished());
        for (const QString &path : frames) {
            const dng::RawFile file(path.toStdString()); // throws if it is not whole
            QCOMPARE(file.samples().size(), std::size_t{320 * 200});
            QVERIFY(file.format().bitsPerSample == 14 || file.format().bitsPerSample == 16);
        }
        QCOMPARE(cr2hdr(frames).status, 0);
        QCOMPARE(dng::RawFile(frames.last().toStdString()).format().bitsPerSample, 16);
    }

    void framesOfLosslessRecordingsAreBlendedToTheSameResult()
    {
        const QString plain = dualFrames(1).first();
        const QString lossless =
            extracted(QStringLiteral("lossless"),
                      {QStringLiteral("--dual-iso"), QStringLiteral("100/800"),
                       QStringLiteral("--compress"), QStringLiteral("lossless")},
                      1)
                .first();
        QCOMPARE(cr2hdr({plain}).status, 0);
        QCOMPARE(cr2hdr({lossless}).status, 0);
        QVERIFY(dng::RawFile(lossless.toStdString()).samples() ==
                dng::RawFile(plain.toStdString()).samples());
    }

    void aFailedFileIsNamedAndTheOthersAreBlended_data()
    {
        QTest::addColumn<QByteArray>("content"); // null: no such file
        QTest::addColumn<QByteArray>("reason");
        QTest::newRow("missing") << QByteArray()
                                 << QByteArray("can't be opened: No such file or directory");
        QTest::newRow("empty") << QByteArray("") << QByteArray("is a damaged TIFF file");
        QTest::newRow("text") << QByteArray("no picture at all")
                              << QByteArray("is not a little-endian TIFF file");
    }

    void aFailedFileIsNamedAndTheOthersAreBlended()
    {
        QFETCH(QByteArray, content);
        QFETCH(QByteArray, reason);
        const QStringList frames = dualFrames(2);
        const QString bad = m_folder->filePath(QStringLiteral("bad.dng"));
        if (!content.isNull())
            setContent(bad, content);
        const Ended ended = cr2hdr({frames[0], bad, frames[1]});
        QCOMPARE(ended.status, 1);
        QVERIFY(ended.output.contains(bad.toLocal8Bit() + " : failed, " + reason + '\n'));
        QCOMPARE(ended.output.count(" : blended\n"), 2);
        QCOMPARE(contentOf(bad), content);
    }

    void aCutFrameFailsAndIsUnharmed()
    {
        const QString path = dualFrames(1).first();
        const QByteArray cut = contentOf(path).chopped(1000);
        setContent(path, cut);
        const Ended ended = cr2hdr({path});
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.output, path.toLocal8Bit() + " : failed, ends before its samples do\n");
        QCOMPARE(contentOf(path), cut);
    }

    void aFrameOfAnotherDepthFails()
    {
        const QStringList frames = dualFrames(2);
        const QString other = extracted(QStringLiteral("other"),
                                        {QStringLiteral("--dual-iso"), QStringLiteral("100/800"),
                                         QStringLiteral("--bits"), QStringLiteral("12")},
                                        1)
                                  .first();
        const QByteArray before = contentOf(other);
        const Ended ended = cr2hdr({frames[0], frames[1], other});
        QCOMPARE(ended.status, 1);
        QVERIFY(ended.output.endsWith(
            other.toLocal8Bit() + " : failed, has another size, depth or level than the others\n"));
        QCOMPARE(contentOf(other), before);
    }

    void aFolderThatCannotBeWrittenLeavesTheFrame()
    {
        const QString path = dualFrames(1).first();
        const QByteArray before = contentOf(path);
        const QString folder = QFileInfo(path).path();
        QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadOther));
        QVERIFY(QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner |
                                                  QFile::ReadOther | QFile::ExeOther));
        QVERIFY(QFile::setPermissions(m_folder->path(), QFile::ReadOwner | QFile::WriteOwner |
                                                            QFile::ExeOwner | QFile::ExeOther));
        // The build folder may be closed to others.
        const QString program = m_folder->filePath(QStringLiteral("cr2hdr"));
        QVERIFY(QFile::copy(builtProgram(QStringLiteral("cr2hdr")), program));
        QVERIFY(QFile::setPermissions(program, QFile::ReadOther | QFile::ExeOther |
                                                   QFile::ReadOwner | QFile::ExeOwner));

        QProcess process;
        process.setChildProcessModifier([] {
            if (::geteuid() == 0 &&
                (::setgid(65534) != 0 || ::setuid(65534) != 0)) // the superuser may write anywhere
                ::_exit(99);
        });
        process.start(program, {path});
        QVERIFY(process.waitForFinished(60000));
        QVERIFY(
            QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        QCOMPARE(process.exitCode(), 1);
        const QByteArray lastLine = process.readAllStandardOutput().trimmed().split('\n').last();
        QCOMPARE(lastLine,
                 path.toLocal8Bit() + " : failed, can't be written beside: Permission denied");
        QCOMPARE(contentOf(path), before);
        QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden).size(), 1);
    }

    void permissionsAndLinksAreKept()
    {
        const QString path = dualFrames(1).first();
        const auto permissions = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup;
        QVERIFY(QFile::setPermissions(path, permissions));
        const QString link = m_folder->filePath(QStringLiteral("link.dng"));
        QVERIFY(QFile::link(path, link));
        QCOMPARE(cr2hdr({link}).status, 0);
        QVERIFY(QFileInfo(link).isSymLink());
        QCOMPARE(dng::RawFile(path.toStdString()).format().bitsPerSample, 16);
        QVERIFY((QFile::permissions(path) & ~(QFile::ReadUser | QFile::WriteUser)) == permissions);
    }

    void eachWriteEndsAtALineEnd()
    {
        QString folder = m_folder->path();
        for (int i = 0; i < 15; ++i)
            folder += QLatin1Char('/') + QString(200, QLatin1Char('x'));
        QVERIFY(QDir().mkpath(folder));
        const QString path = folder + QStringLiteral("/a\nb.dng");
        QVERIFY(QFile::copy(dualFrames(1).first(), path));

        // A socket of this type keeps what is written at once together.
        int ends[2];
        QCOMPARE(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), 0);
        QProcess process;
        process.setChildProcessModifier([&ends] { ::dup2(ends[1], STDOUT_FILENO); });
        process.start(builtProgram(QStringLiteral("cr2hdr")), {path});
        QVERIFY(process.waitForFinished(60000));
        ::close(ends[1]);
        int writes = 0;
        QByteArray chunk(100000, '\0');
        for (ssize_t size = ::read(ends[0], chunk.data(), 100000); size > 0;
             size = ::read(ends[0], chunk.data(), 100000)) {
            ++writes;
            QVERIFY(size <= 4096);
            QCOMPARE(chunk.at(size - 1), '\n');
            QCOMPARE(chunk.left(size).count('\n'), 1);
        }
        ::close(ends[0]);
        QCOMPARE(process.exitCode(), 0);
        QCOMPARE(writes, 9);
    }

    void allFramesAreBlendedEvenIfNobodyReadsTheLines()
    {
        const QStringList frames = dualFrames(3);
        QProcess program;
        QProcess reader;
        program.setStandardOutputProcess(&reader);
        program.start(builtProgram(QStringLiteral("cr2hdr")), frames);
        reader.start(QStringLiteral("true"), {});
        QVERIFY(program.waitForFinished(60000));
        QVERIFY(reader.waitForFinished(60000));
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
        for (const QString &path : frames)
            QCOMPARE(dng::RawFile(path.toStdString()).format().bitsPerSample, 16);
    }

    void wrongUsageIsRefused()
    {
        QCOMPARE(cr2hdr({}).status, 2);
        QCOMPARE(cr2hdr({QStringLiteral("--nonsense")}).status, 2);
        QCOMPARE(cr2hdr({QStringLiteral("a.dng"), QStringLiteral("--use-survey")}).status, 2);
        const QStringList both{QStringLiteral("--use-survey"), QStringLiteral("a"),
                               QStringLiteral("--write-survey"), QStringLiteral("b"),
                               QStringLiteral("a.dng")};
        QCOMPARE(cr2hdr(both).errors,
                 "cr2hdr : a survey is either written or used; cr2hdr --help tells more\n");
        QVERIFY(cr2hdr({QStringLiteral("--help")}).output.startsWith("Usage: cr2hdr "));
        QVERIFY(cr2hdr({QStringLiteral("--version")}).output.startsWith("cr2hdr "));
    }

    void behindTwoDashesEverythingIsAFile()
    {
        const Ended ended = cr2hdr({QStringLiteral("--"), QStringLiteral("--help")});
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.output,
                 QByteArray("--help : failed, can't be opened: No such file or directory\n"));
    }

    void aFrameWhoseOtherRowsAreBrightFails()
    {
        const QStringList frames = dualFrames(2);
        const QString other = extracted(QStringLiteral("other"),
                                        {QStringLiteral("--dual-iso"), QStringLiteral("100/800"),
                                         QStringLiteral("--phase"), QStringLiteral("2")},
                                        1)
                                  .first();
        const QByteArray before = contentOf(other);
        const Ended ended = cr2hdr({frames[0], frames[1], other});
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.output.count(" : blended\n"), 2);
        QVERIFY(ended.output.endsWith(
            other.toLocal8Bit() + " : failed, other rows are bright than in the others: HHLL\n"));
        QCOMPARE(contentOf(other), before);
    }

    void aFrameOfAnotherProgramIsBlendedAndMarked()
    {
        const QString path = dualFrames(1).first();
        const dng::RawFile whole(path.toStdString());
        dng::Ifd image = whole.directories().image;
        image.setText(dng::tag::software, {}); // leaves the tag out
        const auto samples = whole.samples();
        std::vector<std::byte> packed(raw::packedSize(samples.size(), 14));
        raw::packSamples(samples, 14, raw::WordOrder::BigEndian, packed);
        const auto head = dng::encodeFileHead(image, {}, static_cast<std::uint32_t>(packed.size()));
        const auto bytes = [](const std::vector<std::byte> &data) {
            return QByteArray(reinterpret_cast<const char *>(data.data()),
                              static_cast<qsizetype>(data.size()));
        };
        setContent(path, bytes(head) + bytes(packed));
        QVERIFY(cr2hdr({path}).output.endsWith(" : blended\n"));
        QVERIFY(cr2hdr({path}).output.endsWith(" : left as it is, blended before\n"));
    }

    void partsOfARecordingAreBlendedAsTheWhole_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::newRow("dual ISO") << dualIso();
        QTest::newRow("not dual ISO") << QStringList();
        QTest::newRow("too dark to tell") << QStringList{QStringLiteral("--dark")};
    }

    void partsOfARecordingAreBlendedAsTheWhole()
    {
        QFETCH(QStringList, options);
        const QStringList whole = extracted(QStringLiteral("whole"), options, 15);
        const QString recording = m_folder->filePath(QStringLiteral("whole.MLV"));
        const QStringList parts = extractedFrom(recording, QStringLiteral("parts"), 15);
        const QString spread = m_folder->filePath(QStringLiteral("spread"));
        const QStringList arguments{QStringLiteral("--dng"),
                                    recording,
                                    QStringLiteral("-o"),
                                    spread,
                                    QStringLiteral("--write-survey"),
                                    spread,
                                    QStringLiteral("--survey-frames"),
                                    spread};
        QCOMPARE(runProgram(builtProgram(QStringLiteral("mlv_dump")), arguments).status, 0);
        QStringList surveyed;
        for (const auto &name :
             QDir(m_folder->path()).entryList({QStringLiteral("spread*.dng")}, QDir::Files))
            surveyed << m_folder->filePath(name);
        const QString survey = m_folder->filePath(QStringLiteral("survey"));

        const Ended blended = cr2hdr(whole);
        const Ended found =
            cr2hdr(QStringList{QStringLiteral("--write-survey"), survey} + surveyed);
        QCOMPARE(blended.status, 0);
        QCOMPARE(found.status, 0);
        QVERIFY(blended.output.startsWith(found.output)); // what is found is told there
        for (const int first : {0, 5, 10}) {
            QCOMPARE(
                cr2hdr(QStringList{QStringLiteral("--use-survey"), survey} + parts.mid(first, 5))
                    .status,
                0);
        }
        for (int i = 0; i < whole.size(); ++i)
            QVERIFY2(contentOf(parts[i]) == contentOf(whole[i]), qPrintable(parts[i]));
    }

    void aSurveyLeavesTheFramesAsTheyAre()
    {
        const QStringList frames = dualFrames(3);
        const QByteArray before = contentOf(frames.first());
        const QString all = m_folder->filePath(QStringLiteral("all"));
        QCOMPARE(cr2hdr(QStringList{QStringLiteral("--write-survey"), all} + frames).status, 0);
        QCOMPARE(contentOf(frames.first()), before);
        QVERIFY(!contentOf(all).isEmpty());
    }

    void withoutAFrameThereIsNoSurvey()
    {
        const QString missing = m_folder->filePath(QStringLiteral("missing.dng"));
        const QString survey = m_folder->filePath(QStringLiteral("survey"));
        const Ended ended = cr2hdr({QStringLiteral("--write-survey"), survey, missing});
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.output,
                 missing.toLocal8Bit() + " : failed, can't be opened: No such file or directory\n");
        QVERIFY(!QFile::exists(survey));
    }

    void aSurveyOfAnotherRecordingIsRefused()
    {
        const QStringList frames = dualFrames(2);
        const QStringList others = extracted(QStringLiteral("other"), dualIso(), 2);
        const QString survey = m_folder->filePath(QStringLiteral("survey"));
        QCOMPARE(cr2hdr(QStringList{QStringLiteral("--write-survey"), survey} + others).status, 0);
        const QByteArray frame = contentOf(frames.first());
        const Ended ended = cr2hdr(QStringList{QStringLiteral("--use-survey"), survey} + frames);
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.output, "[ERROR] The survey is of another recording\n");
        QCOMPARE(contentOf(frames.first()), frame);
    }

    void aBrokenSurveyIsRefused_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QByteArray>("after");
        QTest::addColumn<QByteArray>("reason");
        const QByteArray damaged("The survey is damaged");
        const auto row = [&](const char *before, const char *after, const QByteArray &reason) {
            QTest::newRow(after) << QByteArray(before) << QByteArray(after) << reason;
        };
        row("survey 1\n", "survey 2\n", "The survey is of another kind or version");
        row("end\n", "", damaged);
        row("obstacle 0", "obstacle 9", damaged);
        row("obstacle 0", "obstacle 1", damaged);
        row("rows LLHH", "rows LHLH", damaged);
        row("rows LLHH", "rows LLH", damaged);
        row("exposure ", "exposure -", damaged);
        row("noise ", "noise -", damaged);
    }

    void aBrokenSurveyIsRefused()
    {
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, after);
        QFETCH(QByteArray, reason);
        const QStringList frames = dualFrames(2);
        const QString survey = m_folder->filePath(QStringLiteral("survey"));
        QCOMPARE(cr2hdr(QStringList{QStringLiteral("--write-survey"), survey} + frames).status, 0);
        QByteArray content = contentOf(survey);
        QVERIFY2(content.contains(before), content.constData());
        setContent(survey, content.replace(before, after));
        const QByteArray frame = contentOf(frames.first());
        const Ended ended = cr2hdr(QStringList{QStringLiteral("--use-survey"), survey} + frames);
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.output, "[ERROR] " + reason + '\n');
        QCOMPARE(contentOf(frames.first()), frame);
    }

private:
    static QStringList dualIso()
    {
        return {QStringLiteral("--dual-iso"), QStringLiteral("100/800")};
    }

    /// The DNG frames of a 320 × 200 recording made with these options, in a folder of their own.
    QStringList extracted(const QString &name, const QStringList &options, int count)
    {
        const QString recording =
            writeSample(*m_folder,
                        QStringList{QStringLiteral("--size"), QStringLiteral("320x200"),
                                    QStringLiteral("--frames"), QString::number(count),
                                    QStringLiteral("--no-sound")}
                            << options,
                        name + QStringLiteral(".MLV"));
        return extractedFrom(recording, name, count);
    }

    QStringList extractedFrom(const QString &recording, const QString &name, int count)
    {
        const QString folder = m_folder->filePath(name);
        if (!QDir().mkpath(folder) || runProgram(builtProgram(QStringLiteral("mlv_dump")),
                                                 {QStringLiteral("--dng"), QStringLiteral("-o"),
                                                  folder + QStringLiteral("/tmp"), recording})
                                              .status != 0)
            QTest::qFail("the frames could not be extracted", __FILE__, __LINE__);
        QStringList frames;
        for (int i = 0; i < count; ++i)
            frames.append(folder + QStringLiteral("/tmp%1.dng").arg(i, 6, 10, QLatin1Char('0')));
        return frames;
    }

    /// Dual-ISO frames; m_truthFrames are then those without noise.
    QStringList dualFrames(int count, QStringList options = dualIso())
    {
        const QString truth = m_folder->filePath(QStringLiteral("truth.MLV"));
        options << QStringLiteral("--truth") << truth;
        const QStringList frames = extracted(QStringLiteral("dual"), options, count);
        m_truthFrames = extractedFrom(truth, QStringLiteral("truth"), count);
        return frames;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QStringList m_truthFrames;
};

FILMWRIGHT_TEST(TestCr2hdr, QCoreApplication)
#include "tst_cr2hdr.moc"
