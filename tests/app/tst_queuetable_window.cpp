// SPDX-License-Identifier: MIT
#include "fakewindow.h"

#include "app/progressindicator.h"
#include "app/queuetableview.h"
#include "app/readablepalette.h"
#include "app/showinfindertablecellview.h"
#include "support/testprogram.h"

#include <QContextMenuEvent>
#include <QDesktopServices>
#include <QDir>
#include <QDragEnterEvent>
#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QMenu>
#include <QMimeData>
#include <QTextDocument>

using namespace filmwright;

namespace {

const QString file = QStringLiteral("File");
const QString camera = QStringLiteral("Camera");
const QString exposure = QStringLiteral("Exposure");

const QString stopped = QStringLiteral("determinate 0 of 3 stopped");

void setExposure(FakeWindow &window, const QString &microseconds)
{
    window.setBlock(QStringLiteral("EXPO"),
                    {{5, QStringLiteral(" 400")}, {8, QLatin1Char(' ') + microseconds}});
}

void setLens(FakeWindow &window, const QString &name, const QString &focal, const QString &aperture)
{
    window.setBlock(QStringLiteral("LENS"),
                    {{4, name}, {6, focal}, {8, QStringLiteral(" f/") + aperture}});
}

/// The state cell of a row as a person sees it.
QString stateCell(const FakeWindow &window, int row)
{
    const ProgressTableCellView *view = window.stateView(row);
    if (!view)
        return QStringLiteral("no view");
    const ProgressIndicator &bar = *view->progressIndicator();
    return QStringLiteral("%1: %2 %3 of %4 %5")
        .arg(view->textField()->text(),
             bar.isIndeterminate() ? QStringLiteral("indeterminate")
                                   : QStringLiteral("determinate"),
             QString::number(bar.doubleValue()), QString::number(bar.maxValue() - bar.minValue()),
             bar.isAnimating() ? QStringLiteral("started") : QStringLiteral("stopped"));
}

QColor borderOf(QueueTableView &table)
{
    return table.viewport()->grab().toImage().pixelColor(2, 2);
}

} // namespace

class TestQueueTableWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void emptyQueueShowsNoRows();
    void emptyQueueInvites();
    void newestIsOnTop();
    void onlyTheNameIsKnownWhileReading();
    void textsOfARecording();
    void namesOfARecordingAreNoPlaces();
    void lensWithoutAName();
    void exposureTexts_data();
    void exposureTexts();
    void apertureHasNoDecimals_data();
    void apertureHasNoDecimals();
    void zeroShutterHasNoMeaning();
    void stateAndBarOfEveryMode();
    void onlyStateAndShowHaveViews();
    void showCellHasItsRecording();
    void cellsDrawnByTheTableTakeTheListsOrder();
    void toolTipHasTheWholePath();
    void toolTipIsNoMarkup();
    void rowsHaveThreeLinesAtAnyFontSize();
    void onlyVisibleRowsHaveViews();
    void scrollingBringsViews();
    void selectionStaysOnItsRecording();
    void dragIsHighlighted();
    void commandsNeedASelection();
    void commandsForSeveralRecordings();
    void commandsAreLockedWhileWorking();
    void movieIsPlayedOnceItIsThere();
    void mergingIsToggled();
    void blendingIsToggled();
    void blendingNeedsItsTool();
    void contextMenuIsTheRecordingMenuWithoutStart();
    void recordingWithoutExposureSaysSo();
    void rowTellsWhatWasChosenForIt();
    void doubleClickPlaysTheMovie();
    void statesAreWholeAtTheUsualSize_data();
    void statesAreWholeAtTheUsualSize();
    void fullBarOfASelectedRowIsSeen();

    void openUrl(const QUrl &url) { m_opened = url; }

private:
    QUrl m_opened;
};

void TestQueueTableWindow::emptyQueueShowsNoRows()
{
    FakeWindow window;
    window.launch();
    QCOMPARE(window.delegate->numberOfRowsInTableView(*window.table()), 0);
    QCOMPARE(window.table()->model()->rowCount(), 0);
}

