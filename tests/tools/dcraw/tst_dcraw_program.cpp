// SPDX-License-Identifier: MIT
// The program itself: what it hands over and to whom, and what it leaves behind.
#include "converterrun.h"
#include "negativewriter.h"
#include "toolrun.h"

#include "conversion/tiffbitmap.h"
#include "dng/tags.h"
#include "support/testprogram.h"
#include "support/toolfolder.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTest>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

namespace {

const QString converter = QStringLiteral("dcraw");

struct ToolEnd
{
    int status = -1; ///< -1: by a signal
    QString words;
};

} // namespace

class TestDcrawProgram : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void coveredCallRunsNothingElse();
    void otherCallsAreHandedOverAsTheyAre_data();
    void otherCallsAreHandedOverAsTheyAre();
    void statusAndWordsOfTheRealOneAreTheAnswer();
    void nothingIsWrittenBeforeAHandOver();
    void environmentForcesTheRealOne();
    void forcedProgramThatCannotBeRun();
    void itselfIsNeverTheRealOne_data();
    void itselfIsNeverTheRealOne();
    void copiesOfItselfEndTheSearch();
    void withoutARealOneItSaysSo_data();
    void withoutARealOneItSaysSo();
    void tellsWhatItIs();

    void newFileHasTheUsersMode();
    void oldFileKeepsModeAndLinks();
    void inputThatIsTheOutputIsHandedOver();
    void outputThatCannotBeMadeIsHandedOver_data();
    void outputThatCannotBeMadeIsHandedOver();
    void fullDiskLeavesNoFile();
    void killedRunLeavesNothingThatPassesForWhole();

private:
    ToolEnd run(const QStringList &arguments);
    void addFakeReal()
    {
        m_real->addTool(converter, QStringLiteral("echo from the real one; exit 3"));
    }
    QString dng() const { return m_folder->path(QStringLiteral("frame.dng")); }
    QString tiff() const { return m_folder->path(QStringLiteral("frame.tiff")); }
    QStringList movieCall() const { return movieArguments + QStringList{dng()}; }
    void writeLargeFrame() const;

    std::unique_ptr<ConverterFolder> m_folder;
    std::unique_ptr<ToolFolder> m_real;
    QProcessEnvironment m_environment;
    QString m_program;
    std::function<void()> m_inChild;
};

void TestDcrawProgram::init()
{
    m_folder = std::make_unique<ConverterFolder>();
    m_folder->write(QStringLiteral("frame.dng"), NegativeWriter().encoded());
    m_real = std::make_unique<ToolFolder>();
    m_program = builtProgram(converter);
    m_inChild = {};
    m_environment = QProcessEnvironment::systemEnvironment();
    // Scripts need the shell's folders, where there is no dcraw.
    m_environment.insert(QStringLiteral("PATH"), m_real->path());
    m_environment.remove(QStringLiteral("FILMWRIGHT_DCRAW"));
}

void TestDcrawProgram::cleanup()
{
    m_real.reset();
    m_folder.reset();
}

ToolEnd TestDcrawProgram::run(const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.setWorkingDirectory(m_folder->path());
    process.setProcessEnvironment(m_environment);
    if (m_inChild)
        process.setChildProcessModifier(m_inChild);
    process.start(m_program, arguments);
    if (!process.waitForFinished(60000)) {
        process.kill();
        process.waitForFinished();
        return {};
    }
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAll())};
}

void TestDcrawProgram::writeLargeFrame() const
{
    NegativeWriter dng;
    dng.setShape(1600, 1000, 14);
    for (std::size_t i = 0; i < dng.samples.size(); ++i)
        dng.samples[i] = static_cast<std::uint16_t>(2048 + i * 7919 % 12000);
    m_folder->write(QStringLiteral("frame.dng"), dng.encoded());
}

void TestDcrawProgram::coveredCallRunsNothingElse()
{
    addFakeReal();
    const ToolEnd ended = run(movieCall());
    QCOMPARE(ended.words, QString());
    QCOMPARE(ended.status, 0);
    QVERIFY(filmwright::TiffBitmap::isWhole(tiff()));
    QVERIFY(m_real->calls(converter).isEmpty());
}

