// SPDX-License-Identifier: MIT
#include "rawpicture.h"
#include "recordingbuilder.h"
#include "toolrun.h"

#include "support/testprogram.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

/// Averages, dark subtraction and flat field, with the arguments that the application uses.
class TestMlvDumpCalibration : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void averageIsExact_data();
    void averageIsExact();
    void halfIsRoundedUp();
    void averageHasTheMetadataButNeitherSoundNorFillers();
    void averageSaysHowManyFramesWentIntoIt();
    void chunksAreAveragedTogether();
    void manyThreadsAverageAndPrintWhatOneDoes();
    void frameMinusDarkKeepsTheBlackLevel();
    void recordingIsRewrittenUncompressed();
    void rewrittenRangeStartsAtZero();
    void framesAreCalibrated_data();
    void framesAreCalibrated();
    void flatFieldPrintsItsMedians();
    void referenceOfAnotherShapeIsRefused_data();
    void referenceOfAnotherShapeIsRefused();
    void averagingTakesAnotherShapeForAnError();
    void unusableReferenceIsRefused_data();
    void unusableReferenceIsRefused();
    void compressedReferenceIsAccepted();
    void failedAverageLeavesNoFileAndEndsInOrder();
    void averageNeverReplacesItsInput();

private:
    static QString recording(const char *name)
    {
        return testData(QStringLiteral("recordings/%1.MLV").arg(QLatin1String(name)));
    }
    static RawPicture expected(const QString &name)
    {
        return readPackedPgm(testData(QStringLiteral("recordings/expected/%1.pgm.gz").arg(name)));
    }
    QString out(const char *name) const { return m_folder->filePath(QLatin1String(name)); }
    QString reference(const char *name) const { return m_references.filePath(QLatin1String(name)); }
    static ProgramRun dump(const QStringList &arguments)
    {
        return runBuilt(QStringLiteral("mlv_dump"), arguments);
    }
    static ProgramRun average(const QString &input, const QString &output)
    {
        return dump({QStringLiteral("-a"), input, QStringLiteral("-o"), output});
    }
    ProgramRun frames(const QString &input, const QStringList &more = {}) const
    {
        return dump(QStringList{QStringLiteral("--dng"), input, QStringLiteral("-o"), out("tmp")} +
                    more);
    }
    RawPicture frame(const QString &input) const
    {
        frames(input);
        return readDng(out("tmp000000.dng"));
    }

    QTemporaryDir m_references; // averaged once for all tests
    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestMlvDumpCalibration::initTestCase()
{
    QCOMPARE(average(recording("dark"), reference("dark.mlv")).status, 0);
    QCOMPARE(average(recording("flat"), reference("flat.mlv")).status, 0);
    QCOMPARE(dump({QStringLiteral("-s"), reference("dark.mlv"), QStringLiteral("-o"),
                   reference("flat-flat_dark.mlv"), reference("flat.mlv")})
                 .status,
             0);
}

void TestMlvDumpCalibration::averageIsExact_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("picture");
    QTest::newRow("dark") << reference("dark.mlv") << QStringLiteral("average-dark");
    QTest::newRow("flat") << reference("flat.mlv") << QStringLiteral("average-flat");
    QTest::newRow("flat less dark")
        << reference("flat-flat_dark.mlv") << QStringLiteral("average-flat-dark");
}

void TestMlvDumpCalibration::averageIsExact()
{
    QFETCH(QString, file);
    QFETCH(QString, picture);
    QCOMPARE(frame(file).largestDifference(expected(picture)), 0);
}

void TestMlvDumpCalibration::halfIsRoundedUp()
{
    const auto path =
        RecordingBuilder().addRawInfo().addFrame(0, 3000).addFrame(1, 3001).write(out("a.MLV"));
    QCOMPARE(average(path, out("b.mlv")).status, 0);
    QCOMPARE(frame(out("b.mlv")).level(), 3001);
}

