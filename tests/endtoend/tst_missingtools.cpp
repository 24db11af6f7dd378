// SPDX-License-Identifier: MIT
// A tool that isn't there is told before any work starts.

#include "commandline.h"
#include "sample.h"
#include "support/testprogram.h"
#include "support/toolfolder.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

class TestMissingTools : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { m_tools.reset(); }

    void missingToolOfAConversionIsNamed_data();
    void missingToolOfAConversionIsNamed();
    void toolThatIsNotNeededIsNotMissed();
    void otherCommandsNameTheirToolToo_data();
    void otherCommandsNameTheirToolToo();
    void listOfToolsTellsWhereTheyAre();
    void listOfToolsTellsWhatDevelops_data();
    void listOfToolsTellsWhatDevelops();
    void otherDcrawIsNotMissed();

private:
    /// Every tool but the one, in a folder that is the only place to look besides the program's
    /// own surroundings.
    void provideAllBut(const QString &missing)
    {
        for (const char *name : {"mlv_dump", "dcraw", "ffmpeg", "cr2hdr"}) {
            const QString tool = QString::fromUtf8(name);
            if (tool != missing)
                m_tools->linkTool(tool, realTool(tool));
        }
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<ToolFolder> m_tools;
    std::unique_ptr<CommandLine> m_cli;
    QString m_clip;
};

void TestMissingTools::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_tools = std::make_unique<ToolFolder>();
    m_cli = std::make_unique<CommandLine>();
    m_clip = m_folder->filePath(QStringLiteral("clip.MLV"));
    QVERIFY(writeSample(m_clip, QStringLiteral("--size 128x72 --frames 2 --no-sound")));
    // A copy of the program elsewhere has no tools beside it.
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("bin")));
    const QString copy = m_folder->filePath(QStringLiteral("bin/filmwright-cli"));
    QVERIFY(QFile::copy(m_cli->program, copy));
    m_cli->program = copy;
    m_cli->environment.insert(QStringLiteral("PATH"), m_folder->path());
}

void TestMissingTools::missingToolOfAConversionIsNamed_data()
{
    QTest::addColumn<QString>("tool");
    for (const char *tool : {"mlv_dump", "dcraw", "ffmpeg"})
        QTest::newRow(tool) << tool;
}

void TestMissingTools::missingToolOfAConversionIsNamed()
{
    QFETCH(QString, tool);
    provideAllBut(tool);
    QVERIFY(m_cli->run({QStringLiteral("convert"), m_clip}));
    QCOMPARE(m_cli->status(), 2);
    QCOMPARE(m_cli->output(), QStringList());
    QCOMPARE(m_cli->messages(),
             QStringList{
                 QStringLiteral("filmwright-cli: the tool %1 was not found; it was looked for in "
                                "%2, %3/libexec/filmwright, %3/resources and in the folders of "
                                "PATH")
                     .arg(tool, m_tools->path(), m_folder->path())});
    QCOMPARE(m_cli->temporaryEntries(), QStringList());
}

void TestMissingTools::toolThatIsNotNeededIsNotMissed()
{
    provideAllBut(QStringLiteral("cr2hdr"));
    QVERIFY(m_cli->run({QStringLiteral("convert"), m_clip}));
    QCOMPARE(m_cli->status(), 0);
    QCOMPARE(m_cli->output(), QStringList{m_folder->filePath(QStringLiteral("clip.mov"))});
}

void TestMissingTools::otherCommandsNameTheirToolToo_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("tool");
    QTest::newRow("info") << "info"
                          << "mlv_dump";
    QTest::newRow("encoders") << "encoders"
                              << "ffmpeg";
    QTest::newRow("tools") << "tools"
                           << "dcraw";
}

void TestMissingTools::otherCommandsNameTheirToolToo()
{
    QFETCH(QString, command);
    QFETCH(QString, tool);
    for (const char *name : {"mlv_dump", "dcraw", "ffmpeg", "cr2hdr"})
        if (tool != QLatin1String(name))
            m_tools->addTool(QString::fromUtf8(name), QStringLiteral("exit 0"));
    QStringList arguments{command};
    if (command == QLatin1String("info"))
        arguments << m_clip;
    QVERIFY(m_cli->run(arguments));
    QCOMPARE(m_cli->status(), 2);
    QVERIFY(m_cli->messages().constLast().startsWith(
        QStringLiteral("filmwright-cli: the tool %1 was not found").arg(tool)));
}

