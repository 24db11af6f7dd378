// SPDX-License-Identifier: MIT
#include "mlv_dump/knownmatrix.h"

#include "raw/samples.h"
#include "recordingbuilder.h"
#include "support/testprogram.h"
#include "toolrun.h"

#include <QImage>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>

using Numbers = std::array<int, 9>;
Q_DECLARE_METATYPE(Numbers)

namespace {

constexpr Numbers recorded550D{6461, -1164, -857, -3825, 11597, 2534, -416, 1540, 6039};
constexpr Numbers recorded50D{4920, 616, -593, -6493, 12964, 2784, -1774, 3178, 7005};
constexpr Numbers recorded5DMarkIV{6722, -635, -963, -4287, 12460, 2028, -908, 2162, 5668};

mlvdump::ColourMatrix matrixOf(const Numbers &numbers)
{
    mlvdump::ColourMatrix matrix{};
    std::ranges::transform(numbers, matrix.begin(), [](int number) { return number / 10000.0; });
    return matrix;
}

mlv::RawInfo rawInfoWith(const Numbers &numbers)
{
    auto info = RecordingBuilder::rawInfo();
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        info.colourMatrix[2 * i] = numbers[i];
        info.colourMatrix[2 * i + 1] = 10000;
    }
    return info;
}

/// An evenly grey frame under light of 5200 K, as a camera of that matrix sees it.
QByteArray greyCard(const mlvdump::ColourMatrix &matrix)
{
    const auto neutral = mlvdump::neutralOfKelvin(5200, matrix);
    std::vector<std::uint16_t> samples;
    for (int y = 0; y < RecordingBuilder::height; ++y) {
        for (int x = 0; x < RecordingBuilder::width; ++x) {
            const std::size_t colour = static_cast<std::size_t>(x % 2 + y % 2);
            const double light = 500 * neutral[colour];
            samples.push_back(
                static_cast<std::uint16_t>(RecordingBuilder::black + std::lround(light)));
        }
    }
    QByteArray packed(
        static_cast<qsizetype>(raw::packedSize(samples.size(), RecordingBuilder::bits)), '\0');
    raw::packSamples(
        samples, RecordingBuilder::bits, raw::WordOrder::LittleEndian,
        std::as_writable_bytes(std::span(packed.data(), static_cast<std::size_t>(packed.size()))));
    return packed;
}

} // namespace

class TestKnownMatrix : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void greyCardIsGrey_data();
    void greyCardIsGrey();
    void everythingElseKeepsItsMatrix_data();
    void everythingElseKeepsItsMatrix();
    void recordedMatrixCanBeKept();

private:
    QString path(const char *name) const { return m_folder.filePath(QLatin1String(name)); }
    QString write(quint32 model, const Numbers &recorded, const QByteArray &frame) const
    {
        const mlv::WhiteBalance balance{
            mlv::WhiteBalanceMode::Kelvin, 5200, 1024, 1024, 1024, 0, 0};
        return RecordingBuilder()
            .add(mlv::blocktype::rawInfo, rawInfoWith(recorded))
            .add(mlv::blocktype::identity, mlv::Identity{{"Camera"}, model, {}})
            .add(mlv::blocktype::whiteBalance, balance, 0)
            .addFrameData(0, frame)
            .write(path("a.MLV"));
    }
    QColor developed(const QString &recording, const QStringList &options = {}) const
    {
        const auto run =
            runBuilt(QStringLiteral("mlv_dump"), QStringList{QStringLiteral("--dng"), recording,
                                                             QStringLiteral("-o"), path("tmp")} +
                                                     options);
        if (run.status != 0)
            qFatal("no frame was extracted");
        const QString dng = path("tmp000000.dng");
        outputOf(QStringLiteral("dcraw"),
                 {QStringLiteral("-H"), QStringLiteral("3"), QStringLiteral("-q"),
                  QStringLiteral("3"), QStringLiteral("-w"), QStringLiteral("-W"),
                  QStringLiteral("-T"), QStringLiteral("-b"), QStringLiteral("4.000000"), dng});
        QImage image;
        const QByteArray ppm =
            outputOf(QStringLiteral("ffmpeg"),
                     {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-i"),
                      path("tmp000000.tiff"), QStringLiteral("-f"), QStringLiteral("image2pipe"),
                      QStringLiteral("-c:v"), QStringLiteral("ppm"), QStringLiteral("-")});
        image.loadFromData(ppm);
        return image.pixelColor(image.width() / 2, image.height() / 2);
    }

    QTemporaryDir m_folder;
};

void TestKnownMatrix::greyCardIsGrey_data()
{
    QTest::addColumn<quint32>("model");
    QTest::addColumn<Numbers>("recorded");
    QTest::addColumn<Numbers>("right");
    QTest::newRow("550D") << 0x80000270U << recorded550D
                          << Numbers{6941, -1164, -857, -3825, 11597, 2534, -416, 1540, 6039};
    QTest::newRow("50D") << 0x80000261U << recorded50D
                         << Numbers{4920, 616, -593, -6493, 13964, 2784, -1774, 3178, 7005};
    QTest::newRow("5D Mark IV") << 0x80000349U << recorded5DMarkIV
                                << Numbers{6446, -366, -864, -4436, 12204, 2513, -952, 2496, 6348};
}

void TestKnownMatrix::greyCardIsGrey()
{
    QFETCH(const quint32, model);
    QFETCH(const Numbers, recorded);
    QFETCH(const Numbers, right);
    const QString recording = write(model, recorded, greyCard(matrixOf(right)));
    const QColor grey = developed(recording);
    const auto [least, most] = std::minmax({grey.red(), grey.green(), grey.blue()});
    QVERIFY2(most - least <= 1, qPrintable(grey.name()));
    QVERIFY(grey.green() > 60 && grey.green() < 200);
}

void TestKnownMatrix::everythingElseKeepsItsMatrix_data()
{
    QTest::addColumn<quint32>("model");
    QTest::addColumn<Numbers>("recorded");
    QTest::newRow("the numbers of another camera") << 0x80000285U << recorded5DMarkIV;
    QTest::newRow("the camera with right numbers")
        << 0x80000270U << Numbers{6941, -1164, -857, -3825, 11597, 2534, -416, 1540, 6039};
    QTest::newRow("one number of nine differs")
        << 0x80000270U << Numbers{6461, -1164, -857, -3825, 11597, 2534, -416, 1540, 6040};
}

void TestKnownMatrix::everythingElseKeepsItsMatrix()
{
    QFETCH(const quint32, model);
    QFETCH(const Numbers, recorded);
    const mlv::Recording recording(
        write(model, recorded, greyCard(matrixOf(recorded))).toStdString());
    QVERIFY(!mlvdump::knownMatrix(recording));
}

void TestKnownMatrix::recordedMatrixCanBeKept()
{
    const QString recording = write(0x80000270, recorded550D, greyCard(matrixOf(recorded550D)));
    const QStringList keep{QStringLiteral("--matrix"), QStringLiteral("recorded")};
    const QColor kept = developed(recording, keep);
    QVERIFY(std::abs(kept.red() - kept.green()) <= 1);
    QVERIFY(std::abs(developed(recording).red() - kept.red()) > 3);
}

FILMWRIGHT_TEST(TestKnownMatrix, QCoreApplication)
#include "tst_knownmatrix.moc"
