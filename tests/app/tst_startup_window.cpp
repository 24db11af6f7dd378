// SPDX-License-Identifier: MIT
#include "fakewindow.h"

#include "runner/directorylock.h"
#include "runner/temporarydirectory.h"
#include "runner/userdefaults.h"
#include "support/logcapture.h"
#include "support/ordinaryuser.h"
#include "support/testprogram.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSpinBox>
#include <QThread>

using namespace filmwright;

namespace {

const QString preferencesKey = QStringLiteral("Preferences");
const QString folderKey = QStringLiteral("TemporaryDirectory");
const QString keepKey = QStringLiteral("KeepTempDirectory");

const QString unusable =
    QStringLiteral("Unable to set temporary directory|Please control read/write access to "
                   "temporary directory.|Ok");

/// The preferences about the temporary folder as the window shows them.
struct FolderPreference
{
    explicit FolderPreference(const FakeWindow &window)
        : popUp(*window.widget<QComboBox>(QStringLiteral("prefTempFolderPopUpButton")))
        , field(*window.widget<QLineEdit>(QStringLiteral("prefTempFolderTextField")))
        , button(*window.widget<QPushButton>(QStringLiteral("prefTempFolderButton")))
    {
        window.action(QStringLiteral("preferencesMenuItem"))->trigger();
    }

    /// As a person does: by the keys, with the pop-up in focus.
    void choose(int index) const
    {
        QTest::keyClick(&popUp, index == 0 ? Qt::Key_Home : Qt::Key_End);
    }
    void chooseFolder() const { QTest::mouseClick(&button, Qt::LeftButton); }

    QComboBox &popUp;
    QLineEdit &field;
    QPushButton &button;
};

QVariantMap storedPreferences()
{
    return userDefaultsValueForKey(preferencesKey).toMap();
}

void store(const QString &folder)
{
    setUserDefaultsValue(QVariantMap{{folderKey, folder}, {QStringLiteral("Other"), 7}},
                         preferencesKey);
}

/// A file of an earlier run in the temporary directory.
QString leaveFile(const FakeWindow &window)
{
    const QString path = window.temporary(QStringLiteral("a.MLV/000000.dng"));
    [&] { QVERIFY(QDir().mkpath(QFileInfo(path).path())); }();
    [&] { QVERIFY(QFile(path).open(QIODevice::WriteOnly)); }();
    return path;
}

int runApplication()
{
    constexpr int timedOut = 99;
    QTimer::singleShot(10000, qApp, [] { QCoreApplication::exit(timedOut); });
    return QCoreApplication::exec();
}

} // namespace

class TestStartupWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void firstStart();
    void setUpHappensOnce();
    void launchTriesTheBlend();
    void everyStartIsClean();
    void linkInTheDirectorysPlaceIsNotFollowed();
    void keptDirectoryStays();
    void keepingIsToggledByTheMenu();
    void developerMenuIsAlwaysOn();
    void storedFolderIsUsed();
    void storedFolderThatCannotBeUsedIsKeptForTheNextStart();
    void storedFolderThatIsReadOnlyIsNotUsed();
    void storedFolderWithALinkIsNotUsed();
    void anotherRunKeepsItsDirectory();
    void chosenFolderIsUsedAtOnce();
    void cancelledFolderStoresNothing();
    void folderThatCannotBeUsedStoresNothing();
    void folderOfAnotherRunStoresNothing();
    void systemsFolderComesBackWithTheNextStart();
    void folderStaysDuringABatch();
    void preferencesAreClosed();
    void framesConvertedAtOnceReachTheBatch();
    void framesConvertedAtOnceAreRemembered();
    void framesConvertedAtOnceFitTheProcessor();
};

void TestStartupWindow::firstStart()
{
    FakeWindow window;
    QVERIFY(!userDefaultsValueForKey(preferencesKey).isValid());
    const LogCapture log;
    window.launch();
    const FolderPreference preference(window);
    QCOMPARE(preference.popUp.currentIndex(), 0);
    QVERIFY(!preference.button.isEnabled());
    QCOMPARE(preference.field.text(), QString());
    QCOMPARE(temporaryDirectory(),
             QDir(qEnvironmentVariable("TMPDIR")).filePath(QStringLiteral("Filmwright")));
    QVERIFY(!QFileInfo::exists(temporaryDirectory()));
    QVERIFY(LogCapture::lines().contains(QStringLiteral("Tmp folder: ") + temporaryDirectory()));
    QVERIFY(!window.action(QStringLiteral("startStopItem"))->isEnabled());
    QVERIFY(window.action(QStringLiteral("sourceItem"))->isEnabled());
    QVERIFY(!window.delegate->isWorking());
    QVERIFY(!userDefaultsValueForKey(preferencesKey).isValid());
    QCOMPARE(window.alerts.shown, QStringList());
}

