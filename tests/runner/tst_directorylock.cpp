// SPDX-License-Identifier: MIT
#include "runner/directorylock.h"

#include "support/testprogram.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

using namespace filmwright;

class TestDirectoryLock : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void oneRunADirectory();
    void lockIsGivenBackWithItsHolder();
    void anotherDirectoryGivesUpTheFirst();
    void folderOfTheDirectoryIsMade();
    void folderThatCannotBeWrittenIsTold();
    void lockOfADeadProcessIsTaken();
    void abandonedDirectoriesAreRemoved();

private:
    QString path(const QString &name) const { return m_folder.filePath(name); }
    static void leaveLockBehind(const QString &directory)
    {
        QFile lock(directory + QStringLiteral(".lock"));
        QVERIFY(lock.open(QIODevice::WriteOnly));
        lock.write("4194305\nfilmwright\n" + QSysInfo::machineHostName().toUtf8() + "\n\n\n");
    }

    QTemporaryDir m_folder;
};

void TestDirectoryLock::oneRunADirectory()
{
    DirectoryLock first;
    QCOMPARE(first.take(path(QStringLiteral("work"))), QString());
    QVERIFY(first.isHeld());
    DirectoryLock second;
    QCOMPARE(second.take(path(QStringLiteral("work"))),
             QStringLiteral("another run of Filmwright works in ") + path(QStringLiteral("work")));
    QVERIFY(!second.isHeld());
}

void TestDirectoryLock::lockIsGivenBackWithItsHolder()
{
    {
        DirectoryLock first;
        QCOMPARE(first.take(path(QStringLiteral("brief"))), QString());
        QVERIFY(QFile::exists(path(QStringLiteral("brief.lock"))));
    }
    QVERIFY(!QFile::exists(path(QStringLiteral("brief.lock"))));
}

void TestDirectoryLock::anotherDirectoryGivesUpTheFirst()
{
    DirectoryLock lock;
    QCOMPARE(lock.take(path(QStringLiteral("old"))), QString());
    QCOMPARE(lock.take(path(QStringLiteral("new"))), QString());
    QVERIFY(!QFile::exists(path(QStringLiteral("old.lock"))));
    QVERIFY(QFile::exists(path(QStringLiteral("new.lock"))));
}

void TestDirectoryLock::folderOfTheDirectoryIsMade()
{
    const QString folder = path(QStringLiteral("new folder"));
    DirectoryLock lock;
    QCOMPARE(lock.take(folder + QStringLiteral("/work")), QString());
    QCOMPARE(QFileInfo(folder).permissions() & (QFile::ReadGroup | QFile::ReadOther),
             QFile::Permissions());
    QVERIFY(!QFile::exists(folder + QStringLiteral("/work")));
}

void TestDirectoryLock::folderThatCannotBeWrittenIsTold()
{
    QFile file(path(QStringLiteral("file")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    DirectoryLock lock;
    QCOMPARE(lock.take(file.fileName() + QStringLiteral("/work")),
             QStringLiteral("the lock file %1/work.lock can't be written").arg(file.fileName()));
}

void TestDirectoryLock::lockOfADeadProcessIsTaken()
{
    leaveLockBehind(path(QStringLiteral("dead")));
    DirectoryLock lock;
    QCOMPARE(lock.take(path(QStringLiteral("dead"))), QString());
}

void TestDirectoryLock::abandonedDirectoriesAreRemoved()
{
    const QDir folder(m_folder.path());
    for (const char *name : {"run-dead", "run-kept", "run-busy", "other-dead"})
        QVERIFY(folder.mkdir(QString::fromUtf8(name)));
    leaveLockBehind(path(QStringLiteral("run-dead")));
    leaveLockBehind(path(QStringLiteral("other-dead")));
    DirectoryLock busy;
    QCOMPARE(busy.take(path(QStringLiteral("run-busy"))), QString());

    removeAbandonedDirectories(m_folder.path(), QStringLiteral("run-"));

    QCOMPARE(folder.entryList({QStringLiteral("run-*"), QStringLiteral("other-*")}, QDir::Dirs),
             (QStringList{QStringLiteral("other-dead"), QStringLiteral("run-busy"),
                          QStringLiteral("run-kept")}));
    QVERIFY(!QFile::exists(path(QStringLiteral("run-dead.lock"))));
}

FILMWRIGHT_TEST(TestDirectoryLock, QCoreApplication)
#include "tst_directorylock.moc"
