// SPDX-License-Identifier: MIT
// A tool that isn't there is told before any work starts.

#include "commandline.h"
#include "sample.h"
#include "support/toolfolder.h"

#include <QDir>
#include <QFile>
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
    for (const char *name : {"mlv_dump", "dcraw", "ffmpeg", "cr2hdr"}) {
        if (tool != QLatin1String(name))
            m_tools->addTool(QString::fromUtf8(name), QStringLiteral("exit 0"));
    }
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

QTEST_GUILESS_MAIN(TestMissingTools)
#include "tst_missingtools.moc"
