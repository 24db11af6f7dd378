// SPDX-License-Identifier: MIT
// Reading of raw DNG files: whole ones, foreign ones, broken ones.
#include "sampleprogram.h"

#include "dng/filehead.h"
#include "dng/rawfile.h"
#include "dng/tags.h"
#include "mlv_sample/frames.h"
#include "raw/error.h"
#include "support/testprogram.h"

#include <QFile>
#include <QRandomGenerator>
#include <QTest>

namespace {

namespace tag = dng::tag;

constexpr std::uint16_t side = 16;

/// The tags of a sound frame of 16 × 16 samples of 16 bits.
dng::Ifd soundTags()
{
    dng::Ifd ifd;
    ifd.setShorts(tag::imageWidth, {side});
    ifd.setShorts(tag::imageLength, {side});
    ifd.setShorts(tag::bitsPerSample, {16});
    ifd.setShorts(tag::compression, {1});
    ifd.setShorts(tag::photometricInterpretation, {32803});
    ifd.setShorts(tag::cfaRepeatPatternDim, {2, 2});
    ifd.setBytes(tag::cfaPattern, {0, 1, 1, 2});
    ifd.setShorts(tag::blackLevel, {1000});
    ifd.setLongs(tag::whiteLevel, {60000});
    return ifd;
}

QByteArray fileOf(const dng::Ifd &ifd)
{
    const std::vector<quint16> samples(side * side, 4711);
    const auto head = dng::encodeFileHead(ifd, {}, static_cast<std::uint32_t>(samples.size() * 2));
    QByteArray file(reinterpret_cast<const char *>(head.data()),
                    static_cast<qsizetype>(head.size()));
    file.append(reinterpret_cast<const char *>(samples.data()),
                static_cast<qsizetype>(samples.size() * 2));
    return file;
}

using Change = std::function<void(dng::Ifd &)>;

} // namespace
Q_DECLARE_METATYPE(Change)

class TestRawFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void samplesAreThoseOfTheRecording_data()
    {
        QTest::addColumn<int>("bits");
        QTest::addColumn<bool>("lossless");
        for (const int bits : {10, 12, 14, 16}) {
            QTest::addRow("%d bits", bits) << bits << false;
            QTest::addRow("%d bits, lossless", bits) << bits << true;
        }
    }

    void samplesAreThoseOfTheRecording()
    {
        QFETCH(int, bits);
        QFETCH(bool, lossless);
        QStringList options{QStringLiteral("--bits"), QString::number(bits)};
        if (lossless)
            options << QStringLiteral("--compress") << QStringLiteral("lossless");
        const QString prefix = m_folder.filePath(QStringLiteral("tmp"));
        QCOMPARE(runProgram(builtProgram(QStringLiteral("mlv_dump")),
                            {QStringLiteral("--dng"), QStringLiteral("-o"), prefix,
                             writeSample(m_folder, options)})
                     .status,
                 0);

        sample::Settings settings;
        settings.width = 64;
        settings.height = 48;
        settings.frames = 3;
        settings.bits = bits;
        sample::FrameMaker maker(settings);
        const dng::RawFile file((prefix + QStringLiteral("000001.dng")).toStdString());
        QCOMPARE(file.format().bitsPerSample, bits);
        QCOMPARE(file.format().width, 64);
        QCOMPARE(file.format().height, 48);
        QVERIFY(file.samples() == maker.make(1));
    }

    void aSoundFileIsRead()
    {
        const dng::RawFile file(write(fileOf(soundTags())));
        QCOMPARE(file.format().blackLevel, 1000U);
        QCOMPARE(file.format().whiteLevel, 60000U);
        QVERIFY(file.samples() == std::vector<quint16>(side * side, 4711));
    }

    void levelsMayBeWholeRatios()
    {
        dng::Ifd ifd = soundTags();
        const std::array<dng::Rational, 4> levels{{{2048, 2}, {1024, 1}, {1024, 1}, {3072, 3}}};
        ifd.setRationals(tag::blackLevel, levels);
        QCOMPARE(dng::RawFile(write(fileOf(ifd))).format().blackLevel, 1024U);
    }

    void foreignFilesAreRefusedInPlainWords_data()
    {
        QTest::addColumn<Change>("change");
        QTest::addColumn<QByteArray>("reason");
        const auto row = [](const char *name, const Change &change, const char *reason) {
            QTest::newRow(name) << change << QByteArray(reason);
        };
        row(
            "colour picture",
            [](dng::Ifd &ifd) { ifd.setShorts(tag::photometricInterpretation, {2}); },
            "holds no plain raw frame");
        row(
            "curve",
            [](dng::Ifd &ifd) {
                ifd.setShorts(tag::linearizationTable, {0, 1});
            },
            "holds no plain raw frame");
        row(
            "compression", [](dng::Ifd &ifd) { ifd.setShorts(tag::compression, {8}); },
            "is compressed in an unknown way");
        row(
            "depth", [](dng::Ifd &ifd) { ifd.setShorts(tag::bitsPerSample, {8}); },
            "has 8 bits a sample");
        row(
            "other pattern",
            [](dng::Ifd &ifd) {
                ifd.setBytes(tag::cfaPattern, {0, 1, 1, 3});
            },
            "has no colour filter pattern of 2 x 2");
        row(
            "levels", [](dng::Ifd &ifd) { ifd.setLongs(tag::whiteLevel, {1000}); },
            "has black and white levels that make no sense");
        row(
            "different black levels",
            [](dng::Ifd &ifd) {
                ifd.setShorts(tag::blackLevel, {1000, 1001, 1000, 1000});
            },
            "has no usable black level");
        row(
            "level that is no whole number",
            [](dng::Ifd &ifd) {
                const dng::Rational level{2049, 2};
                ifd.setRationals(tag::blackLevel, {&level, 1});
            },
            "has no usable black level");
        row(
            "no width", [](dng::Ifd &ifd) { ifd.setUndefined(tag::imageWidth, "x"); },
            "has no usable frame size");
        row(
            "odd width", [](dng::Ifd &ifd) { ifd.setShorts(tag::imageWidth, {17}); },
            "has a frame size that can't be a raw frame's");
        row(
            "forged size",
            [](dng::Ifd &ifd) {
                ifd.setLongs(tag::imageWidth, {65534});
                ifd.setLongs(tag::imageLength, {65534});
            },
            "has fewer samples than its size asks for");
        row(
            "forged lossless size",
            [](dng::Ifd &ifd) {
                ifd.setShorts(tag::compression, {7});
                ifd.setLongs(tag::imageWidth, {65534});
                ifd.setLongs(tag::imageLength, {65534});
            },
            "has fewer samples than its size asks for");
    }

    void foreignFilesAreRefusedInPlainWords()
    {
        QFETCH(Change, change);
        QFETCH(QByteArray, reason);
        dng::Ifd ifd = soundTags();
        change(ifd);
        const auto path = write(fileOf(ifd));
        try {
            const dng::RawFile file(path);
            QFAIL("the file was read");
        } catch (const raw::Error &error) {
            QCOMPARE(QByteArray(error.what()), reason);
        }
    }

    void brokenFilesEndInAnErrorOrInSamples()
    {
        const QByteArray sound = fileOf(soundTags());
        QRandomGenerator random(1);
        int refused = 0;
        for (int round = 0; round < 1000; ++round) {
            QByteArray broken = sound;
            if (round % 4 == 0)
                broken.truncate(random.bounded(static_cast<int>(sound.size())));
            const int size = static_cast<int>(broken.size());
            for (int i = 0; i < 4 && size > 0; ++i) {
                // Most of the damage goes to the head, where it matters.
                broken[random.bounded(i < 3 ? std::min(size, 200) : size)] =
                    static_cast<char>(random.bounded(256));
            }
            try {
                const auto samples = dng::RawFile(write(broken)).samples();
                QVERIFY(samples.size() <= static_cast<std::size_t>(broken.size()) * 8);
            } catch (const raw::Error &) {
                ++refused;
            }
        }
        QVERIFY(refused > 100);
        QVERIFY(refused < 1000);
    }

private:
    std::filesystem::path write(const QByteArray &content)
    {
        QFile file(m_folder.filePath(QStringLiteral("file.dng")));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            QTest::qFail(qPrintable(file.errorString()), __FILE__, __LINE__);
        return file.fileName().toStdString();
    }

    QTemporaryDir m_folder;
};

FILMWRIGHT_TEST(TestRawFile, QCoreApplication)
#include "tst_rawfile.moc"
