// SPDX-License-Identifier: MIT
#include "project/framesize.h"

#include "encoding/ffmpegarguments.h"
#include "mlvdump/mlvdumpreport.h"
#include "support/testprogram.h"

#include <QTest>

using namespace filmwright;

namespace {

MlvMetadata recording(const char *resolution, QSize sampling = {}, QRect active = {})
{
    MlvMetadata metadata;
    metadata.resolution = QString::fromLatin1(resolution);
    metadata.sampling = sampling;
    metadata.activeArea = active;
    return metadata;
}

} // namespace

class TestFrameSize : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sizeOfDevelopedFrames_data()
    {
        QTest::addColumn<MlvMetadata>("metadata");
        QTest::addColumn<QSize>("size");
        QTest::newRow("plain") << recording("1920x1080") << QSize(1920, 1080);
        QTest::newRow("nothing known") << recording("") << QSize();
        QTest::newRow("lines skipped as columns")
            << recording("1736x1156", QSize(3, 3)) << QSize(1736, 1156);
        QTest::newRow("more lines skipped")
            << recording("1736x694", QSize(3, 5)) << QSize(1736, 1156);
        QTest::newRow("stretch to an odd height, up")
            << recording("320x430", QSize(3, 5)) << QSize(320, 716);
        QTest::newRow("stretch to an odd height, down")
            << recording("320x436", QSize(3, 5)) << QSize(320, 726);
        QTest::newRow("columns binned") << recording("640x1080", QSize(3, 1)) << QSize(1920, 1080);
        QTest::newRow("active area within")
            << recording("100x80", {}, QRect(3, 2, 97, 78)) << QSize(97, 78);
        QTest::newRow("active area of a larger read-out")
            << recording("100x80", {}, QRect(72, 28, 1735, 1159)) << QSize(100, 80);
        QTest::newRow("stretched active area")
            << recording("100x80", QSize(3, 5), QRect(2, 2, 97, 78)) << QSize(97, 130);
    }

    void sizeOfDevelopedFrames()
    {
        QFETCH(MlvMetadata, metadata);
        QTEST(developedSize(metadata), "size");
    }

    void oddSidesAreNoMov()
    {
        for (const QSize size : {QSize(5, 2), QSize(4, 3), QSize(5, 3)}) {
            QCOMPARE(sizeError(size, MovieFormatMOV),
                     QStringLiteral("MOV holds no frames of %1x%2 pixels: both have to be even; "
                                    "choose AVI")
                         .arg(size.width())
                         .arg(size.height()));
            QCOMPARE(sizeError(size, MovieFormatAVI), QString());
        }
        QCOMPARE(sizeError(QSize(4, 2), MovieFormatMOV), QString());
        QCOMPARE(sizeError(QSize(), MovieFormatMOV), QString());
    }

    void oddSidesNeedARecipeThatSharesNoColour_data()
    {
        QTest::addColumn<QString>("pixelFormat");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<bool>("fits");
        QTest::newRow("4:2:0, even") << "yuv420p10le" << QSize(4, 2) << true;
        QTest::newRow("4:2:0, odd width") << "yuv420p10le" << QSize(5, 2) << false;
        QTest::newRow("4:2:0, odd height") << "yuv420p10le" << QSize(4, 3) << false;
        QTest::newRow("4:2:0, not known") << "yuv420p10le" << QSize() << true;
        QTest::newRow("4:2:2, odd width") << "yuv422p10le" << QSize(5, 2) << false;
        QTest::newRow("4:2:2, odd height") << "yuv422p10le" << QSize(4, 3) << true;
        QTest::newRow("4:4:4") << "yuv444p10le" << QSize(5, 3) << true;
        QTest::newRow("RGB") << "gbrp16le" << QSize(5, 3) << true;
    }

    void oddSidesNeedARecipeThatSharesNoColour()
    {
        QFETCH(QString, pixelFormat);
        QFETCH(QSize, size);
        Recipe recipe;
        recipe.name = QStringLiteral("Mine");
        recipe.video = QStringList{QStringLiteral("-pix_fmt"), pixelFormat};
        const QString problem = sizeError(size, MovieFormatMOV, recipe);
        QTEST(problem.isEmpty(), "fits");
        if (!problem.isEmpty())
            QVERIFY(problem.startsWith(QStringLiteral("Mine holds no frames of %1x%2 pixels")
                                           .arg(size.width())
                                           .arg(size.height())));
    }
};

FILMWRIGHT_TEST(TestFrameSize, QCoreApplication)
#include "tst_framesize.moc"
