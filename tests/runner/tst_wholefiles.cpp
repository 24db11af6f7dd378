// SPDX-License-Identifier: MIT
#include "runner/wholefiles.h"
#include "support/fulldisk.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <unistd.h>

using namespace filmwright;

class TestWholeFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void contentTakesTheFilesPlace();
    void fullDiskKeepsTheOldFileAndIsTold();
    void folderThatIsMissingIsTold();
    void filesAndFoldersAreBroughtToTheDisk();
    void whatHasNoDiskBehindItIsSafe();
    void missingFileIsNotOnTheDisk();

private:
    QString path(const QString &name) const { return m_folder.filePath(name); }
    QByteArray content(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir m_folder;
};

void TestWholeFiles::contentTakesTheFilesPlace()
{
    QCOMPARE(writeFile(path(QStringLiteral("a")), "a long text"), QString());
    QCOMPARE(writeFile(path(QStringLiteral("a")), "new"), QString());
    QCOMPARE(content(QStringLiteral("a")), QByteArray("new"));
}

void TestWholeFiles::fullDiskKeepsTheOldFileAndIsTold()
{
    QCOMPARE(writeFile(path(QStringLiteral("b")), "old"), QString());
    QString error;
    {
        const FullDisk full(100);
        error = writeFile(path(QStringLiteral("b")), QByteArray(1000, 'x'));
    }
    QCOMPARE(error, QStringLiteral("File too large"));
    QCOMPARE(content(QStringLiteral("b")), QByteArray("old"));
    QCOMPARE(QDir(m_folder.path()).entryList({QStringLiteral("b*")}, QDir::Files),
             QStringList{QStringLiteral("b")});
}

void TestWholeFiles::folderThatIsMissingIsTold()
{
    QCOMPARE(writeFile(path(QStringLiteral("none/c")), "c"),
             QStringLiteral("No such file or directory"));
}

void TestWholeFiles::filesAndFoldersAreBroughtToTheDisk()
{
    QCOMPARE(writeFile(path(QStringLiteral("d")), "d"), QString());
    QVERIFY(syncFile(path(QStringLiteral("d"))));
    QVERIFY(syncFile(m_folder.path()));
    QVERIFY(syncDiskOf(m_folder.path()));
}

void TestWholeFiles::whatHasNoDiskBehindItIsSafe()
{
    std::array<int, 2> ends{};
    QCOMPARE(pipe(ends.data()), 0);
    QCOMPARE(fsync(ends[1]), -1);
    QVERIFY(syncFile(ends[1]));
    close(ends[0]);
    close(ends[1]);
}

void TestWholeFiles::missingFileIsNotOnTheDisk()
{
    QVERIFY(!syncFile(path(QStringLiteral("none"))));
    QCOMPARE(qt_error_string(), QStringLiteral("No such file or directory"));
    QVERIFY(!syncDiskOf(path(QStringLiteral("none"))));
}

FILMWRIGHT_TEST(TestWholeFiles, QCoreApplication)
#include "tst_wholefiles.moc"