void TestQueueTableWindow::emptyQueueInvites()
{
    FakeWindow window;
    window.launch();
    QWidget *viewport = window.table()->viewport();
    const auto colours = [viewport] {
        const QImage image = viewport->grab().toImage();
        QSet<QRgb> found;
        for (int x = 0; x < image.width(); ++x)
            found << image.pixel(x, image.height() / 2);
        for (int y = 0; y < image.height(); ++y)
            found << image.pixel(image.width() / 2, y);
        return found.size();
    };
    QVERIFY(colours() > 1);
    window.add({a});
    QTRY_VERIFY(window.stateView(0));
    window.select(a);
    window.action(QStringLiteral("removeMenuItem"))->trigger();
    QVERIFY(colours() > 1);
}

void TestQueueTableWindow::newestIsOnTop()
{
    FakeWindow window;
    window.launch({a, b, c});
    QCOMPARE(window.table()->model()->rowCount(), 3);
    QStringList names;
    for (int row = 0; row < 3; ++row)
        names << window.cell(file, row).section(QLatin1Char('\n'), 0, 0);
    QCOMPARE(names, QStringList({c, b, a}));
}

void TestQueueTableWindow::onlyTheNameIsKnownWhileReading()
{
    FakeWindow window;
    window.setBeforeReport(window.untilReleased());
    window.launch();
    QVERIFY(window.drop(window.makeRecordings({a})));
    QCOMPARE(window.cell(file, 0), a);
    QCOMPARE(window.cell(camera, 0), QString());
    QCOMPARE(window.cell(exposure, 0), QString());
    QTRY_COMPARE(stateCell(window, 0),
                 QStringLiteral("Reading data: indeterminate 0 of 3 started"));
    window.release();
    window.waitUntilRead();
    QCOMPARE(window.cell(file, 0).count(QLatin1Char('\n')), 2);
}

void TestQueueTableWindow::textsOfARecording()
{
    FakeWindow window(24);
    window.setRawInformation(QStringLiteral(" 1920x1080"), 14);
    window.setBlock(QStringLiteral("IDNT"), {{4, QStringLiteral(" 'Maker Model X'")}});
    setLens(window, QStringLiteral(" 'Prime 35mm'"), QStringLiteral(" 35 mm"),
            QStringLiteral("5.60"));
    setExposure(window, QStringLiteral("20000µs (1/50.00)"));
    window.launch({a});
    QCOMPARE(window.cell(file, 0), QStringLiteral("a.MLV\n1920x1080\n24 frames"));
    QCOMPARE(window.cell(camera, 0), QStringLiteral("Maker Model X\nPrime 35mm"));
    QCOMPARE(window.cell(exposure, 0), QStringLiteral("1/50 sec\nISO 400\n35 mm f/6"));
    for (const QString &column : {QStringLiteral("State"), QStringLiteral("Show")})
        QVERIFY(window.delegate->objectValueForTableColumn(column, 0).isNull());
}

/// A recording can call itself and its lens as it likes.
void TestQueueTableWindow::namesOfARecordingAreNoPlaces()
{
    FakeWindow window(24);
    window.setBlock(QStringLiteral("IDNT"), {{4, QStringLiteral(" a%2b")}});
    setLens(window, QStringLiteral(" c%1d"), QStringLiteral(" 35%1%4mm"), QStringLiteral("2"));
    setExposure(window, QStringLiteral("20000µs"));
    window.launch({QStringLiteral("take%1%3.MLV")});
    QCOMPARE(window.cell(file, 0), QStringLiteral("take%1%3.MLV\n\n24 frames"));
    QCOMPARE(window.cell(camera, 0), QStringLiteral("a%2b\nc%1d"));
    QCOMPARE(window.cell(exposure, 0), QStringLiteral("1/50 sec\nISO 400\n35%1%4mm f/2"));
}

void TestQueueTableWindow::lensWithoutAName()
{
    FakeWindow window;
    window.setBlock(QStringLiteral("IDNT"), {{4, QStringLiteral(" 'Maker'")}});
    setLens(window, QStringLiteral(" ''"), QString(), QStringLiteral("1"));
    window.launch({a});
    QCOMPARE(window.cell(camera, 0), QStringLiteral("Maker\nUnknow lens"));
}

