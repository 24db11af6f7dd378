// SPDX-License-Identifier: MIT
#include "dng/filehead.h"
#include "dng/tags.h"

#include "support/testprogram.h"

#include <QTest>
#include <QtEndian>

using dng::Ifd;

namespace {

/// Reads a file head back, field by field, as TIFF 6.0 describes it.
class Head
{
public:
    explicit Head(const std::vector<std::byte> &bytes)
        : m_bytes(reinterpret_cast<const char *>(bytes.data()),
                  static_cast<qsizetype>(bytes.size()))
    {
    }

    quint16 word(quint32 offset) const
    {
        return qFromLittleEndian<quint16>(m_bytes.constData() + offset);
    }
    quint32 longWord(quint32 offset) const
    {
        return qFromLittleEndian<quint32>(m_bytes.constData() + offset);
    }
    /// The offset of a field in the directory at `directory`, 0 when it is not there.
    quint32 field(quint32 directory, quint16 tag) const
    {
        for (quint32 i = 0; i < word(directory); ++i) {
            const quint32 offset = directory + 2 + i * 12;
            if (word(offset) == tag)
                return offset;
        }
        return 0;
    }
    QByteArray at(quint32 offset, qsizetype size) const { return m_bytes.mid(offset, size); }
    QByteArray bytes() const { return m_bytes; }

private:
    QByteArray m_bytes;
};

} // namespace

class TestFileHead : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void headerLeadsToTheDirectory();
    void fieldsAscendByTag();
    void shortValuesStandInTheField();
    void longValuesStandBehindOnEvenPlaces();
    void textEndsAtItsFirstNul();
    void emptyTextLeavesTheTagOut();
    void settingATagAgainReplacesIt();
    void stripFollowsDirectly();
    void exifDirectoryIsLinkedWhenThereIsOne();
    void withoutExifFieldsThereIsNoExifDirectory();
};

void TestFileHead::headerLeadsToTheDirectory()
{
    const Head head(dng::encodeFileHead({}, {}, 10));
    QCOMPARE(head.at(0, 4), QByteArray("II*\0", 4));
    QCOMPARE(head.longWord(4), 8U);
}

void TestFileHead::fieldsAscendByTag()
{
    Ifd ifd;
    ifd.setShorts(dng::tag::compression, {1});
    ifd.setLongs(dng::tag::imageWidth, {4});
    const Head head(dng::encodeFileHead(ifd, {}, 10));
    QCOMPARE(head.word(8), quint16{4}); // and the strip's offset and size
    QCOMPARE(head.word(10), dng::tag::imageWidth);
    QCOMPARE(head.word(22), dng::tag::compression);
    QCOMPARE(head.word(34), dng::tag::stripOffsets);
    QCOMPARE(head.longWord(8 + 2 + 4 * 12), 0U); // no further directory
}

void TestFileHead::shortValuesStandInTheField()
{
    Ifd ifd;
    ifd.setShorts(dng::tag::cfaRepeatPatternDim, {2, 3});
    const Head head(dng::encodeFileHead(ifd, {}, 10));
    const auto field = head.field(8, dng::tag::cfaRepeatPatternDim);
    QCOMPARE(head.word(field + 2), quint16{3}); // SHORT
    QCOMPARE(head.longWord(field + 4), 2U);
    QCOMPARE(head.word(field + 8), quint16{2});
    QCOMPARE(head.word(field + 10), quint16{3});
}

void TestFileHead::longValuesStandBehindOnEvenPlaces()
{
    Ifd ifd;
    ifd.setText(dng::tag::make, "Maker");   // six bytes with its end
    ifd.setText(dng::tag::model, "Cam 12"); // seven
    ifd.setRational(dng::tag::xResolution, {72, 1});
    const Head head(dng::encodeFileHead(ifd, {}, 10));
    const auto model = head.field(8, dng::tag::model);
    QCOMPARE(head.longWord(model + 4), 7U);
    QCOMPARE(head.at(head.longWord(model + 8), 7), QByteArray("Cam 12\0", 7));
    const auto resolution = head.longWord(head.field(8, dng::tag::xResolution) + 8);
    QCOMPARE(resolution % 2, 0U);
    QCOMPARE(head.longWord(resolution), 72U);
    QCOMPARE(head.longWord(resolution + 4), 1U);
}

void TestFileHead::textEndsAtItsFirstNul()
{
    Ifd ifd;
    ifd.setText(dng::tag::make, std::string_view("ab\0cd", 5));
    QCOMPARE(ifd.fields().at(dng::tag::make).count, 3U);
}

void TestFileHead::emptyTextLeavesTheTagOut()
{
    Ifd ifd;
    ifd.setText(dng::tag::uniqueCameraModel, "Camera");
    ifd.setText(dng::tag::uniqueCameraModel, "");
    QVERIFY(ifd.fields().empty());
}

void TestFileHead::settingATagAgainReplacesIt()
{
    Ifd ifd;
    ifd.setLongs(dng::tag::imageWidth, {1, 2});
    ifd.setShorts(dng::tag::imageWidth, {7});
    QCOMPARE(ifd.fields().size(), std::size_t{1});
    QCOMPARE(ifd.fields().at(dng::tag::imageWidth).count, 1U);
}

void TestFileHead::stripFollowsDirectly()
{
    const Head head(dng::encodeFileHead({}, {}, 12345));
    QCOMPARE(head.longWord(head.field(8, dng::tag::stripOffsets) + 8),
             static_cast<quint32>(head.bytes().size()));
    QCOMPARE(head.longWord(head.field(8, dng::tag::stripByteCounts) + 8), 12345U);
}

void TestFileHead::exifDirectoryIsLinkedWhenThereIsOne()
{
    Ifd exif;
    exif.setUndefined(dng::tag::exifVersion, "0230");
    const Head head(dng::encodeFileHead({}, exif, 10));
    const auto directory = head.longWord(head.field(8, dng::tag::exifIfd) + 8);
    QCOMPARE(head.word(directory), quint16{1});
    QCOMPARE(head.at(head.field(directory, dng::tag::exifVersion) + 8, 4), QByteArray("0230"));
}

void TestFileHead::withoutExifFieldsThereIsNoExifDirectory()
{
    const Head head(dng::encodeFileHead({}, {}, 10));
    QCOMPARE(head.field(8, dng::tag::exifIfd), 0U);
}

FILMWRIGHT_TEST(TestFileHead, QCoreApplication)
#include "tst_filehead.moc"