void TestMlvDumpCalibration::averageHasTheMetadataButNeitherSoundNorFillers()
{
    const mlv::Exposure exposure{0, 800, 96, 0, 20000};
    const auto path = RecordingBuilder()
                          .addRawInfo()
                          .add(mlv::blocktype::exposure, exposure)
                          .addBytes({'Q', 'Q', 'Q', 'Q'}, "kept as it is")
                          .add(mlv::blocktype::waveInfo, RecordingBuilder::waveInfo())
                          .addBytes(mlv::blocktype::filler, QByteArray(40, 'x'))
                          .addFrame(0, 3000)
                          .addSound(0, "sound")
                          .addFrame(1, 3000)
                          .write(out("a.MLV"));
    QCOMPARE(average(path, out("b.mlv")).status, 0);
    const auto frame = RecordingBuilder::frameOf(3000);
    RecordingBuilder wanted;
    wanted.header.videoFrames = 1;
    wanted.addRawInfo()
        .add(mlv::blocktype::exposure, exposure)
        .addBytes({'Q', 'Q', 'Q', 'Q'}, "kept as it is")
        .add(mlv::blocktype::videoFrame, mlv::VideoFrame{}, RecordingBuilder::frameTime, frame);
    QFile file(out("b.mlv"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll().toHex(), wanted.bytes().toHex());
    QVERIFY(!QFile::exists(out("b.mlv.wav")));
}

void TestMlvDumpCalibration::averageSaysHowManyFramesWentIntoIt()
{
    const auto run = average(recording("dark"), out("dark.mlv"));
    QCOMPARE(run.lastTwoLines(),
             (QStringList{QStringLiteral("Processed 6 video frames at 25.00 FPS (0.24 s)"),
                          QStringLiteral("Done")}));
}

void TestMlvDumpCalibration::chunksAreAveragedTogether()
{
    const auto run = average(recording("split"), out("b.mlv"));
    QVERIFY(run.lines.at(run.lines.size() - 2).startsWith(QStringLiteral("Processed 6 ")));
    RawPicture mean = expected(QStringLiteral("split/000000"));
    std::vector<unsigned> sums(mean.samples.size());
    for (int i = 0; i < 6; ++i) {
        const auto picture = expected(QStringLiteral("split/%1").arg(i, 6, 10, QLatin1Char('0')));
        for (std::size_t s = 0; s < sums.size(); ++s)
            sums[s] += picture.samples[s];
    }
    for (std::size_t s = 0; s < sums.size(); ++s)
        mean.samples[s] = static_cast<quint16>((sums[s] + 3) / 6);
    QCOMPARE(frame(out("b.mlv")).largestDifference(mean), 0);
}

void TestMlvDumpCalibration::manyThreadsAverageAndPrintWhatOneDoes()
{
    const QStringList arguments{QStringLiteral("-a"), recording("lossless14"),
                                QStringLiteral("-o")};
    const auto one = dump(
        arguments + QStringList{out("one.mlv"), QStringLiteral("--threads"), QStringLiteral("1")});
    const auto many = dump(
        arguments + QStringList{out("many.mlv"), QStringLiteral("--threads"), QStringLiteral("8")});
    QCOMPARE(many.lines, one.lines);
    QFile oneFile(out("one.mlv"));
    QFile manyFile(out("many.mlv"));
    QVERIFY(oneFile.open(QIODevice::ReadOnly) && manyFile.open(QIODevice::ReadOnly));
    QCOMPARE(manyFile.readAll(), oneFile.readAll());
}

void TestMlvDumpCalibration::frameMinusDarkKeepsTheBlackLevel()
{
    const auto dark = RecordingBuilder().addRawInfo().addFrame(0, 2100).write(out("dark.MLV"));
    const auto path =
        RecordingBuilder().addRawInfo().addFrame(0, 3000).addFrame(1, 40).addFrame(2, 16383).write(
            out("a.MLV"));
    QCOMPARE(frames(path, {QStringLiteral("-s"), dark}).status, 0);
    QCOMPARE(readDng(out("tmp000000.dng")).level(), 3000 - 2100 + 2048);
    QCOMPARE(readDng(out("tmp000001.dng")).level(), 0); // 40 - 2100 + 2048 is below 0
    QCOMPARE(readDng(out("tmp000002.dng")).level(), 16383 - 2100 + 2048);
}

void TestMlvDumpCalibration::recordingIsRewrittenUncompressed()
{
    const auto run = dump({recording("lossless14"), QStringLiteral("-o"), out("b.MLV")});
    QCOMPARE(run.status, 0);
    QVERIFY(run.lines.at(run.lines.size() - 2).startsWith(QStringLiteral("Processed 4 ")));
    QCOMPARE(frames(out("b.MLV")).status, 0);
    for (int i = 0; i < 4; ++i) {
        const auto number = QStringLiteral("%1").arg(i, 6, 10, QLatin1Char('0'));
        QCOMPARE(readDng(m_folder->filePath(QStringLiteral("tmp%1.dng").arg(number)))
                     .largestDifference(expected(QStringLiteral("plain14/") + number)),
                 0);
    }
}

void TestMlvDumpCalibration::rewrittenRangeStartsAtZero()
{
    RecordingBuilder builder;
    builder.addRawInfo();
    for (quint16 i = 0; i < 5; ++i)
        builder.addFrame(i, static_cast<quint16>(3000 + i));
    dump({builder.write(out("a.MLV")), QStringLiteral("-f"), QStringLiteral("2-3"),
          QStringLiteral("-o"), out("b.MLV")});
    const auto report = dump({QStringLiteral("-m"), QStringLiteral("-v"), out("b.MLV")}).lines;
    QCOMPARE(report.filter(QStringLiteral(" : #")),
             (QStringList{QStringLiteral("    Frame       : #0000"),
                          QStringLiteral("    Frame       : #0001")}));
    QCOMPARE(frame(out("b.MLV")).level(), 3002);
}

void TestMlvDumpCalibration::framesAreCalibrated_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("folder");
    const QStringList dark{QStringLiteral("-s"), reference("dark.mlv")};
    const QStringList flat{QStringLiteral("-t"), reference("flat.mlv")};
    const QStringList flatDark{QStringLiteral("-t"), reference("flat-flat_dark.mlv")};
    for (const char *name : {"plain14", "lossless14", "lzma14"}) {
        const auto input = recording(name);
        QTest::addRow("%s, dark", name) << input << dark << QStringLiteral("plain14-minus-dark");
        QTest::addRow("%s, flat", name) << input << flat << QStringLiteral("plain14-by-flat");
        QTest::addRow("%s, dark and flat", name)
            << input << dark + flat << QStringLiteral("plain14-minus-dark-by-flat");
        QTest::addRow("%s, dark and flat with its dark", name)
            << input << dark + flatDark << QStringLiteral("plain14-minus-dark-by-flat-dark");
    }
}