void TestQueueTableWindow::exposureTexts_data()
{
    QTest::addColumn<QString>("microseconds");
    QTest::addColumn<QString>("shutter");
    QTest::newRow("1/50") << QStringLiteral("20000") << QStringLiteral("1/50 sec");
    QTest::newRow("1/60") << QStringLiteral("16600") << QStringLiteral("1/60 sec");
    QTest::newRow("half a second") << QStringLiteral("500000") << QStringLiteral("1/2 sec");
    QTest::newRow("half is rounded up") << QStringLiteral("400000") << QStringLiteral("1/3 sec");
    QTest::newRow("almost a second") << QStringLiteral("999999") << QStringLiteral("1/1 sec");
    QTest::newRow("a second") << QStringLiteral("1000000") << QStringLiteral("1.0 sec");
    QTest::newRow("seconds") << QStringLiteral("2500000") << QStringLiteral("2.5 sec");
}

void TestQueueTableWindow::exposureTexts()
{
    QFETCH(const QString, microseconds);
    QFETCH(const QString, shutter);
    FakeWindow window;
    setExposure(window, microseconds + QStringLiteral("µs"));
    setLens(window, QString(), QStringLiteral(" 35 mm"), QStringLiteral("2.80"));
    window.launch({a});
    QCOMPARE(window.cell(exposure, 0), shutter + QStringLiteral("\nISO 400\n35 mm f/3"));
}

void TestQueueTableWindow::apertureHasNoDecimals_data()
{
    QTest::addColumn<QString>("aperture");
    QTest::addColumn<QString>("shown");
    QTest::newRow("1.4") << QStringLiteral("1.40") << QStringLiteral("f/1");
    QTest::newRow("2.8") << QStringLiteral("2.80") << QStringLiteral("f/3");
    QTest::newRow("3.5, a half to the even") << QStringLiteral("3.50") << QStringLiteral("f/4");
    QTest::newRow("4.5, a half to the even") << QStringLiteral("4.50") << QStringLiteral("f/4");
    QTest::newRow("22") << QStringLiteral("22.00") << QStringLiteral("f/22");
    QTest::newRow("none") << QStringLiteral("0.00") << QStringLiteral("f/0");
}

void TestQueueTableWindow::apertureHasNoDecimals()
{
    QFETCH(const QString, aperture);
    QFETCH(const QString, shown);
    FakeWindow window;
    setLens(window, QString(), QStringLiteral(" 35 mm"), aperture);
    window.launch({a});
    QCOMPARE(window.cell(exposure, 0).section(QLatin1Char(' '), -1), shown);
}

void TestQueueTableWindow::zeroShutterHasNoMeaning()
{
    FakeWindow window;
    setExposure(window, QStringLiteral("0µs"));
    window.launch({a});
    const QString text = window.cell(exposure, 0);
    QVERIFY2(text.startsWith(QLatin1String("1/2147483647 sec\nISO 400\n")), qPrintable(text));
}

void TestQueueTableWindow::stateAndBarOfEveryMode()
{
    FakeWindow window;
    const QString extracting = QStringLiteral("extracting");
    const QString converting = QStringLiteral("converting");
    const QString encoding = QStringLiteral("encoding");
    window.setExtraction(window.untilReleased(extracting) + FakeTools::extraction(2));
    window.setConversion(window.untilReleased(converting) +
                         QStringLiteral("cp \"$frame\" \"$tiff\""));
    window.setEncoding(window.untilReleased(encoding) + QStringLiteral("cp \"$film\" \"$movie\""));
    window.launch({a, b});
    QTRY_COMPARE(stateCell(window, 1), QStringLiteral("Ready: ") + stopped);
    window.pressStart();
    QTRY_COMPARE(stateCell(window, 1),
                 QStringLiteral("Extracting DNG: determinate 0 of 3 started"));
    QCOMPARE(stateCell(window, 0), QStringLiteral("Pending: ") + stopped);
    window.release(extracting);
    QTRY_COMPARE(stateCell(window, 1),
                 QStringLiteral("RGB conversion: determinate 1 of 3 started"));
    window.release(converting);
    QTRY_COMPARE(stateCell(window, 1),
                 QStringLiteral("Building movie: determinate 2 of 3 started"));
    window.release(encoding);
    QTRY_COMPARE(stateCell(window, 1), QStringLiteral("Finished: determinate 3 of 3 stopped"));
    window.waitForEnd();
    QVERIFY(QFile::remove(window.path(extracting)));
    window.pressStart();
    QTRY_COMPARE(stateCell(window, 1),
                 QStringLiteral("Extracting DNG: determinate 0 of 3 started"));
    window.pressStart();
    QTRY_COMPARE(stateCell(window, 1), QStringLiteral("Ready: ") + stopped);
}

