// SPDX-License-Identifier: MIT
// Our dcraw writes what the installed one writes, to the last byte, and ends as it does.
#include "converterrun.h"
#include "randomnegative.h"
#include "toolrun.h"

#include "dcraw/frame.h"
#include "dcraw/instructionset.h"
#include "dcraw/notcovered.h"
#include "support/testprogram.h"

#include <QDir>
#include <QTest>

#include <algorithm>
#include <atomic>
#include <cstring>

namespace {

/// Rows of a hundred seeds each: as many seeds as the variable says, else a hundred.
void addSeeds(const char *variable)
{
    constexpr int rowSize = 100;
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("end");
    const int wanted = qEnvironmentVariableIntValue(variable);
    const int first = qEnvironmentVariableIntValue("FILMWRIGHT_DEVELOPMENT_SEED");
    const int end = first + (wanted > 0 ? wanted : rowSize);
    for (int seed = first; seed < end; seed += rowSize)
        QTest::addRow("from seed %d", seed) << seed << std::min(seed + rowSize, end);
}

/// Keeps the rows in memory.
class MemorySink : public dcraw::PixelSink
{
public:
    explicit MemorySink(const dcraw::Frame &frame)
        : m_rowBytes(frame.development.outputRowBytes())
        , m_bytes(frame.head)
        , m_first(m_bytes.size())
    {
        m_bytes.resize(m_first +
                       m_rowBytes * static_cast<std::size_t>(frame.development.outputHeight()));
    }

    bool write(int row, std::span<const std::byte> pixels) override
    {
        const std::size_t place = m_first + static_cast<std::size_t>(row) * m_rowBytes;
        if (place + pixels.size() > m_bytes.size())
            qFatal("rows behind the last one");
        std::memcpy(m_bytes.data() + place, pixels.data(), pixels.size());
        m_written += pixels.size();
        return true;
    }

    /// The whole TIFF.
    QByteArray tiff() const
    {
        return {reinterpret_cast<const char *>(m_bytes.data()),
                static_cast<qsizetype>(m_bytes.size())};
    }
    bool isComplete() const { return m_first + m_written == m_bytes.size(); }

private:
    std::size_t m_rowBytes;
    std::vector<std::byte> m_bytes;
    std::size_t m_first;
    std::atomic<std::size_t> m_written = 0;
};

dcraw::Frame readFrame(const QStringList &arguments, const QString &dng)
{
    QByteArrayList encoded;
    std::vector<const char *> pointers;
    for (const QString &argument : arguments + QStringList{dng})
        encoded << argument.toLocal8Bit();
    std::transform(encoded.cbegin(), encoded.cend(), std::back_inserter(pointers),
                   [](const QByteArray &argument) { return argument.constData(); });
    return dcraw::readFrame(dcraw::parseOptions(pointers));
}

} // namespace

class TestDcrawIdentity : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void randomFrames_data();
    void randomFrames();
    void framesOfOurTools_data();
    void framesOfOurTools();
    void mutilatedHeads_data();
    void mutilatedHeads();

private:
    void compareAll(const ConverterFolder &folder, const QStringList &arguments) const;

    QString m_before;
};

void TestDcrawIdentity::initTestCase()
{
    QVERIFY2(!ConverterFolder::realProgram().isEmpty(), "dcraw is not installed");
    m_before = QDir::currentPath();
}