void TestStartupWindow::setUpHappensOnce()
{
    FakeWindow window;
    window.launch({QStringLiteral("a.MLV")});
    const QString file = leaveFile(window);
    window.delegate->appInitialization();
    QCOMPARE(window.queue(), QStringList{QStringLiteral("a.MLV")});
    QVERIFY(window.action(QStringLiteral("startStopItem"))->isEnabled());
    QVERIFY(QFileInfo::exists(file));
}

void TestStartupWindow::launchTriesTheBlend()
{
    FakeWindow window;
    window.tools.addTool(QStringLiteral("cr2hdr"),
                         QStringLiteral("read -r frame <\"$1\"; echo \"$frame\" >\"$1.blended\""));
    const QDir folder(window.path(QStringLiteral("selftest")));
    QVERIFY(folder.mkpath(QStringLiteral(".")));
    const auto write = [&folder](const QString &name, const QByteArray &content) {
        QFile file(folder.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), content.size());
    };
    write(QStringLiteral("tmp000000-sav.dng"), "the saved frame");
    write(QStringLiteral("tmp000000.dng"), "what an earlier launch made of it");
    setUserDefaultsValue(folder.path(), QStringLiteral("SelfTestFolder"));
    window.launch();
    const QString frame = folder.filePath(QStringLiteral("tmp000000.dng"));
    QCOMPARE(window.tools.calls(QStringLiteral("cr2hdr")), QList<QStringList>{{frame}});
    QFile blended(frame + QStringLiteral(".blended"));
    QVERIFY(blended.open(QIODevice::ReadOnly));
    QCOMPARE(blended.readAll(), QByteArray("the saved frame\n"));

    QVERIFY(QFile::remove(folder.filePath(QStringLiteral("tmp000000-sav.dng"))));
    window.launch();
    QCOMPARE(window.tools.calls(QStringLiteral("cr2hdr")).size(), 1);
    QVERIFY(!QFileInfo::exists(frame));
}

void TestStartupWindow::everyStartIsClean()
{
    FakeWindow window;
    const QString file = leaveFile(window);
    window.launch();
    QVERIFY(!QFileInfo::exists(file));
    QVERIFY(!QFileInfo::exists(temporaryDirectory()));
}

void TestStartupWindow::linkInTheDirectorysPlaceIsNotFollowed()
{
    FakeWindow window;
    const QStringList recordings = window.makeRecordings({QStringLiteral("a.MLV")});
    QVERIFY(QFile::link(window.recordings(), temporaryDirectory()));
    window.launch();
    QVERIFY(QFileInfo::exists(recordings.constFirst()));
    QVERIFY(!QFileInfo(temporaryDirectory()).isSymLink());
}

void TestStartupWindow::keptDirectoryStays()
{
    FakeWindow window;
    setUserDefaultsValue(true, keepKey);
    const QString file = leaveFile(window);
    const LogCapture log;
    window.launch();
    QVERIFY(window.delegate->keepTempDirectory());
    QVERIFY(window.action(QStringLiteral("keepTempDirectoryMenuItem"))->isChecked());
    QVERIFY(LogCapture::lines().contains(QStringLiteral("Dev mode: keep temporary directory.")));
    window.quit();
    QVERIFY(QFileInfo::exists(file));
}

void TestStartupWindow::keepingIsToggledByTheMenu()
{
    FakeWindow window;
    window.launch();
    QAction *item = window.action(QStringLiteral("keepTempDirectoryMenuItem"));
    QVERIFY(!item->isChecked());
    QVERIFY(!window.delegate->keepTempDirectory());
    item->trigger();
    QVERIFY(item->isChecked());
    QCOMPARE(userDefaultsValueForKey(keepKey).toBool(), true);
    window.launch();
    item = window.action(QStringLiteral("keepTempDirectoryMenuItem"));
    QVERIFY(item->isChecked());
    item->trigger();
    QVERIFY(!item->isChecked());
    QVERIFY(userDefaultsValueForKey(keepKey).isValid());
    QCOMPARE(userDefaultsValueForKey(keepKey).toBool(), false);
    QVERIFY(!window.delegate->keepTempDirectory());
}

