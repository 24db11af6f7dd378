// SPDX-License-Identifier: MIT
#include "project/worknote.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace filmwright;

class TestWorkNote : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void workOfTheSameRecordingIsKept();
    void workOfAnotherRecordingOfThatNameIsRemoved();
    void workOfAChangedRecordingIsRemoved();
    void workWithOtherCalibrationIsRemoved();
    void workWithOtherBlendingIsRemoved();
    void workThatMayBeHalfBlendedIsRemoved();
    void blendedWorkIsKept();
    void workWithoutANoteIsRemoved();
    void forgottenNoteIsGone();

private:
    QString write(const QString &name, const QByteArray &content) const
    {
        const QString path = m_folder->filePath(name);
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        if (file.open(QIODevice::WriteOnly))
            file.write(content);
        return path;
    }
    void claim(const QString &recording, const QStringList &calibration = {QString()}) const
    {
        claimUnfinishedWork({recording, calibration, false}, m_work);
    }
    void putWork() const { write(QStringLiteral("tmp/clip.MLV/tmp000000.dng"), "frame"); }
    bool hasWork() const { return QFile::exists(m_work + QStringLiteral("tmp000000.dng")); }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_work;
    QString m_clip;
};

void TestWorkNote::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_work = m_folder->filePath(QStringLiteral("tmp/clip.MLV/"));
    m_clip = write(QStringLiteral("one/clip.MLV"), "recording");
    claim(m_clip);
    putWork();
}

void TestWorkNote::workOfTheSameRecordingIsKept()
{
    claim(m_clip);
    QVERIFY(hasWork());
}

void TestWorkNote::workOfAnotherRecordingOfThatNameIsRemoved()
{
    claim(write(QStringLiteral("two/clip.MLV"), "recording"));
    QVERIFY(!hasWork());
}

void TestWorkNote::workOfAChangedRecordingIsRemoved()
{
    write(QStringLiteral("one/clip.MLV"), "longer recording");
    claim(m_clip);
    QVERIFY(!hasWork());
}

void TestWorkNote::workWithOtherCalibrationIsRemoved()
{
    claim(m_clip, {write(QStringLiteral("dark.MLV"), "dark")});
    QVERIFY(!hasWork());
    putWork();
    claim(m_clip, {m_folder->filePath(QStringLiteral("dark.MLV"))});
    QVERIFY(hasWork());
}

void TestWorkNote::workWithOtherBlendingIsRemoved()
{
    claimUnfinishedWork({m_clip, {QString()}, true}, m_work);
    QVERIFY(!hasWork());
}

void TestWorkNote::workThatMayBeHalfBlendedIsRemoved()
{
    const WorkOrigin blended{m_clip, {QString()}, true};
    claimUnfinishedWork(blended, m_work);
    putWork();
    claimUnfinishedWork(blended, m_work);
    QVERIFY(!hasWork());
}

void TestWorkNote::blendedWorkIsKept()
{
    const WorkOrigin blended{m_clip, {QString()}, true};
    claimUnfinishedWork(blended, m_work);
    putWork();
    write(QStringLiteral("tmp/clip.MLV/tmp000000.tiff"), "converted");
    claimUnfinishedWork(blended, m_work);
    QVERIFY(hasWork());
}

void TestWorkNote::workWithoutANoteIsRemoved()
{
    QVERIFY(QFile::remove(m_folder->filePath(QStringLiteral("tmp/clip.MLV.origin"))));
    claim(m_clip);
    QVERIFY(!hasWork());
}

void TestWorkNote::forgottenNoteIsGone()
{
    forgetUnfinishedWork(m_work);
    QCOMPARE(QDir(m_folder->filePath(QStringLiteral("tmp"))).entryList(QDir::Files), QStringList());
}

QTEST_GUILESS_MAIN(TestWorkNote)
#include "tst_worknote.moc"
