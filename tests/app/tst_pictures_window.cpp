// SPDX-License-Identifier: MIT
#include "fakewindow.h"

#include "runner/resources.h"
#include "support/testprogram.h"

#include <QCheckBox>
#include <QDir>

using namespace filmwright;

namespace {

/// The names of the recordings whose pictures were asked for, in this order.
QStringList pictured(const FakeWindow &window)
{
    QStringList names;
    for (const QStringList &call : window.tools.calls(mlvDumpName))
        if (call.constLast().contains(QLatin1String("filmwright-preview-")))
            names << QFileInfo(call.filter(QStringLiteral(".MLV")).value(0)).fileName();
    return names;
}

QImage pictureAt(const FakeWindow &window, int row)
{
    const auto icon =
        window.table()->model()->index(row, 0).data(Qt::DecorationRole).value<QIcon>();
    return icon.pixmap(window.table()->iconSize()).toImage();
}

bool isTransparent(const QImage &image)
{
    return image.pixelColor(image.rect().center()).alpha() == 0;
}

bool isFrame(const QImage &image)
{
    return !image.isNull() && image.pixelColor(image.rect().center()).alpha() == 255;
}

QStringList numbered(int count)
{
    QStringList names;
    for (int number = 0; number < count; ++number)
        names << QStringLiteral("%1.MLV").arg(number, 3, 10, QLatin1Char('0'));
    return names;
}

} // namespace

/// The pictures in the rows.
class TestPicturesWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rowShowsTheFirstFrame();
    void placeIsKeptUntilThePictureComes();
    void textsStayAsTheyAre();
    void onlyRowsInSightHavePictures();
    void scrolledRowsComeFirst();
    void pictureIsMadeOnce();
    void brokenRecordingHasNone();
    void pictureIsAsSharpAsTheScreen();
    void linkToARecordingHasItsPicture();
    void readAgainIsPicturedAgain();
    void noneIsMadeWhereNoneIsWanted();
};

void TestPicturesWindow::rowShowsTheFirstFrame()
{
    FakeWindow window;
    FakeWindow::showPictures(true);
    window.launch({QStringLiteral("a.MLV")});
    QTRY_VERIFY(isFrame(pictureAt(window, 0)));
    QCOMPARE(pictured(window), QStringList{QStringLiteral("a.MLV")});
}

void TestPicturesWindow::placeIsKeptUntilThePictureComes()
{
    FakeWindow window;
    FakeWindow::showPictures(true);
    window.setConversion(QStringLiteral("exec sleep 60"));
    window.launch({QStringLiteral("a.MLV")});
    QTRY_COMPARE(pictured(window).size(), 1);
    const QImage place = pictureAt(window, 0);
    QCOMPARE(place.size(), window.table()->iconSize());
    QVERIFY(!isFrame(place));
    QVERIFY(!isTransparent(place));
}

void TestPicturesWindow::textsStayAsTheyAre()
{
    FakeWindow window;
    FakeWindow::showPictures(true);
    window.setRawInformation(QStringLiteral("1920x1080"), 14);
    window.launch({QStringLiteral("a.MLV")});
    QCOMPARE(window.cell(QStringLiteral("File"), 0), QStringLiteral("a.MLV\n1920x1080\n2 frames"));
    for (int column = 1; column < 5; ++column)
        QVERIFY(!window.table()->model()->index(0, column).data(Qt::DecorationRole).isValid());
}

void TestPicturesWindow::onlyRowsInSightHavePictures()
{
    FakeWindow window;
    FakeWindow::showPictures(true);
    window.launch(numbered(60));
    const auto [first, last] = window.table()->rowsInSight();
    QCOMPARE(first, 0);
    QVERIFY(last < 30);
    for (int row = first; row <= last; ++row)
        QTRY_VERIFY(isFrame(pictureAt(window, row)));
    QVERIFY(!isFrame(pictureAt(window, 59)));
    QCOMPARE(pictured(window).size(), last + 1);
}