void TestQueueTableWindow::onlyStateAndShowHaveViews()
{
    FakeWindow window;
    window.launch({a});
    QTRY_VERIFY(window.stateView(0));
    QCOMPARE(window.stateView(0)->controller(), window.delegate->projectList().front().get());
    for (const QString &column : {file, camera, exposure})
        QCOMPARE(window.delegate->viewForTableColumn(*window.table(), column, 0), nullptr);
}

void TestQueueTableWindow::showCellHasItsRecording()
{
    FakeWindow window;
    window.launch({a, b});
    const auto column = static_cast<int>(queueTableColumns.indexOf(QStringLiteral("Show")));
    for (int row = 0; row < 2; ++row) {
        const QModelIndex index = window.table()->model()->index(row, column);
        QTRY_VERIFY(window.table()->indexWidget(index));
        const auto *view =
            qobject_cast<ShowInFinderTableCellView *>(window.table()->indexWidget(index));
        QVERIFY(view);
        QCOMPARE(view->controller(),
                 window.delegate->projectList().at(static_cast<std::size_t>(1 - row)).get());
    }
}

void TestQueueTableWindow::cellsDrawnByTheTableTakeTheListsOrder()
{
    FakeWindow window;
    window.setBeforeReport(
        QStringLiteral("case \"$recording\" in *b.MLV) %1 ;; esac").arg(window.untilReleased()));
    window.launch();
    QVERIFY(window.drop(window.makeRecordings({a, b})));
    QTRY_COMPARE(window.states().constFirst(), QStringLiteral("Ready"));
    QLabel cell(QStringLiteral("untouched"));
    window.delegate->willDisplayCell(cell, file, 0);
    QCOMPARE(cell.text(), QStringLiteral("untouched"));
    window.delegate->willDisplayCell(cell, QStringLiteral("State"), 0);
    QCOMPARE(cell.text(), QStringLiteral("Ready"));
    window.delegate->willDisplayCell(cell, QStringLiteral("State"), 1);
    QCOMPARE(cell.text(), QStringLiteral("Reading data"));
    window.release();
    window.waitUntilRead();
}

void TestQueueTableWindow::toolTipHasTheWholePath()
{
    FakeWindow window;
    window.launch({a});
    QCOMPARE(window.table()->model()->index(0, 0).data(Qt::ToolTipRole).toString(),
             window.delegate->projectList().front()->mlvPath());
    QCOMPARE(window.table()->textElideMode(), Qt::ElideMiddle);
}

/// A recording can call itself and its lens as it likes.
void TestQueueTableWindow::toolTipIsNoMarkup()
{
    FakeWindow window;
    window.setBlock(QStringLiteral("IDNT"), {{4, QStringLiteral(" a<img src='x'>b")}});
    window.launch({QStringLiteral("<b>bold<br>.MLV")});
    for (const int column : {0, 1}) {
        const QModelIndex cell = window.table()->model()->index(0, column);
        const QString shown = cell.data(Qt::ToolTipRole).toString();
        QVERIFY(Qt::mightBeRichText(shown)); // otherwise it would be shown as it stands
        QTextDocument document;
        document.setHtml(shown);
        const QString plain =
            window.delegate->toolTipForTableColumn(queueTableColumns.at(column), 0);
        QVERIFY(plain.contains(QLatin1Char('<')));
        QCOMPARE(document.toPlainText().replace(QChar::Nbsp, QLatin1Char(' ')), plain);
        QVERIFY(cell.data(Qt::AccessibleTextRole).toString().endsWith(plain));
    }
}

void TestQueueTableWindow::rowsHaveThreeLinesAtAnyFontSize()
{
    FakeWindow window;
    window.launch({a});
    for (const double points : {8.0, 12.0, 30.0}) {
        QFont font = window.table()->font();
        font.setPointSizeF(points);
        window.table()->setFont(font);
        QVERIFY(window.table()->rowHeight(0) >= 3 * QFontMetrics(font).lineSpacing());
    }
}

void TestQueueTableWindow::onlyVisibleRowsHaveViews()
{
    FakeWindow window;
    window.launch();
    QStringList names;
    for (int number = 10; number < 50; ++number)
        names << QStringLiteral("take%1.MLV").arg(number);
    window.add(names);
    QTRY_VERIFY(window.stateView(0));
    QVERIFY(!window.stateView(39));
    const auto views = window.table()->findChildren<ProgressTableCellView *>().size();
    QVERIFY2(views < 20, qPrintable(QString::number(views)));
}

