// SPDX-License-Identifier: MIT
#include "project/faketools.h"

#include "support/testprogram.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDir>
#include <QProcess>
#include <QTest>

namespace {

const QString applicationId = QStringLiteral("org.filmwright.Filmwright");

/// The program; killed, if it still runs, at the end of its life.
class Program : public QProcess
{
public:
    ~Program() override
    {
        kill();
        waitForFinished();
    }
};

} // namespace

/// The real program, started more than once.
class TestInstances : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void filesOfASecondStartArriveInTheFirst();
    void secondStartWithoutFilesEndsWell();
    void filesOfTheDesktopArrive();
    void secondStartIsToldThatTheFirstDoesNotAnswer();
    void idIsFreeAfterACrash();
    void localeWithoutUtf8IsNotMentioned();
    void withoutABusTheWindowWorks();
    void withoutABusTheSecondStartLeavesTheFirstAlone();

private:
    enum class Bus { There, Missing };

    std::unique_ptr<Program> start(const QStringList &arguments, Bus bus = Bus::There);
    static QStringList logLines(QProcess &program)
    {
        return QString::fromUtf8(program.readAllStandardError())
            .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }
    static bool isRegistered()
    {
        return QDBusConnection::sessionBus().interface()->isServiceRegistered(applicationId);
    }
    /// The recordings whose reports were asked for so far.
    QStringList readRecordings() const
    {
        QStringList recordings;
        for (const QStringList &call : m_tools->tools.calls(QStringLiteral("mlv_dump")))
            if (call.contains(QStringLiteral("-m")))
                recordings << call.constLast();
        return recordings;
    }
    QString makeRecording(const QString &name) const
    {
        QFile file(m_tools->path(name));
        [&] { QVERIFY(file.open(QIODevice::WriteOnly)); }();
        return file.fileName();
    }

    std::unique_ptr<FakeTools> m_tools;
    std::unique_ptr<QTemporaryDir> m_home;
};

void TestInstances::init()
{
    m_tools = std::make_unique<FakeTools>(2);
    m_home = std::make_unique<QTemporaryDir>();
}

void TestInstances::cleanup()
{
    QTRY_VERIFY(!isRegistered());
    m_home.reset();
    m_tools.reset();
}

/// Starts the program in the folder of the tools' files.
std::unique_ptr<Program> TestInstances::start(const QStringList &arguments, Bus bus)
{
    auto program = std::make_unique<Program>();
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *folder : {"HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME"})
        environment.insert(QString::fromLatin1(folder), m_home->path());
    environment.remove(QStringLiteral("TMPDIR"));
    if (bus == Bus::Missing)
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QStringLiteral("disabled:"));
    program->setProcessEnvironment(environment);
    program->setWorkingDirectory(m_tools->path(QString()));
    program->start(QStringLiteral(FILMWRIGHT_PROGRAM), arguments);
    return program;
}

void TestInstances::filesOfASecondStartArriveInTheFirst()
{
    const QString first = makeRecording(QStringLiteral("first.MLV"));
    const QString odd = makeRecording(QStringLiteral("Übergröße 100% #2.MLV"));
    const auto window = start({first});
    QTRY_COMPARE(readRecordings(), QStringList{first});

    const auto second = start({QStringLiteral("./Übergröße 100% #2.MLV")});
    QVERIFY(second->waitForFinished());
    QCOMPARE(second->exitCode(), 0);
    // The first asks whether to add to its queue; until that is answered it adds nothing.
    QCOMPARE(readRecordings(), QStringList{first});
    QCOMPARE(window->state(), QProcess::Running);
    window->kill();
    window->waitForFinished();
    QTRY_VERIFY(!isRegistered());

    const auto empty = start({});
    QTRY_VERIFY(isRegistered());
    const auto third = start({QStringLiteral("Übergröße 100% #2.MLV")});
    QVERIFY(third->waitForFinished());
    QTRY_COMPARE(readRecordings(), (QStringList{first, odd}));
}