void TestStartupWindow::developerMenuIsAlwaysOn()
{
    FakeWindow window;
    setUserDefaultsValue(false, QStringLiteral("EnableDevMenu"));
    window.launch();
    QVERIFY(window.widget<QMenu>(QStringLiteral("devMenu"))->menuAction()->isVisible());
    QCOMPARE(userDefaultsValueForKey(QStringLiteral("EnableDevMenu")).toBool(), true);
}

void TestStartupWindow::storedFolderIsUsed()
{
    FakeWindow window;
    const QString folder = window.path(QStringLiteral("frames"));
    store(folder);
    window.launch();
    const FolderPreference preference(window);
    QCOMPARE(preference.popUp.currentIndex(), 1);
    QCOMPARE(preference.field.text(), folder);
    QVERIFY(preference.button.isEnabled());
    QCOMPARE(temporaryDirectory(), folder + QStringLiteral("/FilmwrightTmp"));
    QCOMPARE(window.alerts.shown, QStringList());
}

void TestStartupWindow::storedFolderThatCannotBeUsedIsKeptForTheNextStart()
{
    FakeWindow window;
    const QString folder = window.path(QStringLiteral("frames"));
    QVERIFY(QFile(folder).open(QIODevice::WriteOnly)); // no folder
    store(folder);
    window.launch();
    QCOMPARE(window.alerts.shown, QStringList{unusable});
    {
        const FolderPreference preference(window);
        QCOMPARE(preference.popUp.currentIndex(), 0);
        QCOMPARE(preference.field.text(), QString());
    }
    QVERIFY(baseTemporaryDirectory().isNull());
    QCOMPARE(storedPreferences().value(folderKey).toString(), folder);
    QVERIFY(QFile::remove(folder));
    window.launch();
    QCOMPARE(window.alerts.shown.size(), 1);
    QCOMPARE(baseTemporaryDirectory(), folder);
}

void TestStartupWindow::storedFolderThatIsReadOnlyIsNotUsed()
{
    const OrdinaryUser user;
    FakeWindow window;
    const QString folder = window.path(QStringLiteral("frames"));
    QVERIFY(QDir().mkdir(folder));
    QVERIFY(QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner));
    store(folder);
    window.launch();
    QCOMPARE(window.alerts.shown, QStringList{unusable});
    QVERIFY(baseTemporaryDirectory().isNull());
    QVERIFY(QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    window.launch();
    QCOMPARE(baseTemporaryDirectory(), folder);
}

void TestStartupWindow::storedFolderWithALinkIsNotUsed()
{
    FakeWindow window;
    const QString folder = window.path(QStringLiteral("shared"));
    QVERIFY(QDir().mkdir(folder));
    const QStringList recordings = window.makeRecordings({QStringLiteral("a.MLV")});
    QVERIFY(QFile::link(window.recordings(), folder + QStringLiteral("/FilmwrightTmp")));
    store(folder);
    window.launch();
    QCOMPARE(window.alerts.shown, QStringList{unusable});
    QVERIFY(baseTemporaryDirectory().isNull());
    QVERIFY(QFileInfo::exists(recordings.constFirst()));
}

void TestStartupWindow::anotherRunKeepsItsDirectory()
{
    FakeWindow window;
    const QString file = leaveFile(window);
    DirectoryLock another;
    QCOMPARE(another.take(temporaryDirectory()), QString());
    window.launch();
    QCOMPARE(window.alerts.shown,
             QStringList{QStringLiteral("The temporary directory is in use|another run of "
                                        "Filmwright works in %1|Ok")
                             .arg(temporaryDirectory())});
    QCOMPARE(runApplication(), 0);
    window.quit();
    QVERIFY(QFileInfo::exists(file));
}