void TestQueueTableWindow::scrollingBringsViews()
{
    FakeWindow window;
    window.launch();
    QStringList names;
    for (int number = 10; number < 50; ++number)
        names << QStringLiteral("take%1.MLV").arg(number);
    window.add(names);
    window.table()->scrollToBottom();
    QTRY_VERIFY(window.stateView(39));
    QCOMPARE(window.stateView(39)->controller(), window.delegate->projectList().front().get());
    QTRY_VERIFY(!window.stateView(0));
    window.table()->scrollToTop();
    QTRY_VERIFY(window.stateView(0));
    QCOMPARE(window.stateView(0)->controller(), window.delegate->projectList().back().get());
}

void TestQueueTableWindow::selectionStaysOnItsRecording()
{
    FakeWindow window;
    window.launch({a, b});
    window.select(b);
    QCOMPARE(window.table()->selectedRows(), QList<int>{0});
    window.add({c});
    QCOMPARE(window.table()->selectedRows(), QList<int>{1});
    QTRY_COMPARE(window.stateView(1)->controller(), window.delegate->projectList().at(1).get());
}

void TestQueueTableWindow::dragIsHighlighted()
{
    FakeWindow window;
    window.launch();
    QueueTableView &table = *window.table();
    const QColor before = borderOf(table);
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(window.makeRecordings({a}).constFirst())});
    QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(table.viewport(), &enter);
    QCOMPARE(borderOf(table).rgb(), table.palette().color(QPalette::Highlight).rgb());
    QDragMoveEvent move({50, 50}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(table.viewport(), &move);
    QVERIFY(move.isAccepted());
    QDragLeaveEvent leave;
    QCoreApplication::sendEvent(table.viewport(), &leave);
    QCOMPARE(borderOf(table), before);
    QMimeData text;
    text.setUrls({QUrl::fromLocalFile(QStringLiteral("/notes.txt"))});
    QDragEnterEvent unwelcome({5, 5}, Qt::CopyAction, &text, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(table.viewport(), &unwelcome);
    QCOMPARE(borderOf(table), before);
}

void TestQueueTableWindow::commandsNeedASelection()
{
    FakeWindow window;
    window.launch({a});
    const QStringList commands{QStringLiteral("showMenuItem"), QStringLiteral("removeMenuItem"),
                               QStringLiteral("mergeNeighboursMenuItem"),
                               QStringLiteral("blendRowsMenuItem")};
    for (const QString &command : commands)
        QVERIFY2(!window.action(command)->isEnabled(), qPrintable(command));
    QVERIFY(!window.action(QStringLiteral("playMovieMenuItem"))->isEnabled());
    window.select(a);
    for (const QString &command : commands)
        QVERIFY2(window.action(command)->isEnabled(), qPrintable(command));
    QVERIFY(!window.action(QStringLiteral("playMovieMenuItem"))->isEnabled());
    window.table()->clearSelection();
    for (const QString &command : commands)
        QVERIFY2(!window.action(command)->isEnabled(), qPrintable(command));
}

void TestQueueTableWindow::commandsForSeveralRecordings()
{
    FakeWindow window;
    window.launch({a, b});
    window.table()->selectAll();
    QVERIFY(!window.action(QStringLiteral("showMenuItem"))->isEnabled());
    QVERIFY(!window.action(QStringLiteral("playMovieMenuItem"))->isEnabled());
    QVERIFY(window.action(QStringLiteral("removeMenuItem"))->isEnabled());
    QVERIFY(window.action(QStringLiteral("mergeNeighboursMenuItem"))->isEnabled());
}

void TestQueueTableWindow::commandsAreLockedWhileWorking()
{
    FakeWindow window;
    window.setExtraction(QStringLiteral("exec sleep 60"));
    window.launch({a});
    window.select(a);
    window.pressStart();
    for (const char *command : {"removeMenuItem", "mergeNeighboursMenuItem", "blendRowsMenuItem"})
        QVERIFY2(!window.action(QLatin1String(command))->isEnabled(), command);
    QVERIFY(window.action(QStringLiteral("showMenuItem"))->isEnabled());
    window.pressStart();
    for (const char *command : {"removeMenuItem", "mergeNeighboursMenuItem", "blendRowsMenuItem"})
        QVERIFY2(window.action(QLatin1String(command))->isEnabled(), command);
}

void TestQueueTableWindow::movieIsPlayedOnceItIsThere()
{
    FakeWindow window;
    window.launch({QStringLiteral("50 % #1.MLV")});
    window.table()->selectRow(0);
    QAction *play = window.action(QStringLiteral("playMovieMenuItem"));
    QVERIFY(!play->isEnabled());
    window.pressStart();
    window.waitForEnd();
    QTRY_VERIFY(play->isEnabled());
    QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "openUrl");
    play->trigger();
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
    const QString movie = window.delegate->projectList().front()->moviePath();
    QCOMPARE(m_opened.toLocalFile(), movie);
    QVERIFY(QFile::remove(movie));
    auto *menu = window.widget<QMenu>(QStringLiteral("recordingMenu"));
    menu->popup({});
    QVERIFY(!play->isEnabled());
    menu->close();
}

