// SPDX-License-Identifier: MIT
// A folder for everyone, in which another user has taken the name of our temporary directory first.

#include "commandline.h"
#include "sample.h"

#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTest>

#include <sys/stat.h>

namespace {

const QString sharedName = QStringLiteral("shared");
const QString directoryName = QStringLiteral("shared/FilmwrightTmp");

} // namespace

class TestTwoUsers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void plantedLinkIsNotFollowed_data();
    void plantedLinkIsNotFollowed();
    void plantedDirectoryIsNotUsed();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    bool asOtherUser(const QStringList &command) const
    {
        return QProcess::execute(QStringLiteral("setpriv"),
                                 QStringList{QStringLiteral("--reuid=65534"),
                                             QStringLiteral("--regid=65534"),
                                             QStringLiteral("--clear-groups")} +
                                     command) == 0;
    }
    void checkRefusal(const QString &reason);

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_clip;
    QString m_frame;
    QString m_average;
};

void TestTwoUsers::init()
{
    if (!asOtherUser({QStringLiteral("true")}))
        QSKIP("no command can be run as another user here");
    m_folder = std::make_unique<QTemporaryDir>();
    m_clip = path(QStringLiteral("clip.MLV"));
    QVERIFY(writeSample(m_clip, QStringLiteral("--size 128x72 --frames 2")));
    // What a run would overwrite or remove if it were led there.
    m_frame = path(QStringLiteral("precious/clip.MLV/tmp000000.dng"));
    m_average = path(QStringLiteral("precious/dark.mlv"));
    QVERIFY(QDir(m_folder->path()).mkpath(QStringLiteral("precious/clip.MLV")));
    for (const QString &name : {m_frame, m_average})
        QVERIFY(QFile(name).open(QIODevice::WriteOnly));
    QVERIFY(QDir(m_folder->path()).mkdir(sharedName));
    for (const QString &folder : {m_folder->path(), path(sharedName)}) {
        QCOMPARE(
            chmod(QFile::encodeName(folder).constData(), S_ISVTX | S_IRWXU | S_IRWXG | S_IRWXO), 0);
    }
}

void TestTwoUsers::checkRefusal(const QString &reason)
{
    CommandLine cli;
    QVERIFY(cli.run({QStringLiteral("convert"), QStringLiteral("--temp-dir"), path(sharedName),
                     QStringLiteral("--dark"), m_clip, m_clip}));
    QCOMPARE(cli.status(), 2);
    QCOMPARE(cli.messages(),
             QStringList{QStringLiteral("filmwright-cli: the temporary directory %1 %2")
                             .arg(path(directoryName), reason)});
    QVERIFY(!QFile::exists(path(QStringLiteral("clip.mov"))));
    QCOMPARE(QFileInfo(m_frame).size(), 0);
    QVERIFY(QFile::exists(m_frame));
    QVERIFY(QFile::exists(m_average));
    QCOMPARE(QDir(path(QStringLiteral("precious")))
                 .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             (QStringList{QStringLiteral("clip.MLV"), QStringLiteral("dark.mlv")}));
}

void TestTwoUsers::plantedLinkIsNotFollowed_data()
{
    QTest::addColumn<QString>("target");
    QTest::newRow("to a folder of ours") << QStringLiteral("precious");
    QTest::newRow("to nowhere") << QStringLiteral("precious/nowhere");
}

void TestTwoUsers::plantedLinkIsNotFollowed()
{
    QFETCH(QString, target);
    QVERIFY(asOtherUser(
        {QStringLiteral("ln"), QStringLiteral("-s"), path(target), path(directoryName)}));
    checkRefusal(QStringLiteral("is a link or a file"));
}

void TestTwoUsers::plantedDirectoryIsNotUsed()
{
    QVERIFY(asOtherUser({QStringLiteral("mkdir"), QStringLiteral("-m"), QStringLiteral("777"),
                         path(directoryName)}));
    QVERIFY(asOtherUser({QStringLiteral("ln"), QStringLiteral("-s"),
                         path(QStringLiteral("precious/clip.MLV")), path(directoryName)}));
    checkRefusal(QStringLiteral("belongs to another user"));
}

FILMWRIGHT_TEST(TestTwoUsers, QCoreApplication)
#include "tst_twousers.moc"
