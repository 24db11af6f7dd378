// SPDX-License-Identifier: MIT
// Exposure and white balance of single recordings.
#include "fakewindow.h"

#include "support/testprogram.h"

#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

using namespace filmwright;

namespace {

const QString exposureColumn = QStringLiteral("Exposure");

/// The dialog of the window, opened for the rows that are selected.
class Dialog
{
public:
    explicit Dialog(const FakeWindow &window)
        : exposure(window.widget<QDoubleSpinBox>(QStringLiteral("exposureField")))
        , whiteBalance(window.widget<QComboBox>(QStringLiteral("whiteBalancePopUpButton")))
        , temperature(window.widget<QSpinBox>(QStringLiteral("temperatureField")))
        , multipliers(window.widget<QLineEdit>(QStringLiteral("multipliersField")))
        , m_dialog(window.widget<QDialog>(QStringLiteral("developmentDialog")))
        , m_buttons(window.widget<QDialogButtonBox>(QStringLiteral("developmentButtons")))
    {
        window.action(QStringLiteral("developmentMenuItem"))->trigger();
    }

    bool isOpen() const { return m_dialog->isVisible(); }
    QPushButton *button(QDialogButtonBox::StandardButton which) const
    {
        return m_buttons->button(which);
    }
    void press(QDialogButtonBox::StandardButton which) const { button(which)->click(); }

    QDoubleSpinBox *exposure;
    QComboBox *whiteBalance;
    QSpinBox *temperature;
    QLineEdit *multipliers;

private:
    QDialog *m_dialog;
    QDialogButtonBox *m_buttons;
};

QString lineOf(const FakeWindow &window, int row, int line)
{
    return window.cell(exposureColumn, row).section(QLatin1Char('\n'), line, line);
}

} // namespace

class TestDevelopmentWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void choicesReachTheToolsOfTheirRowAlone()
    {
        FakeWindow window;
        window.launch({a, b});
        window.select(b);
        const Dialog dialog(window);
        QVERIFY(dialog.isOpen());
        dialog.exposure->setValue(1);
        dialog.whiteBalance->setCurrentIndex(1);
        dialog.press(QDialogButtonBox::Ok);
        QVERIFY(!dialog.isOpen());
        window.pressStart();
        window.waitForEnd();
        QStringList extractions;
        for (const QStringList &call : window.conversionCalls(QStringLiteral("mlv_dump")))
            if (call.constFirst() == QLatin1String("--dng"))
                extractions << call.mid(5).join(QLatin1Char(' ')).section(QLatin1Char('/'), 0, 0);
        QCOMPARE(extractions, (QStringList{QStringLiteral("-o "),
                                           QStringLiteral("--white-balance auto --exposure 1 "
                                                          "-o ")}));
        QStringList brightness;
        for (const QStringList &call : window.conversionCalls(QStringLiteral("dcraw")))
            brightness << call.at(8);
        const QString usual = QStringLiteral("4.000000");
        const QString twice = QStringLiteral("8.000000");
        QCOMPARE(brightness, (QStringList{usual, usual, twice, twice}));
    }

    void choicesAreShownInTheRow_data()
    {
        QTest::addColumn<double>("exposure");
        QTest::addColumn<int>("item");
        QTest::addColumn<QString>("shutter");
        QTest::addColumn<QString>("iso");
        QTest::newRow("brighter, found") << 0.5 << 1 << ", +0.5 EV"
                                         << ", WB auto";
        QTest::newRow("darker, temperature") << -1.25 << 2 << ", -1.25 EV"
                                             << ", 3200 K";
        QTest::newRow("multipliers") << 0.0 << 3 << ""
                                     << ", WB 2.1,1,1.4";
        QTest::newRow("nothing") << 0.0 << 0 << ""
                                 << "";
    }

    void choicesAreShownInTheRow()
    {
        QFETCH(double, exposure);
        QFETCH(int, item);
        QFETCH(QString, shutter);
        QFETCH(QString, iso);
        FakeWindow window;
        window.setBlock(QStringLiteral("EXPO"),
                        {{5, QStringLiteral(" 400")}, {8, QStringLiteral(" 20000µs")}});
        window.launch({a});
        const QString plainShutter = lineOf(window, 0, 0);
        const QString plainIso = lineOf(window, 0, 1);
        window.select(a);
        const Dialog dialog(window);
        dialog.exposure->setValue(exposure);
        dialog.whiteBalance->setCurrentIndex(item);
        dialog.temperature->setValue(3200);
        dialog.multipliers->setText(QStringLiteral("2.1, 1, 1.4"));
        dialog.press(QDialogButtonBox::Ok);
        QCOMPARE(lineOf(window, 0, 0), plainShutter + shutter);
        QCOMPARE(lineOf(window, 0, 1), plainIso + iso);
    }

    void choicesAreShownWhereTheExposureIsUnknown()
    {
        FakeWindow window;
        window.launch({a});
        window.select(a);
        const Dialog dialog(window);
        dialog.exposure->setValue(0.5);
        dialog.whiteBalance->setCurrentIndex(1);
        dialog.press(QDialogButtonBox::Ok);
        QCOMPARE(lineOf(window, 0, 0), QStringLiteral("Unknown exposure, +0.5 EV, WB auto"));
    }

    void dialogShowsWhatTheRowHas()
    {
        FakeWindow window;
        window.launch({a, b});
        window.select(a);
        const Dialog first(window);
        first.exposure->setValue(-0.75);
        first.whiteBalance->setCurrentIndex(2);
        first.temperature->setValue(4300);
        first.press(QDialogButtonBox::Ok);
        window.select(b);
        const Dialog other(window);
        QCOMPARE(other.exposure->value(), 0.0);
        QCOMPARE(other.whiteBalance->currentIndex(), 0);
        other.press(QDialogButtonBox::Cancel);
        window.select(a);
        const Dialog again(window);
        QCOMPARE(again.exposure->value(), -0.75);
        QCOMPARE(again.whiteBalance->currentIndex(), 2);
        QCOMPARE(again.temperature->value(), 4300);
    }

    void severalRowsAtOnce()
    {
        FakeWindow window;
        window.launch({a, b});
        window.table()->selectAll();
        const Dialog dialog(window);
        dialog.exposure->setValue(2);
        dialog.press(QDialogButtonBox::Ok);
        for (const auto &project : window.delegate->projectList())
            QCOMPARE(project->rawCorrections().exposure, 2.0);
    }

    void cancelledDialogChangesNothing()
    {
        FakeWindow window;
        window.launch({a});
        window.select(a);
        const Dialog dialog(window);
        dialog.exposure->setValue(2);
        dialog.press(QDialogButtonBox::Cancel);
        QCOMPARE(window.delegate->projectList().front()->rawCorrections().exposure, 0.0);
    }

    void defaultsAreOneButtonAway()
    {
        FakeWindow window;
        window.launch({a});
        window.select(a);
        const Dialog dialog(window);
        dialog.exposure->setValue(2);
        dialog.whiteBalance->setCurrentIndex(1);
        dialog.press(QDialogButtonBox::Ok);
        const Dialog again(window);
        again.press(QDialogButtonBox::RestoreDefaults);
        QVERIFY(again.isOpen());
        again.press(QDialogButtonBox::Ok);
        const RawCorrections &chosen = window.delegate->projectList().front()->rawCorrections();
        QCOMPARE(chosen.exposure, 0.0);
        QCOMPARE(chosen.whiteBalance, QString());
    }

    void wrongMultipliersAreNotTaken()
    {
        FakeWindow window;
        window.launch({a});
        window.select(a);
        const Dialog dialog(window);
        QVERIFY(!dialog.multipliers->isEnabled() && !dialog.temperature->isEnabled());
        dialog.whiteBalance->setCurrentIndex(3);
        QVERIFY(dialog.multipliers->isEnabled() && !dialog.temperature->isEnabled());
        for (const char *text : {"", "2,1", "2,1,red", "0,1,1"}) {
            dialog.multipliers->setText(QString::fromLatin1(text));
            QVERIFY2(!dialog.button(QDialogButtonBox::Ok)->isEnabled(), text);
        }
        dialog.multipliers->setText(QStringLiteral("2,1,1.5"));
        QVERIFY(dialog.button(QDialogButtonBox::Ok)->isEnabled());
    }

    void commandNeedsASelectionAndNoBatch()
    {
        FakeWindow window;
        window.setExtraction(QStringLiteral("exec sleep 60"));
        window.launch({a});
        const QAction *command = window.action(QStringLiteral("developmentMenuItem"));
        QVERIFY(!command->isEnabled());
        window.select(a);
        QVERIFY(command->isEnabled());
        window.pressStart();
        QVERIFY(!command->isEnabled());
        window.pressStart();
        QVERIFY(command->isEnabled());
    }

    void everythingIsReachedByKeys()
    {
        FakeWindow window;
        window.launch({a});
        window.select(a);
        const Dialog dialog(window);
        auto *shown = window.widget<QDialog>(QStringLiteral("developmentDialog"));
        QVERIFY(QTest::qWaitForWindowActive(shown));
        QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget *>(dialog.exposure));
        QTest::keyClicks(dialog.exposure, QStringLiteral("1"));
        QTest::keyClick(dialog.exposure, Qt::Key_Tab);
        QVERIFY(dialog.whiteBalance->hasFocus());
        QTest::keyClick(dialog.whiteBalance, Qt::Key_Down);
        QTest::keyClick(dialog.whiteBalance, Qt::Key_Return);
        const RawCorrections &chosen = window.delegate->projectList().front()->rawCorrections();
        QCOMPARE(chosen.exposure, 1.0);
        QCOMPARE(chosen.whiteBalance, QStringLiteral("auto"));
    }
};

FILMWRIGHT_TEST(TestDevelopmentWindow, QApplication)
#include "tst_development_window.moc"