void TestInstances::secondStartWithoutFilesEndsWell()
{
    const auto window = start({});
    QTRY_VERIFY(isRegistered());
    const auto second = start({});
    QVERIFY(second->waitForFinished());
    QCOMPARE(second->exitCode(), 0);
    QCOMPARE(window->state(), QProcess::Running);
}

void TestInstances::filesOfTheDesktopArrive()
{
    const QString recording = makeRecording(QStringLiteral("a clip.MLV"));
    const auto window = start({});
    QTRY_VERIFY(isRegistered());
    QDBusMessage open = QDBusMessage::createMethodCall(
        applicationId, QStringLiteral("/org/filmwright/Filmwright"),
        QStringLiteral("org.freedesktop.Application"), QStringLiteral("Open"));
    open << QStringList{QString::fromLatin1(QUrl::fromLocalFile(recording).toEncoded())}
         << QVariantMap();
    QCOMPARE(QDBusConnection::sessionBus().call(open).type(), QDBusMessage::ReplyMessage);
    QTRY_COMPARE(readRecordings(), QStringList{recording});
}

void TestInstances::secondStartIsToldThatTheFirstDoesNotAnswer()
{
    QVERIFY(QDBusConnection::sessionBus().registerService(applicationId)); // but no object
    const auto second = start({makeRecording(QStringLiteral("clip.MLV"))});
    QVERIFY(second->waitForFinished());
    QVERIFY(QDBusConnection::sessionBus().unregisterService(applicationId));
    QCOMPARE(second->exitCode(), 1);
    QVERIFY(logLines(*second).contains(
        QStringLiteral("Filmwright is already running, but doesn't answer.")));
    QCOMPARE(readRecordings(), QStringList());
}

void TestInstances::idIsFreeAfterACrash()
{
    const auto window = start({});
    QTRY_VERIFY(isRegistered());
    window->kill();
    QTRY_VERIFY(!isRegistered());
    const auto next = start({});
    QTRY_VERIFY(isRegistered());
}

void TestInstances::localeWithoutUtf8IsNotMentioned()
{
    const QString recording = makeRecording(QStringLiteral("Übergröße.MLV"));
    qputenv("LC_ALL", "C");
    const auto window = start({recording});
    qunsetenv("LC_ALL");
    QTRY_COMPARE(readRecordings(), QStringList{recording});
    QCOMPARE(logLines(*window).filter(QStringLiteral("locale")), QStringList());
}

void TestInstances::withoutABusTheWindowWorks()
{
    const QString recording = makeRecording(QStringLiteral("clip.MLV"));
    const auto window = start({recording}, Bus::Missing);
    QTRY_COMPARE(readRecordings(), QStringList{recording});
    const QStringList lines = logLines(*window);
    QCOMPARE(lines.filter(QStringLiteral("No session bus: ")).size(), 1);
}

void TestInstances::withoutABusTheSecondStartLeavesTheFirstAlone()
{
    const QString recording = makeRecording(QStringLiteral("clip.MLV"));
    const auto window = start({recording}, Bus::Missing);
    QTRY_COMPARE(readRecordings(), QStringList{recording});
    const QString frame = m_home->filePath(QStringLiteral("Filmwright/clip.MLV/tmp000000.dng"));
    QVERIFY(QDir().mkpath(QFileInfo(frame).path()));
    QVERIFY(QFile(frame).open(QIODevice::WriteOnly));

    const auto second = start({makeRecording(QStringLiteral("other.MLV"))}, Bus::Missing);
    const QString sentence = QStringLiteral("another run of Filmwright works in %1")
                                 .arg(m_home->filePath(QStringLiteral("Filmwright")));
    QStringList lines;
    QTRY_VERIFY((lines += logLines(*second)).contains(sentence));
    QVERIFY(QFile::exists(frame));
    QCOMPARE(readRecordings(), QStringList{recording});
}

FILMWRIGHT_TEST(TestInstances, QCoreApplication)
#include "tst_instances.moc"
