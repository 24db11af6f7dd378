// SPDX-License-Identifier: MIT
#include "project/recordingfiles.h"

#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace filmwright;

class TestRecordingFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void partsAreFoundInAnyCaseAndBehindAHole();
    void otherFilesAreNoParts();
    void identityFollowsEveryPart();

private:
    QString write(const char *name, const QByteArray &content = "x") const
    {
        QFile file(m_folder.filePath(QString::fromUtf8(name)));
        [&] { QVERIFY(file.open(QIODevice::WriteOnly)); }();
        file.write(content);
        return file.fileName();
    }

    QTemporaryDir m_folder;
};

void TestRecordingFiles::partsAreFoundInAnyCaseAndBehindAHole()
{
    const QString clip = write("Übergröße [1].MLV");
    const QStringList parts{write("Übergröße [1].M00"), write("Übergröße [1].m02"),
                            write("Übergröße [1].M99")};
    QCOMPARE(recordingFiles(clip), QStringList{clip} + parts);
}

void TestRecordingFiles::otherFilesAreNoParts()
{
    const QString clip = write("a.MLV");
    for (const char *name : {"a.M0", "a.M000", "a.Mxx", "a.mov", "ab.M00", "A.M00", "a-M00"})
        write(name);
    QCOMPARE(recordingFiles(clip), QStringList{clip});
}

void TestRecordingFiles::identityFollowsEveryPart()
{
    const QString clip = write("b.MLV");
    write("b.M00");
    const QByteArray before = recordingIdentity(clip);
    QCOMPARE(recordingIdentity(clip), before);
    write("b.M00", "longer");
    const QByteArray changed = recordingIdentity(clip);
    QVERIFY(changed != before);
    write("b.M05");
    QVERIFY(recordingIdentity(clip) != changed);
}

FILMWRIGHT_TEST(TestRecordingFiles, QCoreApplication)
#include "tst_recordingfiles.moc"