void TestMlvDumpCalibration::framesAreCalibrated()
{
    QFETCH(QString, input);
    QFETCH(QStringList, options);
    QFETCH(QString, folder);
    QCOMPARE(frames(input, options).status, 0);
    for (int i = 0; i < 4; ++i) {
        const auto number = QStringLiteral("%1").arg(i, 6, 10, QLatin1Char('0'));
        const auto picture = readDng(m_folder->filePath(QStringLiteral("tmp%1.dng").arg(number)));
        QCOMPARE(picture.largestDifference(expected(folder + QLatin1Char('/') + number)), 0);
    }
}

void TestMlvDumpCalibration::flatFieldPrintsItsMedians()
{
    const auto run = frames(recording("plain14"), {QStringLiteral("-t"), reference("flat.mlv")});
    const auto lines = run.lines.filter(QStringLiteral("Flat-field median: ["));
    QCOMPARE(lines.size(), 1);
    QVERIFY(lines[0].contains(QStringLiteral("], adjusted by ")));
}

void TestMlvDumpCalibration::referenceOfAnotherShapeIsRefused_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QString>("reference");
    QTest::addColumn<QString>("error");
    const QString size =
        QStringLiteral("is 32x24 at 14 bits, but the recording is 128x72 at 14 bits");
    const QString depth =
        QStringLiteral("is 128x72 at 12 bits, but the recording is 128x72 at 14 bits");
    QTest::newRow("dark of another size")
        << QStringLiteral("-s") << QString() << QStringLiteral("[UNUSABLE] The dark frame ") + size;
    QTest::newRow("flat of another size")
        << QStringLiteral("-t") << QString() << QStringLiteral("[UNUSABLE] The flat field ") + size;
    QTest::newRow("dark of another depth") << QStringLiteral("-s") << recording("bits12")
                                           << QStringLiteral("[UNUSABLE] The dark frame ") + depth;
    QTest::newRow("flat of another depth") << QStringLiteral("-t") << recording("bits12")
                                           << QStringLiteral("[UNUSABLE] The flat field ") + depth;
}