/// Our program, and its library on every number of threads and every set of instructions that the
/// machine has.
void TestDcrawIdentity::compareAll(const ConverterFolder &folder,
                                   const QStringList &arguments) const
{
    const ConverterRun real = folder.runReal(arguments);
    QCOMPARE(real.status, 0);
    const ConverterRun ours = folder.runOursAlone(arguments);
    QCOMPARE(ours.messages, QByteArray());
    QCOMPARE(ours.status, 0);
    QVERIFY2(ours.tiff == real.tiff, "the program writes another file");

    QDir::setCurrent(folder.path()); // where a list of bad pixels may be
    const dcraw::Frame frame = readFrame(arguments, folder.path(QStringLiteral("frame.dng")));
    QDir::setCurrent(m_before);
    const auto best = static_cast<unsigned>(dcraw::bestInstructionSet());
    for (unsigned set = 0; set <= best; ++set) {
        dcraw::useInstructionSet(static_cast<dcraw::InstructionSet>(set));
        for (const unsigned threads : {1U, 2U, 3U, 8U}) {
            MemorySink sink(frame);
            QVERIFY(dcraw::develop(frame.development, *frame.samples, sink, threads));
            QVERIFY(sink.isComplete());
            QVERIFY2(sink.tiff() == real.tiff,
                     qPrintable(QStringLiteral("%1 threads with %2")
                                    .arg(threads)
                                    .arg(QLatin1String(dcraw::instructionSetNames[set]))));
        }
    }
}

void TestDcrawIdentity::randomFrames_data()
{
    addSeeds("FILMWRIGHT_DEVELOPMENTS");
}

void TestDcrawIdentity::randomFrames()
{
    QFETCH(int, first);
    QFETCH(int, end);
    int covered = 0;
    for (int seed = first; seed < end; ++seed) {
        const RandomNegative negative(static_cast<std::uint32_t>(seed));
        ConverterFolder folder;
        folder.write(QStringLiteral("frame.dng"), negative.encoded());
        folder.write(QStringLiteral("bad.txt"), negative.badPixels());
        if (folder.runOursAlone(negative.arguments()).status != 0) {
            // Handed over; that too has to end in the same file.
            QVERIFY(folder.runOurs(negative.arguments()) == folder.runReal(negative.arguments()));
            continue;
        }
        ++covered;
        compareAll(folder, negative.arguments());
        if (QTest::currentTestFailed()) {
            qInfo("seed %d in %s, arguments %s", seed, qPrintable(folder.keep()),
                  qPrintable(negative.arguments().join(u' ')));
            return;
        }
    }
    qInfo("%d of %d developed by ours, all alike", covered, end - first);
    QVERIFY(covered >= (end - first) * 9 / 10);
}

void TestDcrawIdentity::framesOfOurTools_data()
{
    QTest::addColumn<QString>("sample");
    QTest::addColumn<QString>("more");
    for (const char *bits : {"10", "12", "14", "16"}) {
        QTest::addRow("%s bits", bits)
            << QStringLiteral("--bits %1").arg(QLatin1String(bits)) << QString();
    }
    for (const char *shape : {"camera", "folded", "plain"}) {
        QTest::addRow("lossless, %s", shape)
            << QStringLiteral("--compress lossless --predictor 6 --shape %1")
                   .arg(QLatin1String(shape))
            << QString();
    }
    QTest::newRow("lzma") << QStringLiteral("--compress lzma") << QString();
    QTest::newRow("without metadata")
        << QStringLiteral("--omit EXPO,LENS,IDNT,RTCI,WBAL") << QString();
    QTest::newRow("calibrated") << QString() << QStringLiteral("calibrated");
    QTest::newRow("dual ISO") << QStringLiteral("--dual-iso 100/800") << QStringLiteral("cr2hdr");
    QTest::newRow("dual ISO, lossless")
        << QStringLiteral("--dual-iso 100/800 --compress lossless") << QStringLiteral("cr2hdr");
}

