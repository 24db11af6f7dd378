// SPDX-License-Identifier: MIT
#include "mlv_dump/pixelmap.h"

#include "recordingbuilder.h"
#include "support/testprogram.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using mlvdump::Place;
using mlvdump::readPixelMap;

class TestPixelMap : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void placesAreReadAsUsersWriteThem();
    void linesThatAreNoPlaceAreIgnored();
    void mapOfTheCameraIsRead();
    void mapOfAnotherCameraIsRefused();
    void fileThatIsNoMapIsRefused_data();
    void fileThatIsNoMapIsRefused();
    void ownMapGoesBeforeThatOfTheCamera();
    void heightOfAnotherRecorderIsAccepted();
    void nothingBesideIsNoMap();

private:
    std::filesystem::path path(const char *name) const
    {
        return m_folder->filePath(QLatin1String(name)).toStdString();
    }
    void write(const char *name, const QByteArray &text) const
    {
        QFile file(m_folder->filePath(QLatin1String(name)));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(text), text.size());
    }
    std::vector<Place> read(const QByteArray &text) const
    {
        write("map.fpm", text);
        return readPixelMap(path("map.fpm"), *m_recording);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<mlv::Recording> m_recording;
};

void TestPixelMap::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    auto info = RecordingBuilder::rawInfo();
    info.bufferWidth = 1808;
    info.bufferHeight = 727;
    const auto file = RecordingBuilder()
                          .add(mlv::blocktype::rawInfo, info)
                          .add(mlv::blocktype::identity, mlv::Identity{{"Camera"}, 0x80000326, {}})
                          .addFrame(0, 3000)
                          .write(m_folder->filePath(QStringLiteral("a.MLV")));
    m_recording = std::make_unique<mlv::Recording>(file.toStdString());
}

void TestPixelMap::placesAreReadAsUsersWriteThem()
{
    const std::vector<Place> places{{.y = 28, .x = 80}, {.y = 28, .x = 88}, {.y = 31, .x = 73}};
    QCOMPARE(read("80 \t 28\n88 \t 28\n73 \t 31\n"), places);
    QCOMPARE(read("73\t31\r\n88 28 and the rest\r\n80 28\r\n80 28"), places);
}

void TestPixelMap::linesThatAreNoPlaceAreIgnored()
{
    const std::vector<Place> places{{.y = 2, .x = 1}};
    QCOMPARE(
        read("# a comment\n\nx y\n1\n-1 2\n1 -2\n1.5 2\n70000 2\n1 99999999999999999999\n1 2x\n"
             "  1 2  \n\0\xff\n"),
        places);
}

void TestPixelMap::mapOfTheCameraIsRead()
{
    QCOMPARE(read("#FPM 80000326 700D\n1 2\n").size(), std::size_t{1});
    QCOMPARE(read("#FPM\n1 2\n").size(), std::size_t{1});
}

void TestPixelMap::mapOfAnotherCameraIsRefused()
{
    QVERIFY_THROWS_EXCEPTION(mlvdump::ForeignMap, read("#FPM \t 80000331\n1 2\n"));
}

void TestPixelMap::fileThatIsNoMapIsRefused_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("no line of it is a place") << QByteArray("<html>\n");
    QTest::newRow("no end in sight") << QByteArray((64 << 20) + 1, '1');
}

void TestPixelMap::fileThatIsNoMapIsRefused()
{
    QFETCH(const QByteArray, text);
    QVERIFY_THROWS_EXCEPTION(mlvdump::MapError, read(text));
    QVERIFY_THROWS_EXCEPTION(mlvdump::MapError, readPixelMap(path("nothing.fpm"), *m_recording));
    QVERIFY_THROWS_EXCEPTION(mlvdump::MapError, readPixelMap("/dev/zero", *m_recording));
}

void TestPixelMap::ownMapGoesBeforeThatOfTheCamera()
{
    write("80000326_1808x727.fpm", "1 2\n");
    QCOMPARE(mlvdump::pixelMapBeside(path("a.MLV"), *m_recording), path("80000326_1808x727.fpm"));
    write("a.bpm", "1 2\n");
    QCOMPARE(mlvdump::pixelMapBeside(path("a.MLV"), *m_recording), path("a.bpm"));
    write("a.fpm", "1 2\n");
    QCOMPARE(mlvdump::pixelMapBeside(path("a.MLV"), *m_recording), path("a.fpm"));
}

void TestPixelMap::heightOfAnotherRecorderIsAccepted()
{
    write("80000326_1808x724.fpm", "1 2\n");
    QVERIFY(!mlvdump::pixelMapBeside(path("a.MLV"), *m_recording));
    write("80000326_1808x729.fpm", "1 2\n");
    QCOMPARE(mlvdump::pixelMapBeside(path("a.MLV"), *m_recording), path("80000326_1808x729.fpm"));
    write("80000326_1808x726.fpm", "1 2\n");
    QCOMPARE(mlvdump::pixelMapBeside(path("a.MLV"), *m_recording), path("80000326_1808x726.fpm"));
}

void TestPixelMap::nothingBesideIsNoMap()
{
    QVERIFY(!mlvdump::pixelMapBeside(path("a.MLV"), *m_recording));
}

FILMWRIGHT_TEST(TestPixelMap, QCoreApplication)
#include "tst_pixelmap.moc"