void TestDcrawProgram::otherCallsAreHandedOverAsTheyAre_data()
{
    QTest::addColumn<QStringList>("arguments");
    const auto row = [](const char *name, const QStringList &arguments) {
        QTest::newRow(name) << arguments;
    };
    row("no arguments", {});
    row("identify", {QStringLiteral("-i"), QStringLiteral("-v"), QStringLiteral("frame.dng")});
    row("to standard output", {QStringLiteral("-c"), QStringLiteral("frame.dng")});
    row("two files", {QStringLiteral("-T"), QStringLiteral("-W"), QStringLiteral("frame.dng"),
                      QStringLiteral("frame.dng")});
    row("a file that isn't there", movieArguments + QStringList{QStringLiteral("none.dng")});
    row("odd characters", {QStringLiteral("-x y"), QStringLiteral("$(echo) ; 'a'"), QString()});
    row("a list that isn't there",
        {QStringLiteral("-T"), QStringLiteral("-W"), QStringLiteral("-P"), QStringLiteral("none"),
         QStringLiteral("frame.dng")});
}

void TestDcrawProgram::otherCallsAreHandedOverAsTheyAre()
{
    QFETCH(QStringList, arguments);
    addFakeReal();
    QCOMPARE(run(arguments).status, 3);
    QCOMPARE(m_real->calls(converter), QList<QStringList>{arguments});
}

void TestDcrawProgram::statusAndWordsOfTheRealOneAreTheAnswer()
{
    addFakeReal();
    const ToolEnd ended = run({QStringLiteral("-i")});
    QCOMPARE(ended.status, 3);
    QCOMPARE(ended.words, QStringLiteral("from the real one\n"));
}

void TestDcrawProgram::nothingIsWrittenBeforeAHandOver()
{
    addFakeReal();
    NegativeWriter cutOff;
    cutOff.setLossless(sample::LosslessShape::Camera, 1);
    const QByteArray whole = cutOff.encoded();
    cutOff.strip = whole.mid(whole.indexOf(QByteArray::fromHex("ffd8ffc4"))).chopped(40);
    m_folder->write(QStringLiteral("frame.dng"), cutOff.encoded());
    m_folder->write(QStringLiteral("frame.tiff"), "older");
    QCOMPARE(run(movieCall()).status, 3);
    QCOMPARE(m_real->calls(converter), QList<QStringList>{movieCall()});
    QCOMPARE(m_folder->read(QStringLiteral("frame.tiff")), QByteArray("older"));
}

void TestDcrawProgram::environmentForcesTheRealOne()
{
    const ToolFolder other;
    m_real->addTool(QStringLiteral("another"), QStringLiteral("exit 4"));
    addFakeReal();
    m_environment.insert(QStringLiteral("FILMWRIGHT_DCRAW"),
                         m_real->path() + QStringLiteral("/another"));
    QCOMPARE(run(movieCall()).status, 4);
    QCOMPARE(m_real->calls(QStringLiteral("another")), QList<QStringList>{movieCall()});
    QVERIFY(m_real->calls(converter).isEmpty());
    m_environment.insert(QStringLiteral("FILMWRIGHT_DCRAW"), QString());
    QCOMPARE(run(movieCall()).status, 0); // names nothing
}

void TestDcrawProgram::forcedProgramThatCannotBeRun()
{
    addFakeReal();
    m_environment.insert(QStringLiteral("FILMWRIGHT_DCRAW"), QStringLiteral("/nowhere/dcraw"));
    ToolEnd ended = run(movieCall());
    QCOMPARE(ended.status, 1);
    QCOMPARE(ended.words,
             QStringLiteral("dcraw: /nowhere/dcraw can't be run: No such file or directory\n"));
    m_environment.insert(QStringLiteral("FILMWRIGHT_DCRAW"), m_program);
    ended = run(movieCall());
    QCOMPARE(ended.status, 1);
    QCOMPARE(ended.words, QStringLiteral("dcraw: FILMWRIGHT_DCRAW names this very program\n"));
}

void TestDcrawProgram::itselfIsNeverTheRealOne_data()
{
    QTest::addColumn<QString>("way");
    QTest::newRow("symbolic link") << "symbolic";
    QTest::newRow("hard link") << "hard";
    QTest::newRow("folder") << "folder";
    QTest::newRow("no program") << "plain";
}

