// SPDX-License-Identifier: MIT
// What "info" tells of recordings, "encoders" of ffmpeg and "tools" of the tools.

#include "commandline.h"
#include "sample.h"
#include "support/testprogram.h"
#include "support/toolfolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTest>

namespace {

const QString info = QStringLiteral("info");

QJsonArray array(const CommandLine &cli)
{
    return QJsonDocument::fromJson(cli.output().join(QLatin1Char('\n')).toUtf8()).array();
}

} // namespace

class TestInformation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_clip = m_folder.filePath(QStringLiteral("clip.MLV"));
        QVERIFY(
            writeSample(m_clip, QStringLiteral("--size 128x72 --frames 6 --fps 23.976 --iso 800")));
    }

    void everyValueInJson()
    {
        CommandLine cli;
        QVERIFY(cli.run({info, asJson, m_clip}));
        QCOMPARE(cli.status(), 0);
        QCOMPARE(array(cli).size(), 1);
        const QJsonObject values = array(cli).first().toObject();
        QCOMPARE(values.keys(),
                 (QStringList{QStringLiteral("aperture"), QStringLiteral("audioFrames"),
                              QStringLiteral("camera"), QStringLiteral("cameraSerial"),
                              QStringLiteral("date"), QStringLiteral("focal"),
                              QStringLiteral("fps"), QStringLiteral("iso"), QStringLiteral("lens"),
                              QStringLiteral("path"), QStringLiteral("resolution"),
                              QStringLiteral("shutter"), QStringLiteral("time"),
                              QStringLiteral("videoFrames"), QStringLiteral("warnings")}));
        QCOMPARE(values.value(QStringLiteral("path")).toString(), m_clip);
        QCOMPARE(values.value(QStringLiteral("fps")).toDouble(), 23.976);
        QCOMPARE(values.value(QStringLiteral("videoFrames")).toInt(), 6);
        QVERIFY(values.value(QStringLiteral("audioFrames")).toInt() > 0);
        QCOMPARE(values.value(QStringLiteral("iso")).toInt(), 800);
        QVERIFY(values.value(QStringLiteral("shutter")).toDouble() > 0.01 &&
                values.value(QStringLiteral("shutter")).toDouble() < 0.05);
        QCOMPARE(values.value(QStringLiteral("aperture")).toDouble(), 2.8);
        QCOMPARE(values.value(QStringLiteral("resolution")).toString(), QStringLiteral("128x72"));
        QCOMPARE(values.value(QStringLiteral("camera")).toString(),
                 QStringLiteral("Filmwright Sample"));
        QVERIFY(!values.value(QStringLiteral("time")).toString().isEmpty());
    }

    void relativePathMayBeginWithADash()
    {
        QVERIFY(QFile::copy(m_clip, m_folder.filePath(QStringLiteral("-d.MLV"))));
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_folder.path()));
        CommandLine cli;
        const bool ran = cli.run({info, asJson, QStringLiteral("--"), QStringLiteral("-d.MLV")});
        QVERIFY(QDir::setCurrent(before));
        QVERIFY(ran);
        QCOMPARE(cli.status(), 0);
        QCOMPARE(array(cli).size(), 1);
        QCOMPARE(array(cli).first().toObject().value(QStringLiteral("videoFrames")).toInt(), 6);
    }

    void unreadableFileDoesNotHoldUpTheOthers()
    {
        CommandLine cli;
        QVERIFY(cli.run({info, asJson, QStringLiteral("/no/such.MLV"), m_clip}));
        QCOMPARE(cli.status(), 2);
        QCOMPARE(array(cli).size(), 1);
        QCOMPARE(cli.messages(),
                 QStringList{QStringLiteral("filmwright-cli: /no/such.MLV can't be read")});
    }

    void fileThatIsNoRecordingIsAFailure()
    {
        QFile letter(m_folder.filePath(QStringLiteral("letter.MLV")));
        QVERIFY(letter.open(QIODevice::WriteOnly));
        letter.write("this is a letter, not a recording, though its name says so\n");
        letter.close();
        CommandLine cli;
        QVERIFY(cli.run({info, asJson, letter.fileName()}));
        QCOMPARE(cli.status(), 1);
        QCOMPARE(array(cli).size(), 0);
        QVERIFY(cli.messages().join(QLatin1Char(' ')).contains(letter.fileName()));
    }

    void textForPeople()
    {
        CommandLine cli;
        QVERIFY(cli.run({info, m_clip}));
        QCOMPARE(cli.output().value(0), m_clip);
        QCOMPARE(cli.output().value(1), QStringLiteral("  Resolution   128x72"));
        QVERIFY(cli.output().value(2).startsWith(
            QStringLiteral("  Frames       6 at 23.976 frames/s (0:00)")));
    }

    void warningsAreTold()
    {
        const QString recording = m_folder.filePath(QStringLiteral("early.MLV"));
        QVERIFY(writeSample(recording, QStringLiteral("--size 128x72 --frames 3 --no-sound "
                                                      "--recorded-black 0")));
        QVERIFY(QFile(recording).resize(QFileInfo(recording).size() - 5));
        CommandLine cli;
        QVERIFY(cli.run({info, asJson, recording, m_clip}));
        QCOMPARE(cli.status(), 0);
        const QJsonArray warnings = array(cli)[0][QStringLiteral("warnings")].toArray();
        QCOMPARE(warnings.size(), 2);
        QVERIFY(warnings[0].toString().contains(QLatin1String(" is cut off: ")));
        QCOMPARE(warnings[1].toString(),
                 QStringLiteral("the recorded black level is 0; the samples begin at 2048, which "
                                "is taken for it"));
        QCOMPARE(array(cli)[1][QStringLiteral("warnings")], QJsonValue(QJsonArray()));
        QVERIFY(cli.run({info, recording}));
        QVERIFY(cli.output().contains(QStringLiteral("  Warning      ") + warnings[1].toString()));
    }

    void nothingNamed()
    {
        CommandLine cli;
        QVERIFY(cli.run({info}));
        QCOMPARE(cli.status(), 2);
    }

    void encodersByKind()
    {
        CommandLine cli;
        QVERIFY(cli.run({QStringLiteral("encoders")}));
        QCOMPARE(cli.status(), 0);
        QCOMPARE(cli.output().value(0), QStringLiteral("audio_encoders"));
        const qsizetype video = cli.output().indexOf(QStringLiteral("video_encoders"));
        const qsizetype mpeg4 = cli.output().indexOf(
            QRegularExpression(QStringLiteral("  mpeg4                MPEG-4 part 2.*")));
        QVERIFY(video > 0);
        QVERIFY(mpeg4 > video);
    }

    void encodersInJson()
    {
        CommandLine cli;
        QVERIFY(cli.run({QStringLiteral("encoders"), asJson}));
        QCOMPARE(cli.status(), 0);
        const QByteArray output = cli.output().join(QLatin1Char('\n')).toUtf8();
        const QJsonObject kinds = QJsonDocument::fromJson(output).object();
        const QJsonArray video = kinds.value(QStringLiteral("video_encoders")).toArray();
        const QJsonObject mpeg4{{QStringLiteral("NAME"), QStringLiteral("mpeg4")},
                                {QStringLiteral("TITLE"), QStringLiteral("MPEG-4 part 2")}};
        QVERIFY(video.contains(mpeg4));
    }

    void tableThatIsNotUnderstoodIsToldInOneLine()
    {
        ToolFolder tools;
        tools.addTool(QStringLiteral("ffmpeg"),
                      QStringLiteral("case $1 in -pix_fmts) seq -f 'IO... f%g 3 12 8-8-8' 168;; *) "
                                     "printf ' ------\\n V..... raw  Raw video\\n';; esac"));
        CommandLine cli;
        QVERIFY(cli.run({QStringLiteral("encoders")}));
        QCOMPARE(cli.status(), 0);
        QCOMPARE(cli.messages(),
                 (QStringList{QStringLiteral("filmwright-cli: audio_encoders: ffmpeg lists none"),
                              QStringLiteral("filmwright-cli: pix_fmts: 168 of the 168 lines that "
                                             "ffmpeg lists are of a form that isn't understood")}));
    }

    void toolsInJson()
    {
        CommandLine cli;
        QVERIFY(cli.run({QStringLiteral("tools"), asJson}));
        QCOMPARE(cli.status(), 0);
        QStringList names;
        for (const QJsonValue &tool : array(cli)) {
            names << tool[QStringLiteral("name")].toString();
            QCOMPARE(QFileInfo(tool[QStringLiteral("path")].toString()).fileName(), names.last());
        }
        QCOMPARE(names, (QStringList{QStringLiteral("mlv_dump"), QStringLiteral("dcraw"),
                                     QStringLiteral("ffmpeg"), QStringLiteral("cr2hdr")}));
    }

    void helpOfEveryCommand_data()
    {
        QTest::addColumn<QString>("command");
        for (const char *command : {"convert", "info", "verify", "encoders", "tools"})
            QTest::newRow(command) << command;
    }

    void helpOfEveryCommand()
    {
        QFETCH(QString, command);
        CommandLine cli;
        QVERIFY(cli.run({command, QStringLiteral("--help")}));
        QCOMPARE(cli.status(), 0);
        QVERIFY(
            cli.output().value(0).startsWith(QStringLiteral("Usage: filmwright-cli ") + command));
        QVERIFY(cli.run({command, QStringLiteral("--no-such-option")}));
        QCOMPARE(cli.status(), 2);
    }

    void unknownCommand()
    {
        CommandLine cli;
        QVERIFY(cli.run({QStringLiteral("explode")}));
        QCOMPARE(cli.status(), 2);
        QCOMPARE(cli.output(), QStringList());
    }

private:
    QTemporaryDir m_folder;
    QString m_clip;
};

FILMWRIGHT_TEST(TestInformation, QCoreApplication)
#include "tst_information.moc"
