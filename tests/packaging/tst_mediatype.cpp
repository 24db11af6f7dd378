// SPDX-License-Identifier: MIT
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QMimeDatabase>
#include <QTemporaryDir>
#include <QTest>

/// What a desktop makes of recordings once our media type is installed.
class TestMediaType : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void extensionInAnyCase_data();
    void extensionInAnyCase();
    void firstFileWithoutItsName();
    void laterFileOfASplitRecordingIsNotOpenedAlone();
    void otherVersionIsNotARecording();

private:
    static QByteArray header(quint16 fileNumber, const QByteArray &version)
    {
        QByteArray header(52, '\0');
        header.replace(0, 4, "MLVI");
        header[4] = 52;
        header.replace(8, version.size(), version);
        header[24] = static_cast<char>(fileNumber & 0xff);
        header[25] = static_cast<char>(fileNumber >> 8);
        return header;
    }

    const QString m_type = QStringLiteral("video/x-mlv");
    QTemporaryDir m_data;
    QMimeDatabase m_types;
};

void TestMediaType::initTestCase()
{
    QVERIFY(QDir(m_data.path()).mkpath(QStringLiteral("mime/packages")));
    QVERIFY(QFile::copy(QStringLiteral(MEDIA_TYPES),
                        m_data.filePath(QStringLiteral("mime/packages/types.xml"))));
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_data.path()));
    QVERIFY(m_types.mimeTypeForName(m_type).isValid());
}

void TestMediaType::extensionInAnyCase_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"clip.MLV", "clip.mlv", "clip.Mlv", "a clip.2.mLV"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void TestMediaType::extensionInAnyCase()
{
    QFETCH(QString, name);
    QCOMPARE(m_types.mimeTypeForFile(name, QMimeDatabase::MatchExtension).name(), m_type);
}

void TestMediaType::firstFileWithoutItsName()
{
    QCOMPARE(m_types.mimeTypeForData(header(0, "v2.0")).name(), m_type);
}

void TestMediaType::laterFileOfASplitRecordingIsNotOpenedAlone()
{
    for (const quint16 number : std::initializer_list<quint16>{1, 2, 256})
        QVERIFY(m_types.mimeTypeForData(header(number, "v2.0")).name() != m_type);
    QVERIFY(
        m_types.mimeTypeForFile(QStringLiteral("clip.M00"), QMimeDatabase::MatchExtension).name() !=
        m_type);
}

void TestMediaType::otherVersionIsNotARecording()
{
    QVERIFY(m_types.mimeTypeForData(header(0, "v9.9")).name() != m_type);
}

FILMWRIGHT_TEST(TestMediaType, QCoreApplication)
#include "tst_mediatype.moc"
