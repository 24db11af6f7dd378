// SPDX-License-Identifier: MIT
#include "project/conversionsettings.h"
#include "project/worknote.h"

#include "support/testprogram.h"

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
    void workOfAChangedChunkIsRemoved();
    void workWithAChangedChunkOfTheDarkIsRemoved();
    void workWithOtherCalibrationIsRemoved();
    void workWithOtherBlendingIsRemoved();
    void workWithOtherCorrectionsIsRemoved();
    void workOfAnotherDevelopmentIsRemoved_data();
    void workOfAnotherDevelopmentIsRemoved();
    void workWithAChangedMapIsRemoved();
    void framesDevelopedInAnotherWayAreRemoved();
    void framesOfTwoRecipesThatDevelopAlikeAreKept();
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
    void claim(const QString &recording, const QString &dark = {}) const
    {
        ConversionSettings settings;
        settings.calibration.dark = dark;
        claimUnfinishedWork(recording, settings, m_work);
    }
    void claimBlended() const
    {
        ConversionSettings settings;
        settings.blendsAlternatingRows = true;
        claimUnfinishedWork(m_clip, settings, m_work);
    }
    void claimWith(const QString &id, const QStringList &develop) const
    {
        ConversionSettings settings;
        settings.recipe.emplace();
        settings.recipe->id = id;
        settings.recipe->develop = develop;
        claimUnfinishedWork(m_clip, settings, m_work);
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

void TestWorkNote::workOfAChangedChunkIsRemoved()
{
    for (const QString &chunk : {QStringLiteral("one/clip.M00"), QStringLiteral("one/clip.m41")}) {
        write(chunk, "chunk");
        claim(m_clip);
        putWork();
        claim(m_clip);
        QVERIFY(hasWork());
        write(chunk, "another chunk");
        claim(m_clip);
        QVERIFY(!hasWork());
    }
}

void TestWorkNote::workWithAChangedChunkOfTheDarkIsRemoved()
{
    const QString dark = write(QStringLiteral("dark.MLV"), "dark");
    write(QStringLiteral("dark.M00"), "chunk");
    claim(m_clip, dark);
    putWork();
    write(QStringLiteral("dark.M00"), "another chunk");
    claim(m_clip, dark);
    QVERIFY(!hasWork());
}

void TestWorkNote::workWithOtherCalibrationIsRemoved()
{
    claim(m_clip, write(QStringLiteral("dark.MLV"), "dark"));
    QVERIFY(!hasWork());
    putWork();
    claim(m_clip, m_folder->filePath(QStringLiteral("dark.MLV")));
    QVERIFY(hasWork());
}

void TestWorkNote::workWithOtherBlendingIsRemoved()
{
    claimBlended();
    QVERIFY(!hasWork());
}

void TestWorkNote::workWithOtherCorrectionsIsRemoved()
{
    ConversionSettings settings;
    settings.corrections.whiteLevel = QStringLiteral("15000");
    claimUnfinishedWork(m_clip, settings, m_work);
    QVERIFY(!hasWork());
    putWork();
    claimUnfinishedWork(m_clip, settings, m_work);
    QVERIFY(hasWork());
    claim(m_clip);
    QVERIFY(!hasWork());
}

using Change = void (*)(ConversionSettings &);
Q_DECLARE_METATYPE(Change)

void TestWorkNote::workOfAnotherDevelopmentIsRemoved_data()
{
    QTest::addColumn<Change>("change");
    const auto row = [](const char *name, Change change) { QTest::newRow(name) << change; };
    row("exposure", [](ConversionSettings &settings) { settings.corrections.exposure = 0.5; });
    row("white balance", [](ConversionSettings &settings) {
        settings.corrections.whiteBalance = QStringLiteral("auto");
    });
    row("frames", [](ConversionSettings &settings) { settings.frames.last = 10; });
}

void TestWorkNote::workOfAnotherDevelopmentIsRemoved()
{
    QFETCH(Change, change);
    ConversionSettings settings;
    change(settings);
    claimUnfinishedWork(m_clip, settings, m_work);
    QVERIFY(!hasWork());
    putWork();
    claimUnfinishedWork(m_clip, settings, m_work);
    QVERIFY(hasWork());
    claim(m_clip);
    QVERIFY(!hasWork());
}

void TestWorkNote::workWithAChangedMapIsRemoved()
{
    ConversionSettings settings;
    settings.corrections.pixelRepair = write(QStringLiteral("a.fpm"), "8 9\n");
    claimUnfinishedWork(m_clip, settings, m_work);
    putWork();
    write(QStringLiteral("a.fpm"), "8 9\n10 11\n");
    claimUnfinishedWork(m_clip, settings, m_work);
    QVERIFY(!hasWork());
}

void TestWorkNote::framesDevelopedInAnotherWayAreRemoved()
{
    claimWith(QStringLiteral("hq"), {QStringLiteral("-6")});
    QVERIFY(!hasWork()); // an 8-bit frame is not taken for a 16-bit one
    putWork();
    claim(m_clip);
    QVERIFY(!hasWork()); // nor the other way round
}

void TestWorkNote::framesOfTwoRecipesThatDevelopAlikeAreKept()
{
    claimWith(QStringLiteral("hq"), {QStringLiteral("-6")});
    putWork();
    claimWith(QStringLiteral("lt"), {QStringLiteral("-6")});
    QVERIFY(hasWork());
    claimWith(QStringLiteral("web"), {});
    QVERIFY(!hasWork());
    putWork();
    claim(m_clip);
    QVERIFY(hasWork());
}

void TestWorkNote::workThatMayBeHalfBlendedIsRemoved()
{
    claimBlended();
    putWork();
    claimBlended();
    QVERIFY(!hasWork());
}

void TestWorkNote::blendedWorkIsKept()
{
    claimBlended();
    putWork();
    write(QStringLiteral("tmp/clip.MLV/tmp000000.tiff"), "converted");
    claimBlended();
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

FILMWRIGHT_TEST(TestWorkNote, QCoreApplication)
#include "tst_worknote.moc"