void TestStartupWindow::chosenFolderIsUsedAtOnce()
{
    FakeWindow window;
    setUserDefaultsValue(QVariantMap{{QStringLiteral("Other"), 7}}, preferencesKey);
    window.launch();
    const QString folder = window.path(QStringLiteral("frames"));
    {
        const FolderPreference preference(window);
        preference.choose(1);
        QVERIFY(preference.button.isEnabled());
        QCOMPARE(preference.field.placeholderText(), QStringLiteral("Choose a directory"));
        QVERIFY(!storedPreferences().contains(folderKey));
        window.panel.chosen = QStringList{folder};
        preference.chooseFolder();
        QCOMPARE(preference.field.text(), folder);
    }
    QCOMPARE(temporaryDirectory(), folder + QStringLiteral("/FilmwrightTmp"));
    QCOMPARE(storedPreferences(), QVariantMap({{folderKey, folder}, {QStringLiteral("Other"), 7}}));
    window.launch();
    QCOMPARE(FolderPreference(window).popUp.currentIndex(), 1);
    QCOMPARE(temporaryDirectory(), folder + QStringLiteral("/FilmwrightTmp"));
}

void TestStartupWindow::cancelledFolderStoresNothing()
{
    FakeWindow window;
    window.launch();
    {
        const FolderPreference preference(window);
        preference.choose(1);
        preference.chooseFolder();
        QCOMPARE(preference.popUp.currentIndex(), 1);
        QCOMPARE(preference.field.text(), QString());
    }
    QVERIFY(storedPreferences().isEmpty());
    QVERIFY(baseTemporaryDirectory().isNull());
    window.launch();
    const FolderPreference preference(window);
    QCOMPARE(preference.popUp.currentIndex(), 0);
    QVERIFY(!preference.button.isEnabled());
}

void TestStartupWindow::folderThatCannotBeUsedStoresNothing()
{
    FakeWindow window;
    window.launch();
    const FolderPreference preference(window);
    preference.choose(1);
    const QString folder = window.path(QStringLiteral("frames"));
    window.panel.chosen = QStringList{folder};
    preference.chooseFolder();
    const QString noFolder = window.path(QStringLiteral("file"));
    QVERIFY(QFile(noFolder).open(QIODevice::WriteOnly));
    window.panel.chosen = QStringList{noFolder};
    preference.chooseFolder();
    QCOMPARE(window.alerts.shown, QStringList{unusable});
    QCOMPARE(preference.field.text(), folder);
    QCOMPARE(baseTemporaryDirectory(), folder);
    QCOMPARE(storedPreferences().value(folderKey).toString(), folder);
}

void TestStartupWindow::folderOfAnotherRunStoresNothing()
{
    FakeWindow window;
    window.launch();
    const QString folder = window.path(QStringLiteral("frames"));
    DirectoryLock another;
    QCOMPARE(another.take(folder + QStringLiteral("/FilmwrightTmp")), QString());
    const FolderPreference preference(window);
    preference.choose(1);
    window.panel.chosen = QStringList{folder};
    preference.chooseFolder();
    QCOMPARE(window.alerts.shown.size(), 1);
    QVERIFY(window.alerts.shown.constFirst().startsWith(
        QLatin1String("The temporary directory is in use|")));
    QVERIFY(baseTemporaryDirectory().isNull());
    QVERIFY(storedPreferences().isEmpty());
    QCOMPARE(preference.field.text(), QString());
    DirectoryLock third;
    QVERIFY(!third.take(temporaryDirectory()).isEmpty()); // the window has its own again
}

void TestStartupWindow::systemsFolderComesBackWithTheNextStart()
{
    FakeWindow window;
    const QString folder = window.path(QStringLiteral("frames"));
    store(folder);
    window.launch();
    const QString file = leaveFile(window);
    {
        const FolderPreference preference(window);
        preference.choose(0);
        QVERIFY(!preference.button.isEnabled());
        QCOMPARE(preference.field.text(), QString());
        QCOMPARE(preference.field.placeholderText(), QString());
    }
    QVERIFY(!QFileInfo::exists(file));
    QCOMPARE(storedPreferences(), QVariantMap({{QStringLiteral("Other"), 7}}));
    QCOMPARE(temporaryDirectory(), folder + QStringLiteral("/FilmwrightTmp"));
    window.quit();
    setBaseTemporaryDirectory(QString()); // a new process begins so
    window.launch();
    QCOMPARE(FolderPreference(window).popUp.currentIndex(), 0);
    QVERIFY(temporaryDirectory().endsWith(QLatin1String("/Filmwright")));
}