void TestQueueTableWindow::mergingIsToggled()
{
    FakeWindow window;
    window.launch({a, b});
    const auto &projects = window.delegate->projectList();
    QAction *merge = window.action(QStringLiteral("mergeNeighboursMenuItem"));
    window.select(a);
    QVERIFY(!merge->isChecked());
    merge->trigger();
    QVERIFY(projects.at(0)->dualISO());
    QVERIFY(!projects.at(1)->dualISO());
    QVERIFY(!projects.at(0)->blendsAlternatingRows());
    window.select(b);
    QVERIFY(!merge->isChecked());
    window.table()->selectAll();
    QVERIFY(!merge->isChecked());
    merge->trigger();
    QVERIFY(projects.at(0)->dualISO());
    QVERIFY(projects.at(1)->dualISO());
    window.pressStart();
    window.waitForEnd();
    QVERIFY(projects.at(0)->dualISO()); // a batch doesn't touch it
    window.table()->selectAll();
    QVERIFY(merge->isChecked());
    merge->trigger();
    QVERIFY(!projects.at(1)->dualISO());
}

void TestQueueTableWindow::blendingIsToggled()
{
    FakeWindow window;
    window.launch({a});
    window.select(a);
    QAction *blend = window.action(QStringLiteral("blendRowsMenuItem"));
    blend->trigger();
    QVERIFY(window.delegate->projectList().front()->blendsAlternatingRows());
    QVERIFY(!window.delegate->projectList().front()->dualISO());
    window.pressStart();
    window.waitForEnd();
    QCOMPARE(window.conversionCalls(QStringLiteral("cr2hdr")).size(), 1);
    blend->trigger();
    QVERIFY(!window.delegate->projectList().front()->blendsAlternatingRows());
}

void TestQueueTableWindow::blendingNeedsItsTool()
{
    FakeWindow window;
    window.launch({a});
    QVERIFY(QFile::remove(window.tools.path() + QStringLiteral("/cr2hdr")));
    window.select(a);
    window.action(QStringLiteral("blendRowsMenuItem"))->trigger();
    window.pressStart();
    QCOMPARE(window.alerts.shown.size(), 1);
    QVERIFY(window.alerts.shown.constFirst().startsWith(
        QLatin1String("A tool is missing|the tool cr2hdr was not found; ")));
    QVERIFY(!window.delegate->isWorking());
}

void TestQueueTableWindow::contextMenuIsTheRecordingMenuWithoutStart()
{
    FakeWindow window;
    window.launch({a, b});
    auto *menu = window.widget<QMenu>(QStringLiteral("rowMenu"));
    QWidget *viewport = window.table()->viewport();
    const QPoint place = window.table()->visualRect(window.table()->model()->index(1, 0)).center();
    QTest::mouseClick(viewport, Qt::RightButton, {}, place);
    QCOMPARE(window.table()->selectedRows(), QList<int>{1});
    QContextMenuEvent request(QContextMenuEvent::Mouse, place, viewport->mapToGlobal(place));
    QCoreApplication::sendEvent(viewport, &request);
    QVERIFY(menu->isVisible());
    QVERIFY(window.action(QStringLiteral("removeMenuItem"))->isEnabled());
    QVERIFY(!menu->actions().contains(window.action(QStringLiteral("startStopItem"))));
    QVERIFY(menu->actions().contains(window.action(QStringLiteral("removeMenuItem"))));
    menu->close();
}