void TestDcrawProgram::itselfIsNeverTheRealOne()
{
    QFETCH(QString, way);
    addFakeReal();
    const QString first = m_folder->path(QStringLiteral("bin"));
    QVERIFY(QDir().mkdir(first));
    const QString decoy = first + QStringLiteral("/dcraw");
    if (way == QLatin1String("symbolic")) {
        QVERIFY(QFile::link(m_program, decoy));
    } else if (way == QLatin1String("hard")) {
        const QString copy = m_folder->path(QStringLiteral("ours"));
        QVERIFY(QFile::copy(m_program, copy));
        m_program = copy;
        QCOMPARE(::link(qPrintable(copy), qPrintable(decoy)), 0);
    } else if (way == QLatin1String("folder")) {
        QVERIFY(QDir().mkdir(decoy));
    } else {
        m_folder->write(QStringLiteral("bin/dcraw"), "not executable");
    }
    m_environment.insert(QStringLiteral("PATH"), first + u':' + m_real->path());
    QCOMPARE(run({QStringLiteral("-i")}).status, 3);
    QCOMPARE(m_real->calls(converter).size(), 1);
}

void TestDcrawProgram::copiesOfItselfEndTheSearch()
{
    QStringList folders;
    for (const char *name : {"one", "two"}) {
        const QString folder = m_folder->path(QString::fromLatin1(name));
        QVERIFY(QDir().mkdir(folder));
        QVERIFY(QFile::copy(m_program, folder + QStringLiteral("/dcraw")));
        folders << folder;
    }
    m_environment.insert(QStringLiteral("PATH"), folders.join(u':'));
    QCOMPARE(run({QStringLiteral("-i")}).status, 1);
    addFakeReal();
    m_environment.insert(QStringLiteral("PATH"),
                         (folders + QStringList{m_real->path()}).join(u':'));
    QCOMPARE(run({QStringLiteral("-i")}).status, 3);
    QCOMPARE(m_real->calls(converter), QList<QStringList>{{QStringLiteral("-i")}});
}

void TestDcrawProgram::withoutARealOneItSaysSo_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("reason");
    QTest::newRow("no arguments") << QStringList()
                                  << QStringLiteral("the command line names no file");
    QTest::newRow("an option") << QStringList{QStringLiteral("-i"), QStringLiteral("frame.dng")}
                               << QStringLiteral("the command line has other options");
    QTest::newRow("a file") << movieArguments + QStringList{QStringLiteral("other.dng")}
                            << QStringLiteral("other.dng names no camera");
}

void TestDcrawProgram::withoutARealOneItSaysSo()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, reason);
    NegativeWriter nameless;
    nameless.image.setText(dng::tag::make, " ");
    m_folder->write(QStringLiteral("other.dng"), nameless.encoded());
    const ToolEnd ended = run(arguments);
    QCOMPARE(ended.status, 1);
    QCOMPARE(ended.words,
             QStringLiteral("dcraw: %1; Filmwright's own dcraw develops the DNGs of its mlv_dump "
                            "and cr2hdr and found no other dcraw in PATH for the rest\n")
                 .arg(reason));
}

void TestDcrawProgram::tellsWhatItIs()
{
    const QStringList call{QStringLiteral("--filmwright")};
    const QString covers = QStringLiteral("covers=DNGs of mlv_dump and cr2hdr\n");
    QVERIFY(run(call).words.endsWith(covers + QStringLiteral("other=\n")));
    addFakeReal();
    ToolEnd ended = run(call);
    QCOMPARE(ended.status, 0);
    QVERIFY(ended.words.startsWith(QStringLiteral("program=Filmwright dcraw ")));
    QVERIFY(ended.words.endsWith(covers + QStringLiteral("other=%1/dcraw\n").arg(m_real->path())));
    m_environment.insert(QStringLiteral("FILMWRIGHT_DCRAW"), QStringLiteral("/x"));
    QVERIFY(run(call).words.endsWith(QStringLiteral("covers=\nother=/x\n")));
}

void TestDcrawProgram::newFileHasTheUsersMode()
{
    m_inChild = [] { ::umask(027); };
    QCOMPARE(run(movieCall()).status, 0);
    struct stat status = {};
    QCOMPARE(::stat(qPrintable(tiff()), &status), 0);
    QCOMPARE(status.st_mode & 07777, 0640U);
}