void TestStartupWindow::folderStaysDuringABatch()
{
    FakeWindow window;
    const QString folder = window.path(QStringLiteral("frames"));
    store(folder);
    window.setExtraction(QStringLiteral("exec sleep 60"));
    window.launch({QStringLiteral("a.MLV")});
    window.pressStart();
    const FolderPreference preference(window);
    preference.choose(0);
    QCOMPARE(window.alerts.shown, QStringList{refusal});
    QCOMPARE(preference.popUp.currentIndex(), 1);
    window.panel.chosen = QStringList{window.path(QStringLiteral("other"))};
    preference.chooseFolder();
    QCOMPARE(window.alerts.shown, QStringList({refusal, refusal}));
    QCOMPARE(preference.field.text(), folder);
    QCOMPARE(baseTemporaryDirectory(), folder);
    QCOMPARE(storedPreferences().value(folderKey).toString(), folder);
    QTRY_VERIFY(QFileInfo::exists(temporaryDirectory()));
    window.pressStart();
}

void TestStartupWindow::preferencesAreClosed()
{
    FakeWindow window;
    window.launch();
    const auto *preferences = window.widget<QDialog>(QStringLiteral("prefWindow"));
    QVERIFY(!preferences->isVisible());
    window.action(QStringLiteral("preferencesMenuItem"))->trigger();
    QVERIFY(preferences->isVisible());
    QVERIFY(!preferences->isModal());
    auto *buttons = window.widget<QDialogButtonBox>(QStringLiteral("preferencesButtons"));
    QTest::mouseClick(buttons->button(QDialogButtonBox::Close), Qt::LeftButton);
    QVERIFY(!preferences->isVisible());
}

void TestStartupWindow::framesConvertedAtOnceReachTheBatch()
{
    if (QThread::idealThreadCount() < 2)
        QSKIP("a single processor core converts one frame at a time");
    FakeWindow window;
    window.launch({QStringLiteral("a.MLV")});
    auto *field = window.widget<QSpinBox>(QStringLiteral("prefWorkersField"));
    const MLVProjectController &project = *window.delegate->projectList().front();
    QCOMPARE(field->value(), 1);
    window.pressStart();
    QCOMPARE(project.conversionWorkers(), 1);
    window.waitForEnd();
    window.action(QStringLiteral("preferencesMenuItem"))->trigger();
    QTest::keyClick(field, Qt::Key_Up);
    QCOMPARE(field->value(), 2);
    window.pressStart();
    QTRY_COMPARE(project.conversionWorkers(), 2); // once the first movie is on the disk
    window.waitForEnd();
    QCOMPARE(window.states(), QStringList{QStringLiteral("Finished")});
    QCOMPARE(window.alerts.shown, QStringList());
}

void TestStartupWindow::framesConvertedAtOnceAreRemembered()
{
    if (QThread::idealThreadCount() < 2)
        QSKIP("a single processor core converts one frame at a time");
    FakeWindow window;
    window.launch();
    window.widget<QSpinBox>(QStringLiteral("prefWorkersField"))->setValue(2);
    window.launch();
    QCOMPARE(window.widget<QSpinBox>(QStringLiteral("prefWorkersField"))->value(), 2);
    window.widget<QSpinBox>(QStringLiteral("prefWorkersField"))->setValue(1);
    window.launch();
    QCOMPARE(window.widget<QSpinBox>(QStringLiteral("prefWorkersField"))->value(), 1);
}

void TestStartupWindow::framesConvertedAtOnceFitTheProcessor()
{
    FakeWindow window;
    setUserDefaultsValue(100000, QStringLiteral("FramesConvertedAtOnce"));
    window.launch();
    auto *field = window.widget<QSpinBox>(QStringLiteral("prefWorkersField"));
    QCOMPARE(field->value(), QThread::idealThreadCount());
    setUserDefaultsValue(QStringLiteral("many"), QStringLiteral("FramesConvertedAtOnce"));
    window.launch();
    field = window.widget<QSpinBox>(QStringLiteral("prefWorkersField"));
    QCOMPARE(field->value(), 1);
    field->setValue(0);
    QCOMPARE(field->value(), 1);
}

FILMWRIGHT_TEST(TestStartupWindow, QApplication)
#include "tst_startup_window.moc"