void TestDcrawIdentity::framesOfOurTools()
{
    QFETCH(QString, sample);
    QFETCH(QString, more);
    const ConverterFolder folder;
    const auto make = [&](const QString &name, const QString &options) {
        const auto run = runBuilt(QStringLiteral("mlv_sample"),
                                  (QStringLiteral("--size 160x96 --frames 1 --no-sound ") + options)
                                          .split(u' ', Qt::SkipEmptyParts)
                                      << folder.path(name));
        QCOMPARE(run.status, 0);
    };
    make(QStringLiteral("clip.MLV"), sample);
    QStringList arguments{QStringLiteral("--dng"), QStringLiteral("-o"),
                          folder.path(QStringLiteral("f")),
                          folder.path(QStringLiteral("clip.MLV"))};
    if (more == QLatin1String("calibrated")) {
        make(QStringLiteral("dark.MLV"), QStringLiteral("--dark"));
        make(QStringLiteral("flat.MLV"), QStringLiteral("--flat"));
        arguments << QStringLiteral("-s") << folder.path(QStringLiteral("dark.MLV"))
                  << QStringLiteral("-t") << folder.path(QStringLiteral("flat.MLV"));
    }
    QCOMPARE(runBuilt(QStringLiteral("mlv_dump"), arguments).status, 0);
    QVERIFY(QFile::rename(folder.path(QStringLiteral("f000000.dng")),
                          folder.path(QStringLiteral("frame.dng"))));
    if (more == QLatin1String("cr2hdr")) {
        QCOMPARE(
            runBuilt(QStringLiteral("cr2hdr"), {folder.path(QStringLiteral("frame.dng"))}).status,
            0);
    }
    compareAll(folder, movieArguments);
}

void TestDcrawIdentity::mutilatedHeads_data()
{
    addSeeds("FILMWRIGHT_MUTILATIONS");
}

/// A head with one to three kinds of damage: bits, numbers, cut off.
void TestDcrawIdentity::mutilatedHeads()
{
    QFETCH(int, first);
    QFETCH(int, end);
    int covered = 0;
    for (int seed = first; seed < end; ++seed) {
        std::mt19937 random(static_cast<std::uint32_t>(seed));
        const auto below = [&random](qsizetype limit) {
            return static_cast<qsizetype>(random() % static_cast<std::uint64_t>(limit));
        };
        NegativeWriter writer;
        if (below(3) == 0)
            writer.setLossless(sample::LosslessShape::Camera, 1 + static_cast<int>(below(7)));
        QByteArray dng = writer.encoded();
        const qsizetype head = std::min<qsizetype>(dng.size(), 900);
        for (auto damages = 1 + below(3); damages > 0; --damages) {
            const qsizetype place = below(head - 4);
            switch (below(8)) {
            case 0:
                dng[place] = static_cast<char>(random());
                break;
            case 1: { // a number of two bytes
                constexpr std::array<std::uint16_t, 6> numbers{0, 1, 2, 12, 22, 65535};
                std::memcpy(dng.data() + place / 2 * 2,
                            &numbers[static_cast<std::size_t>(below(6))], 2);
                break;
            }
            case 2: { // a number of four bytes
                constexpr std::array<std::uint32_t, 6> numbers{0, 1, 21, 484, 65536, 0xffffffff};
                std::memcpy(dng.data() + place / 2 * 2,
                            &numbers[static_cast<std::size_t>(below(6))], 4);
                break;
            }
            case 3:
                if (below(4) == 0)
                    dng.truncate(std::max<qsizetype>(head, below(dng.size())));
                break;
            default:
                dng[place] = static_cast<char>(dng[place] ^ (1 << below(8)));
            }
        }
        ConverterFolder folder;
        folder.write(QStringLiteral("frame.dng"), dng);
        const ConverterRun real = folder.runReal(movieArguments);
        const ConverterRun ours = folder.runOurs(movieArguments);
        const bool isOurs = folder.runOursAlone(movieArguments).status == 0;
        // Some damage has the real one compute with memory that it hasn't set, or print where a
        // file's data is in memory: no two of its own runs are the same.
        const bool isAlike = ours == real || (!isOurs && ours.isLike(real));
        if (!isAlike) {
            qInfo("seed %d in %s: status %d for %d, %s for %s", seed, qPrintable(folder.keep()),
                  ours.status, real.status, ours.messages.constData(), real.messages.constData());
        }
        QVERIFY(isAlike);
        covered += isOurs ? 1 : 0;
    }
    qInfo("%d, %d of them developed by ours, all alike", end - first, covered);
}

FILMWRIGHT_TEST(TestDcrawIdentity, QCoreApplication)
#include "tst_dcraw_identity.moc"