void TestMlvDumpCalibration::referenceOfAnotherShapeIsRefused()
{
    QFETCH(QString, option);
    QFETCH(QString, reference);
    QFETCH(QString, error);
    if (reference.isEmpty())
        reference = RecordingBuilder().addRawInfo().addFrame(0, 3000).write(out("small.MLV"));
    const auto run = frames(recording("plain14"), {option, reference});
    QCOMPARE(run.status, 1);
    QVERIFY(run.lines.contains(error));
    QVERIFY(!run.hasLineWith(QStringLiteral("Done")));
    QVERIFY(!run.hasLineWith(QStringLiteral("Processed")));
    QVERIFY(!QFile::exists(out("tmp000000.dng")));
}

void TestMlvDumpCalibration::averagingTakesAnotherShapeForAnError()
{
    const auto dark = RecordingBuilder().addRawInfo().addFrame(0, 3000).write(out("small.MLV"));
    const auto run =
        runBuilt(QStringLiteral("mlv_dump"), {QStringLiteral("-s"), dark, QStringLiteral("-o"),
                                              out("b.mlv"), recording("plain14")});
    QCOMPARE(run.status, 1);
    QVERIFY(run.hasLineWith(QStringLiteral("[ERROR] The dark frame is 32x24 at 14 bits")));
    QCOMPARE(run.lines.last(), QStringLiteral("Done"));
}

void TestMlvDumpCalibration::unusableReferenceIsRefused_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("error");
    QTest::newRow("missing") << QByteArray() << QStringLiteral("The flat field can't be opened");
    QTest::newRow("no recording") << QByteArray(100, 'x')
                                  << QStringLiteral("The flat field does not begin with an MLV");
    QTest::newRow("no frame") << RecordingBuilder().addRawInfo().bytes()
                              << QStringLiteral("The flat field holds no whole frame");
    QTest::newRow("no light") << RecordingBuilder().addRawInfo().addFrame(0, 2048).bytes()
                              << QStringLiteral("The flat field has too little light");
}

void TestMlvDumpCalibration::unusableReferenceIsRefused()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, error);
    if (!content.isEmpty()) {
        QFile file(out("flat.MLV"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    const auto path = RecordingBuilder().addRawInfo().addFrame(0, 3000).write(out("a.MLV"));
    const auto run = frames(path, {QStringLiteral("-t"), out("flat.MLV")});
    QCOMPARE(run.status, 1);
    QVERIFY(run.hasLineWith(QStringLiteral("[ERROR] ") + error));
}

void TestMlvDumpCalibration::compressedReferenceIsAccepted()
{
    QCOMPARE(frames(recording("plain14"), {QStringLiteral("-s"), recording("lossless14")}).status,
             0);
    QCOMPARE(readDng(out("tmp000000.dng")).level(), 2048); // less itself, only black is left
}

void TestMlvDumpCalibration::failedAverageLeavesNoFileAndEndsInOrder()
{
    const auto path = RecordingBuilder().addRawInfo().write(out("a.MLV"));
    const auto run = average(path, out("b.mlv"));
    QCOMPARE(run.status, 1);
    QCOMPARE(run.lines.filter(QStringLiteral("[ERROR]")).size(), 1);
    QCOMPARE(run.lastTwoLines(),
             (QStringList{QStringLiteral("Processed 0 video frames at 25.00 FPS (0.00 s)"),
                          QStringLiteral("Done")}));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), QStringList{QStringLiteral("a.MLV")});
}

void TestMlvDumpCalibration::averageNeverReplacesItsInput()
{
    const RecordingBuilder builder = RecordingBuilder().addRawInfo().addFrame(0, 3000);
    const auto path = builder.write(out("a.MLV"));
    QVERIFY(QFile::link(path, out("link.mlv")));
    for (const auto &output : {path, out("link.mlv")}) {
        QCOMPARE(average(path, output).status, 1);
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), builder.bytes());
    }
}

FILMWRIGHT_TEST(TestMlvDumpCalibration, QCoreApplication)
#include "tst_mlv_dump_calibration.moc"
