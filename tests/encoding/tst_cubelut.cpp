// SPDX-License-Identifier: MIT
#include "encoding/cubelut.h"

#include "support/testprogram.h"

#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

using namespace filmwright;

namespace {

const QByteArray rows("0 0 0\n1 0 0\n0 1 0\n1 1 0\n0 0 1\n1 0 1\n0 1 1\n1 1 1\n");

} // namespace

class TestCubeLut : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { m_path = m_folder.filePath(QStringLiteral("look.cube")); }

    void tableIsWrittenInOneForm_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QByteArray>("range");
        const QByteArray whole("DOMAIN_MIN 0 0 0\nDOMAIN_MAX 1 1 1\n");
        QTest::newRow("plain") << "LUT_3D_SIZE 2\n" + rows << whole;
        QTest::newRow("with all that tables have around them")
            << "# made by hand\r\nTITLE \"A # look\"\r\n\r\nLUT_3D_SIZE\t2\r\n"
               "DOMAIN_MIN 0 0 0\r\nDOMAIN_MAX 1 1 1\r\n\r\n# rows\r\n" +
                   QByteArray(rows).replace("\n", "  \r\n")
            << whole;
        QTest::newRow("another range")
            << "DOMAIN_MIN -1 0 0.5\nDOMAIN_MAX 2 2 2e0\nLUT_3D_SIZE 2\n" + rows
            << QByteArray("DOMAIN_MIN -1 0 0.5\nDOMAIN_MAX 2 2 2e0\n");
        // ffmpeg doesn't read such a file.
        QTest::newRow("a range behind the size, as some grading programs write it")
            << "LUT_3D_SIZE 2\nLUT_3D_INPUT_RANGE 0.0 4.0\n" + rows
            << QByteArray("DOMAIN_MIN 0.0 0.0 0.0\nDOMAIN_MAX 4.0 4.0 4.0\n");
        QTest::newRow("no line end behind the last row")
            << "LUT_3D_SIZE 2\n" + rows.chopped(1) << whole;
    }

    void tableIsWrittenInOneForm()
    {
        QFETCH(QByteArray, file);
        QFETCH(QByteArray, range);
        write(file);
        const CubeLut lut = readCubeLut(m_path);
        QCOMPARE(lut.error, QString());
        QCOMPARE(lut.text, "LUT_3D_SIZE 2\n" + range + rows);
    }

    void whatIsWrongIsToldWithItsLine_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<int>("line");
        QTest::addColumn<QString>("reason");
        const auto row = [](const char *name, const QByteArray &file, int line,
                            const char *reason) {
            QTest::newRow(name) << file << line << QString::fromLatin1(reason);
        };
        row("empty", "", 0, "it has no LUT_3D_SIZE");
        row("one dimension", "LUT_1D_SIZE 16\n", 1,
            "a table in one dimension; one in three (LUT_3D_SIZE) is needed");
        row("size of 1", "LUT_3D_SIZE 1\n0 0 0\n", 1, "LUT_3D_SIZE is a number from 2 to 256");
        row("size beyond all", "LUT_3D_SIZE 257\n", 1, "LUT_3D_SIZE is a number from 2 to 256");
        row("size without a number", "LUT_3D_SIZE\n", 1, "LUT_3D_SIZE is a number from 2 to 256");
        row("too few rows", "LUT_3D_SIZE 2\n" + rows.chopped(6), 8, "it ends after 7 of 8 rows");
        row("too many rows", "LUT_3D_SIZE 2\n" + rows + "1 1 1\n", 10,
            "there are more than 8 rows");
        row("row without a size", rows, 1, "a row stands before LUT_3D_SIZE");
        row("row of two", "LUT_3D_SIZE 2\n0 0\n", 2, "a row is three numbers");
        row("row of four", "LUT_3D_SIZE 2\n0 0 0 0\n", 2, "a row is three numbers");
        row("word in a row", "LUT_3D_SIZE 2\n0 zero 0\n", 2, "a row is three numbers");
        row("no number", "LUT_3D_SIZE 2\n0 nan 0\n", 2, "a row is three numbers");
        row("no finite number", "LUT_3D_SIZE 2\n0 1e999 0\n", 2, "a row is three numbers");
        row("decimal commas", "LUT_3D_SIZE 2\n0,5 0 0\n", 2, "a row is three numbers");
        row("unknown word", "LUT_3D_SIZE 2\nGAMMA 2\n", 2, "\"GAMMA\" is not known");
        row("short range", "DOMAIN_MIN 0\n", 1, "DOMAIN_MIN needs three numbers");
        row("long range", "LUT_3D_INPUT_RANGE 0 1 2\n", 1, "LUT_3D_INPUT_RANGE needs two numbers");
        row("word among the rows", "LUT_3D_SIZE 2\n0 0 0\nDOMAIN_MIN 0 0 0\n", 3,
            "\"DOMAIN_MIN\" stands behind the table's first row");
        row("no text", QByteArray(5000, '\0'), 1, "the line is too long for a table of colours");
    }

    void whatIsWrongIsToldWithItsLine()
    {
        QFETCH(QByteArray, file);
        QFETCH(int, line);
        QFETCH(QString, reason);
        write(file);
        const CubeLut lut = readCubeLut(m_path);
        QCOMPARE(lut.error, QStringLiteral("%1:%2: %3").arg(m_path).arg(line).arg(reason));
        QCOMPARE(lut.text, QByteArray());
    }

    void whatCantBeRead()
    {
        const QString missing = m_folder.filePath(QStringLiteral("none.cube"));
        QCOMPARE(readCubeLut(missing).error,
                 missing + QStringLiteral(": No such file or directory"));
        QVERIFY(!readCubeLut(m_folder.path()).error.isEmpty());
    }

    void anyFileIsReadToItsEnd()
    {
        QRandomGenerator random(1);
        const QByteArray whole = "LUT_3D_SIZE 2\nDOMAIN_MIN 0 0 0\n" + rows;
        for (int i = 0; i < 200; ++i) {
            QByteArray file = whole;
            for (int change = 0; change < 3; ++change)
                file[random.bounded(file.size())] = static_cast<char>(random.bounded(256));
            write(file);
            const CubeLut lut = readCubeLut(m_path);
            QVERIFY(lut.error.isEmpty() != lut.text.isEmpty());
        }
    }

private:
    void write(const QByteArray &content) const
    {
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), content.size());
    }

    QTemporaryDir m_folder;
    QString m_path;
};

FILMWRIGHT_TEST(TestCubeLut, QCoreApplication)
#include "tst_cubelut.moc"