void TestDcrawProgram::oldFileKeepsModeAndLinks()
{
    QCOMPARE(run(movieCall()).status, 0);
    const QByteArray expected = m_folder->read(QStringLiteral("frame.tiff"));
    m_folder->write(QStringLiteral("kept"), QByteArray(100000, 'x'));
    const QString kept = m_folder->path(QStringLiteral("kept"));
    QCOMPARE(::chmod(qPrintable(kept), 0604), 0);
    for (const bool isSymbolic : {true, false}) {
        QVERIFY(QFile::remove(tiff()));
        QCOMPARE(isSymbolic ? ::symlink(qPrintable(kept), qPrintable(tiff()))
                            : ::link(qPrintable(kept), qPrintable(tiff())),
                 0);
        QCOMPARE(run(movieCall()).status, 0);
        QCOMPARE(m_folder->read(QStringLiteral("kept")), expected);
        struct stat status = {};
        QCOMPARE(::stat(qPrintable(kept), &status), 0);
        QCOMPARE(status.st_mode & 07777, 0604U);
    }
}

// The real one reads all before it writes.
void TestDcrawProgram::inputThatIsTheOutputIsHandedOver()
{
    addFakeReal();
    QVERIFY(QFile::rename(dng(), tiff()));
    const QStringList call = movieArguments + QStringList{tiff()};
    QCOMPARE(run(call).status, 3);
    QVERIFY(QFile::rename(tiff(), dng()));
    QVERIFY(QFile::link(dng(), tiff()));
    QCOMPARE(run(movieCall()).status, 3);
    QVERIFY(QFile::remove(tiff()));
    QCOMPARE(::link(qPrintable(dng()), qPrintable(tiff())), 0);
    QCOMPARE(run(movieCall()).status, 3);
    QCOMPARE(m_real->calls(converter), (QList<QStringList>{call, movieCall(), movieCall()}));
    QCOMPARE(m_folder->read(QStringLiteral("frame.dng")), NegativeWriter().encoded());
}

void TestDcrawProgram::outputThatCannotBeMadeIsHandedOver_data()
{
    QTest::addColumn<QString>("what");
    QTest::newRow("folder") << "folder";
    QTest::newRow("pipe") << "pipe";
    QTest::newRow("link to nowhere") << "link";
    QTest::newRow("link to a device") << "device";
}

void TestDcrawProgram::outputThatCannotBeMadeIsHandedOver()
{
    QFETCH(QString, what);
    addFakeReal();
    if (what == QLatin1String("folder"))
        QVERIFY(QDir().mkdir(tiff()));
    else if (what == QLatin1String("pipe"))
        QCOMPARE(::mkfifo(qPrintable(tiff()), 0600), 0);
    else if (what == QLatin1String("link"))
        QVERIFY(QFile::link(QStringLiteral("/nowhere/frame.tiff"), tiff()));
    else
        QVERIFY(QFile::link(QStringLiteral("/dev/full"), tiff()));
    QCOMPARE(run(movieCall()).status, 3);
    QCOMPARE(m_real->calls(converter), QList<QStringList>{movieCall()});
}

void TestDcrawProgram::fullDiskLeavesNoFile()
{
    writeLargeFrame();
    m_inChild = [] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{4000000, 4000000}; // of 4.8 MB
        ::setrlimit(RLIMIT_FSIZE, &limit);
    };
    const ToolEnd ended = run(movieCall());
    QCOMPARE(ended.status, 1);
    QCOMPARE(ended.words,
             QStringLiteral("dcraw: %1 can't be written: File too large\n").arg(tiff()));
    QVERIFY(!QFile::exists(tiff()));
}

void TestDcrawProgram::killedRunLeavesNothingThatPassesForWhole()
{
    writeLargeFrame();
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(run(movieCall()).status, 0);
    const qint64 wholeRun = timer.nsecsElapsed();
    const QByteArray expected = m_folder->read(QStringLiteral("frame.tiff"));
    constexpr int kills = 40;
    int cut = 0;
    for (int i = 1; i <= kills; ++i) {
        QFile::remove(tiff());
        QProcess process;
        process.setProcessEnvironment(m_environment);
        process.start(m_program, movieCall());
        QVERIFY(process.waitForStarted());
        QTest::qWait(0);
        const timespec moment{0, static_cast<long>(wholeRun * i / kills)};
        ::nanosleep(&moment, nullptr); // any moment of the run, which ends as it likes
        process.kill();
        QVERIFY(process.waitForFinished());
        if (filmwright::TiffBitmap::isWhole(tiff()))
            QVERIFY(m_folder->read(QStringLiteral("frame.tiff")) == expected);
        else
            cut += QFile::exists(tiff()) ? 1 : 0;
    }
    qInfo("%d of %d left a part", cut, kills);
}

FILMWRIGHT_TEST(TestDcrawProgram, QCoreApplication)
#include "tst_dcraw_program.moc"