void TestMissingTools::listOfToolsTellsWhereTheyAre()
{
    for (const char *name : {"mlv_dump", "dcraw", "ffmpeg", "cr2hdr"})
        m_tools->addTool(QString::fromUtf8(name), QStringLiteral("exit 0"));
    QVERIFY(m_cli->run({QStringLiteral("tools")}));
    QCOMPARE(m_cli->status(), 0);
    QCOMPARE(
        m_cli->output(),
        (QStringList{QStringLiteral("mlv_dump   ") + m_tools->path() + QStringLiteral("/mlv_dump"),
                     QStringLiteral("dcraw      ") + m_tools->path() + QStringLiteral("/dcraw"),
                     QStringLiteral("ffmpeg     ") + m_tools->path() + QStringLiteral("/ffmpeg"),
                     QStringLiteral("cr2hdr     ") + m_tools->path() + QStringLiteral("/cr2hdr")}));
}

void TestMissingTools::listOfToolsTellsWhatDevelops_data()
{
    QTest::addColumn<QString>("other");
    QTest::addColumn<bool>("isForced");
    QTest::newRow("ours, no other") << QString() << false;
    QTest::newRow("ours and another") << QStringLiteral("dcraw") << false;
    QTest::newRow("another for everything") << QStringLiteral("anything") << true;
}

void TestMissingTools::listOfToolsTellsWhatDevelops()
{
    QFETCH(QString, other);
    QFETCH(bool, isForced);
    provideAllBut(QString());
    const QTemporaryDir others;
    const QString path = other.isEmpty() ? QString() : others.path() + u'/' + other;
    if (!other.isEmpty())
        QVERIFY(QFile::link(realTool(QStringLiteral("ffmpeg")), path)); // isn't run
    m_cli->environment.insert(QStringLiteral("PATH"), others.path());
    m_cli->environment.insert(QStringLiteral("FILMWRIGHT_DCRAW"), isForced ? path : QString());

    QVERIFY(m_cli->run({QStringLiteral("tools")}));
    QCOMPARE(m_cli->status(), 0);
    const QString line = m_cli->output().at(2);
    const QString ours = QStringLiteral(" develops DNGs of mlv_dump and cr2hdr");
    if (isForced) {
        QCOMPARE(line.trimmed(),
                 QStringLiteral("FILMWRIGHT_DCRAW has %1 develop everything").arg(path));
    } else {
        QVERIFY(line.startsWith(QStringLiteral("           Filmwright dcraw ")));
        QVERIFY(line.endsWith(
            other.isEmpty()
                ? ours +
                      QStringLiteral("; no other dcraw was found, so other DNGs aren't developed")
                : ours + QStringLiteral(", and %1 the rest").arg(path)));
    }

    QVERIFY(m_cli->run({QStringLiteral("tools"), QStringLiteral("--json")}));
    const QByteArray json = m_cli->output().join(u'\n').toUtf8();
    const QJsonObject tool = QJsonDocument::fromJson(json).array().at(1).toObject();
    QCOMPARE(tool[QStringLiteral("name")].toString(), QStringLiteral("dcraw"));
    QVERIFY(tool[QStringLiteral("program")].toString().startsWith(QStringLiteral("Filmwright")));
    QCOMPARE(tool[QStringLiteral("covers")].isNull(), isForced);
    QCOMPARE(tool[QStringLiteral("other")].toString(), path);
}

void TestMissingTools::otherDcrawIsNotMissed()
{
    provideAllBut(QString());
    QVERIFY(m_cli->run({QStringLiteral("convert"), m_clip}));
    QCOMPARE(m_cli->status(), 0);
    QCOMPARE(m_cli->output(), QStringList{m_folder->filePath(QStringLiteral("clip.mov"))});
}

FILMWRIGHT_TEST(TestMissingTools, QCoreApplication)
#include "tst_missingtools.moc"