/// Those that were in sight before aren't waited for.
void TestPicturesWindow::scrolledRowsComeFirst()
{
    FakeWindow window;
    FakeWindow::showPictures(true);
    window.setConversion(window.untilReleased() + QStringLiteral("cp \"$frame\" \"$tiff\""));
    window.launch(numbered(60));
    QTRY_COMPARE(pictured(window).size(), 1);
    window.table()->scrollToBottom();
    window.release();
    QTRY_VERIFY(isFrame(pictureAt(window, 59)));
    const auto [first, last] = window.table()->rowsInSight();
    QTRY_COMPARE(pictured(window).size(), 1 + last - first + 1);
}

void TestPicturesWindow::pictureIsMadeOnce()
{
    FakeWindow window;
    FakeWindow::showPictures(true);
    window.launch(numbered(3));
    for (int row = 0; row < 3; ++row)
        QTRY_VERIFY(isFrame(pictureAt(window, row)));
    window.table()->reloadData();
    window.table()->scrollToBottom();
    window.add({QStringLiteral("new.MLV")});
    QTRY_VERIFY(isFrame(pictureAt(window, 0)));
    QCOMPARE(pictured(window).size(), 4);
}

void TestPicturesWindow::brokenRecordingHasNone()
{
    FakeWindow window;
    FakeWindow::showPictures(true);
    window.setExtraction(QStringLiteral("case \"$*\" in *b.MLV*) echo '[UNUSABLE] torn'; exit 1 ;; "
                                        "*) %1 ;; esac")
                             .arg(FakeTools::extraction(1)));
    window.launch({QStringLiteral("a.MLV"), QStringLiteral("b.MLV")});
    QTRY_VERIFY(isFrame(pictureAt(window, 1)));
    QTRY_VERIFY(isTransparent(pictureAt(window, 0)));
    window.table()->reloadData();
    QCoreApplication::processEvents();
    QCOMPARE(pictured(window).size(), 2);
}

/// The screen of the tests can't be dense; the picture has the pixels of the one that there is.
void TestPicturesWindow::pictureIsAsSharpAsTheScreen()
{
    FakeWindow window;
    FakeWindow::showPictures(true);
    window.launch({QStringLiteral("a.MLV")});
    QTRY_VERIFY(isFrame(pictureAt(window, 0)));
    const auto icon = window.table()->model()->index(0, 0).data(Qt::DecorationRole).value<QIcon>();
    const QSizeF size = QSizeF(window.table()->iconSize()) * window.table()->devicePixelRatioF();
    QCOMPARE(icon.availableSizes().value(0), size.toSize());
}

void TestPicturesWindow::linkToARecordingHasItsPicture()
{
    FakeWindow window;
    FakeWindow::showPictures(true);
    window.launch();
    const QString recording = window.makeRecordings({QStringLiteral("a.MLV")}).constFirst();
    const QString link = QDir(window.recordings()).filePath(QStringLiteral("link.MLV"));
    QVERIFY(QFile::link(recording, link));
    QVERIFY(window.drop({recording, link}));
    window.waitUntilRead();
    for (int row = 0; row < 2; ++row)
        QTRY_VERIFY(isFrame(pictureAt(window, row)));
}

void TestPicturesWindow::readAgainIsPicturedAgain()
{
    FakeWindow window;
    FakeWindow::showPictures(true);
    window.launch({QStringLiteral("a.MLV")});
    QTRY_VERIFY(isFrame(pictureAt(window, 0)));
    window.alerts.answers = {0}; // replace
    window.add({QStringLiteral("a.MLV")});
    QTRY_COMPARE(pictured(window).size(), 2);
    QTRY_VERIFY(isFrame(pictureAt(window, 0)));
}

void TestPicturesWindow::noneIsMadeWhereNoneIsWanted()
{
    FakeWindow window;
    FakeWindow::showPictures(true);
    window.launch();
    window.widget<QCheckBox>(QStringLiteral("prefPicturesCheckBox"))->click();
    window.add({QStringLiteral("a.MLV")});
    QVERIFY(window.table()->model()->index(0, 0).data(Qt::DecorationRole).value<QIcon>().isNull());
    QCOMPARE(pictured(window), QStringList());
    window.launch();
    QVERIFY(!window.widget<QCheckBox>(QStringLiteral("prefPicturesCheckBox"))->isChecked());
}

FILMWRIGHT_TEST(TestPicturesWindow, QApplication)
#include "tst_pictures_window.moc"