void TestQueueTableWindow::recordingWithoutExposureSaysSo()
{
    FakeWindow window;
    window.setBlock(QStringLiteral("EXPO"),
                    {{5, QStringLiteral(" 0")}, {8, QStringLiteral(" 0µs")}});
    setLens(window, QStringLiteral(" 'Prime 35mm'"), QStringLiteral(" 35 mm"),
            QStringLiteral("5.60"));
    window.launch({a});
    QCOMPARE(window.cell(exposure, 0), QStringLiteral("Unknown exposure\n35 mm f/6"));
}

void TestQueueTableWindow::rowTellsWhatWasChosenForIt()
{
    FakeWindow window;
    window.launch({a});
    QTRY_VERIFY(window.stateView(0));
    QVERIFY(!window.stateView(0)->choices()->isVisible());
    window.select(a);
    window.action(QStringLiteral("mergeNeighboursMenuItem"))->trigger();
    window.action(QStringLiteral("blendRowsMenuItem"))->trigger();
    QTRY_COMPARE(window.stateView(0)->choices()->text(), QStringLiteral("HDR, Dual ISO"));
    QVERIFY(window.stateView(0)->choices()->isVisible());
    const QString told = window.delegate->toolTipForTableColumn(QStringLiteral("State"), 0);
    QVERIFY2(told.contains(QLatin1String("\nHDR\nDual ISO")), qPrintable(told));
}

/// The middle of the bar and what is beside the bar differ as text and background do.
void TestQueueTableWindow::fullBarOfASelectedRowIsSeen()
{
    FakeWindow window;
    window.launch({a});
    window.pressStart();
    window.waitForEnd();
    window.select(a);
    QTRY_VERIFY(window.stateView(0));
    ProgressIndicator &bar = *window.stateView(0)->progressIndicator();
    QTRY_COMPARE(bar.doubleValue(), bar.maxValue());
    const QColor middle = bar.grab().toImage().pixelColor(bar.rect().center());
    QVERIFY2(contrast(middle, window.table()->palette().color(QPalette::Highlight)) > 3,
             qPrintable(middle.name()));
}

void TestQueueTableWindow::doubleClickPlaysTheMovie()
{
    FakeWindow window;
    window.launch({a});
    window.pressStart();
    window.waitForEnd();
    QAction *play = window.action(QStringLiteral("playMovieMenuItem"));
    window.select(a);
    QTRY_VERIFY(play->isEnabled());
    const QPoint place = window.table()->visualRect(window.table()->model()->index(0, 0)).center();
    QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "openUrl");
    QTest::mouseClick(window.table()->viewport(), Qt::LeftButton, {}, place);
    QTest::mouseDClick(window.table()->viewport(), Qt::LeftButton, {}, place);
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
    QCOMPARE(m_opened.toLocalFile(), window.delegate->projectList().front()->moviePath());
}

void TestQueueTableWindow::statesAreWholeAtTheUsualSize_data()
{
    QTest::addColumn<QString>("state");
    for (const char *state : {"Reading data", "Ready", "Pending", "Extracting DNG",
                              "RGB conversion", "Building movie", "Finished"})
        QTest::newRow(state) << QString::fromLatin1(state);
}

/// Beside a mark, in a window that remembers nothing.
void TestQueueTableWindow::statesAreWholeAtTheUsualSize()
{
    QFETCH(const QString, state);
    FakeWindow window;
    window.launch();
    window.delegate->window()->resize(1100, 680);
    window.add({a});
    QTRY_VERIFY(window.stateView(0));
    ProgressTableCellView &view = *window.stateView(0);
    view.setOutcome(true, {});
    view.textField()->setText(state);
    QVERIFY(QTest::qWaitForWindowExposed(window.delegate->window()));
    QCoreApplication::sendPostedEvents();
    view.layout()->activate();
    QVERIFY2(view.textField()->width() >= view.textField()->sizeHint().width(),
             qPrintable(QStringLiteral("%1 of %2")
                            .arg(view.textField()->width())
                            .arg(view.textField()->sizeHint().width())));
    const QRect cell = window.table()->visualRect(window.table()->model()->index(0, 3));
    QVERIFY(window.table()->viewport()->rect().contains(cell));
}

FILMWRIGHT_TEST(TestQueueTableWindow, QApplication)
#include "tst_queuetable_window.moc"
