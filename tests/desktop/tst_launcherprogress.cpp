// SPDX-License-Identifier: MIT
#include "desktop/launcherprogress.h"
#include "support/launcherlistener.h"
#include "support/testprogram.h"

#include <QTest>

using namespace filmwright;

class TestLauncherProgress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void updatesNameTheDesktopEntry();
    void progressIsShownAndTakenAway();
};

void TestLauncherProgress::updatesNameTheDesktopEntry()
{
    const LauncherListener launcher;
    showLauncherProgress(0.25);
    QTRY_COMPARE(launcher.updates().size(), 1);
    QCOMPARE(launcher.application(),
             QStringLiteral("application://org.filmwright.Filmwright.desktop"));
}

void TestLauncherProgress::progressIsShownAndTakenAway()
{
    const LauncherListener launcher;
    showLauncherProgress(0.25);
    showLauncherProgress(std::nullopt);
    QTRY_COMPARE(launcher.updates(),
                 QStringList({QStringLiteral("0.25 shown"), QStringLiteral("0 hidden")}));
}

FILMWRIGHT_TEST(TestLauncherProgress, QCoreApplication)
#include "tst_launcherprogress.moc"
