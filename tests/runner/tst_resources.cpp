// SPDX-License-Identifier: MIT
#include "runner/resources.h"
#include "support/testprogram.h"
#include "support/toolfolder.h"

#include <QCoreApplication>
#include <QDir>
#include <QTest>

using namespace filmwright;

class TestResources : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void chosenFolderComesFirst()
    {
        ToolFolder tools;
        tools.addTool(QStringLiteral("sh"), QStringLiteral("exit 0"));
        QCOMPARE(resourcePath(QStringLiteral("sh")), tools.path() + QStringLiteral("/sh"));
    }

    void foldersAreSearchedInOrder()
    {
        const ToolFolder tools;
        const QString programs = QCoreApplication::applicationDirPath();
        QCOMPARE(resourceFolders(),
                 (QStringList{tools.path(),
                              QDir::cleanPath(programs + QStringLiteral("/../libexec/filmwright")),
                              QDir::cleanPath(programs + QStringLiteral("/../resources"))}));
    }

    void toolThatIsNotBundledIsFoundOnThePath()
    {
        const ToolFolder tools;
        QVERIFY(resourcePath(QStringLiteral("sh")).endsWith(QStringLiteral("/bin/sh")));
    }

    void fileThatIsNotExecutableIsNoTool()
    {
        ToolFolder tools;
        QFile file(tools.path() + QStringLiteral("/some-tool"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(resourcePath(QStringLiteral("some-tool")).isNull());
    }

    void missingToolGivesNone()
    {
        QVERIFY(resourcePath(QStringLiteral("no-such-tool-anywhere")).isNull());
    }
};

FILMWRIGHT_TEST(TestResources, QCoreApplication)
#include "tst_resources.moc"
