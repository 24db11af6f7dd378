// SPDX-License-Identifier: MIT
// A long batch, of which every fifth recording is bad in another way.

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

#include <sys/stat.h>

class TestNight : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyFifthOfFiftyIsBad();
    void cleanupTestCase() { removeUnnamed(); }

private:
    QString path(const QString &name) const { return m_folder.filePath(name); }
    QString name(int number, const char *extension) const
    {
        return path(QStringLiteral("%1.%2")
                        .arg(number, 2, 10, QLatin1Char('0'))
                        .arg(QString::fromUtf8(extension)));
    }
    void write(const QString &target, const QByteArray &content) const
    {
        QFile file(target);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    void spoil(int number);
    /// Qt can't remove what it can't name, and Qt 6.8 lists only a part of the folder beside it.
    void removeUnnamed() const
    {
        remove((QFile::encodeName(m_folder.path()) + "/35\xff.MLV").constData());
    }

    QTemporaryDir m_folder;
    QByteArray m_recording;
};

namespace {

constexpr int framesOfNight = 3;

/// Whether the recording of this number has to fail, and why.
const QMap<int, QString> reasons{
    {5, QStringLiteral("The recording does not begin with an MLV file header")},
    {10, QStringLiteral("The recording does not begin with an MLV file header")},
    {15, QStringLiteral("The recording is cut off within its file header")},
    {20, QStringLiteral("no RAWI block")},
    {25, QStringLiteral("No such file or directory")},
    {30, QStringLiteral("not a regular file")},
    {35, QStringLiteral("its name is no UTF-8 text; rename it")},
    {40, QStringLiteral("a folder has the name of its movie")},
    {45, QStringLiteral("dcraw converted only 2 of 3 frames")},
    {50, QStringLiteral("mlv_dump ended before it had extracted the frames")},
};

} // namespace

void TestNight::spoil(int number)
{
    const QString recording = name(number, "MLV");
    const QByteArray encoded = QFile::encodeName(recording);
    switch (number) {
    case 5:
        write(recording, "this is a letter\n");
        break;
    case 10:
        write(recording, {});
        break;
    case 15:
        write(recording, m_recording.left(30));
        break;
    case 20:
        write(recording, m_recording.left(52)); // the file header alone
        break;
    case 25:
        QVERIFY(QFile::remove(recording));
        QVERIFY(QFile::link(path(QStringLiteral("nowhere")), recording));
        break;
    case 30:
        QVERIFY(QFile::remove(recording));
        QCOMPARE(mkfifo(encoded.constData(), S_IRWXU), 0);
        break;
    case 35:
        QCOMPARE(rename(encoded.constData(), (encoded.chopped(4) + "\xff.MLV").constData()), 0);
        break;
    case 40:
        QVERIFY(QDir(m_folder.path()).mkpath(QStringLiteral("40.mov/taken")));
        break;
    default: // the tools' part, see below
        break;
    }
}

void TestNight::everyFifthOfFiftyIsBad()
{
    const QString first = name(1, "MLV");
    QVERIFY(writeSample(first, QStringLiteral("--size 128x72 --frames %1").arg(framesOfNight)));
    QFile file(first);
    QVERIFY(file.open(QIODevice::ReadOnly));
    m_recording = file.readAll();
    for (int number = 1; number <= 50; ++number) {
        write(name(number, "MLV"), m_recording);
        spoil(number);
    }
    ToolFolder tools;
    const QString passOn = QStringLiteral("for f; do :; done; case \"$*\" in %1 exec %2 \"$@\"");
    tools.addTool(QStringLiteral("dcraw"),
                  passOn.arg(QStringLiteral("*45.MLV/tmp000001.dng) exit 1;; esac;"),
                             realTool(QStringLiteral("dcraw"))));
    tools.addTool(QStringLiteral("mlv_dump"),
                  passOn.arg(QStringLiteral("*--dng*50.MLV*) kill -SEGV $$;; esac;"),
                             realTool(QStringLiteral("mlv_dump"))));

    CommandLine cli;
    const QString report = path(QStringLiteral("report.json"));
    QVERIFY(
        cli.run({QStringLiteral("convert"), QStringLiteral("--report"), report, m_folder.path()}));
    QCOMPARE(cli.status(), 1);
    QCOMPARE(cli.output().size(), 40);
    QCOMPARE(cli.table().size(), 51);
    QCOMPARE(cli.temporaryEntries(), QStringList());

    QFile json(report);
    QVERIFY(json.open(QIODevice::ReadOnly));
    const QJsonArray entries = QJsonDocument::fromJson(json.readAll())
                                   .object()
                                   .value(QStringLiteral("recordings"))
                                   .toArray();
    QCOMPARE(entries.size(), 50);
    for (const QJsonValue &entry : entries) {
        const QString recording =
            QFileInfo(entry[QStringLiteral("recording")].toString()).fileName();
        const int number = recording.left(2).toInt();
        const QString reason = entry[QStringLiteral("reason")].toString();
        if (reasons.contains(number)) {
            QVERIFY2(reason.contains(reasons.value(number)),
                     qPrintable(recording + QStringLiteral(": ") + reason));
        } else {
            QVERIFY2(reason.isEmpty(), qPrintable(recording + QStringLiteral(": ") + reason));
            QCOMPARE(Movie::probe(name(number, "mov")).frames(), framesOfNight);
        }
    }
    removeUnnamed();
    QCOMPARE(QDir(m_folder.path()).entryList({QStringLiteral("*.mov")}, QDir::Files).size(), 40);
}

FILMWRIGHT_TEST(TestNight, QCoreApplication)
#include "tst_night.moc"
