// SPDX-License-Identifier: MIT
#include "dcraw/tifffile.h"

#include "dcraw/notcovered.h"
#include "support/fulldisk.h"
#include "support/testprogram.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <system_error>

class TestDcrawTiffFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void rowsComeInAnyOrder();
    void lastByteComesLast();
    void fileThatIsNotFinishedIsRemoved();
    void linkThatIsNotFinishedLeadsToNothing();
    void fullDiskRefusesRowsAndTellsWhy();
    void onlyFilesAreWritten();

private:
    QString path() const { return m_folder->filePath(QStringLiteral("a.tiff")); }
    std::string name() const { return path().toStdString(); }
    QByteArray content() const
    {
        QFile file(path());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

namespace {

std::vector<std::byte> bytes(std::size_t count, char value)
{
    return std::vector<std::byte>(count, static_cast<std::byte>(value));
}

} // namespace

void TestDcrawTiffFile::rowsComeInAnyOrder()
{
    dcraw::TiffFile file(name(), 2, 3, 4);
    QVERIFY(file.write(2, bytes(6, 'c')));
    QVERIFY(file.write(0, bytes(3, 'a')));
    file.writeHead(bytes(2, 'h'));
    QVERIFY(file.write(1, bytes(3, 'b')));
    file.finish();
    QCOMPARE(content(), QByteArray("hhaaabbbcccccc"));
}

void TestDcrawTiffFile::lastByteComesLast()
{
    dcraw::TiffFile file(name(), 2, 3, 2);
    QVERIFY(file.write(1, bytes(3, 'b')));
    QCOMPARE(QFile(path()).size(), 7);
    file.writeHead(bytes(2, 'h'));
    QVERIFY(file.write(0, bytes(3, 'a')));
    QCOMPARE(QFile(path()).size(), 7);
    file.finish();
    QCOMPARE(QFile(path()).size(), 8);
}

void TestDcrawTiffFile::fileThatIsNotFinishedIsRemoved()
{
    {
        dcraw::TiffFile file(name(), 2, 3, 2);
        QVERIFY(file.write(0, bytes(6, 'a')));
        QVERIFY(QFile::exists(path()));
    }
    QVERIFY(!QFile::exists(path()));
}

void TestDcrawTiffFile::linkThatIsNotFinishedLeadsToNothing()
{
    QFile target(m_folder->filePath(QStringLiteral("target")));
    QVERIFY(target.open(QIODevice::WriteOnly));
    target.write("older");
    target.close();
    QVERIFY(target.link(path()));
    {
        dcraw::TiffFile file(name(), 2, 3, 2);
        QVERIFY(file.write(0, bytes(6, 'a')));
    }
    QVERIFY(!QFile::exists(path()));
    QCOMPARE(target.size(), 0);
}

void TestDcrawTiffFile::fullDiskRefusesRowsAndTellsWhy()
{
    dcraw::TiffFile file(name(), 0, 1000, 2);
    {
        const FullDisk full(1500);
        QVERIFY(file.write(0, bytes(1000, 'a')));
        QVERIFY(!file.write(1, bytes(1000, 'b')));
        QVERIFY(!file.write(0, bytes(1000, 'a'))); // nothing more is wanted
    }
    try {
        file.finish();
        QFAIL("finished all the same");
    } catch (const std::system_error &error) {
        QCOMPARE(error.code().value(), EFBIG);
    }
}

void TestDcrawTiffFile::onlyFilesAreWritten()
{
    QVERIFY_THROWS_EXCEPTION(dcraw::NotCovered, dcraw::TiffFile("/dev/null", 2, 3, 2));
    QVERIFY_THROWS_EXCEPTION(std::system_error, dcraw::TiffFile("/nowhere/a.tiff", 2, 3, 2));
    QVERIFY(QFile::exists(QStringLiteral("/dev/null")));
}

FILMWRIGHT_TEST(TestDcrawTiffFile, QCoreApplication)
#include "tst_dcraw_tifffile.moc"
