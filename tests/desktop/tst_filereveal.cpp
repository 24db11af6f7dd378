// SPDX-License-Identifier: MIT
#include "desktop/filereveal.h"
#include "support/logcapture.h"
#include "support/standinservice.h"
#include "support/testprogram.h"

#include <QDesktopServices>
#include <QTest>
#include <QUrl>

using namespace filmwright;

/// What opens folders when no file manager is on the bus.
class FolderOpener : public QObject
{
    Q_OBJECT

public:
    FolderOpener() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "open"); }
    ~FolderOpener() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }

    QStringList folders;

public Q_SLOTS:
    void open(const QUrl &url) { folders << url.toLocalFile(); }
};

class TestFileReveal : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void uriOfTheFile_data();
    void uriOfTheFile();
    void relativePathIsMadeAbsolute();
    void folderIsOpenedWithoutAFileManager();
    void folderIsOpenedWhenTheFileManagerRefuses();
    void nothingThatShowsItIsTold();

private:
    const QString m_name = QStringLiteral("org.freedesktop.FileManager1");
};

void TestFileReveal::uriOfTheFile_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("uri");
    const auto row = [](const char *name, const char *path, const char *uri) {
        QTest::newRow(name) << QString::fromUtf8(path) << QString::fromLatin1(uri);
    };
    row("plain", "/footage/clip.MLV", "file:///footage/clip.MLV");
    row("space", "/my footage/a clip.MLV", "file:///my%20footage/a%20clip.MLV");
    row("number sign", "/footage/take #2.MLV", "file:///footage/take%20%232.MLV");
    row("percent sign", "/footage/100%.MLV", "file:///footage/100%25.MLV");
    row("what looks escaped", "/footage/a%20b.MLV", "file:///footage/a%2520b.MLV");
    row("umlauts", "/Aufnahmen/Übergröße.MLV", "file:///Aufnahmen/%C3%9Cbergr%C3%B6%C3%9Fe.MLV");
    row("question mark", "/footage/what?.MLV", "file:///footage/what%3F.MLV");
    row("colon", "/footage/12:30.MLV", "file:///footage/12:30.MLV");
}

void TestFileReveal::uriOfTheFile()
{
    QFETCH(QString, path);
    QFETCH(QString, uri);
    const StandInService fileManager(m_name);
    revealFile(path);
    QTRY_COMPARE(fileManager.calls(), QStringList{QStringLiteral("ShowItems([%1], )").arg(uri)});
    QCOMPARE(fileManager.paths(), QStringList{QStringLiteral("/org/freedesktop/FileManager1")});
    QCOMPARE(QUrl(uri).toLocalFile(), path);
}

void TestFileReveal::relativePathIsMadeAbsolute()
{
    const StandInService fileManager(m_name);
    revealFile(QStringLiteral("clip.MLV"));
    QTRY_COMPARE(
        fileManager.lastArguments().value(0).toStringList(),
        QStringList{QUrl::fromLocalFile(QDir::current().filePath(QStringLiteral("clip.MLV")))
                        .toString(QUrl::FullyEncoded)});
}

void TestFileReveal::folderIsOpenedWithoutAFileManager()
{
    const FolderOpener opener;
    revealFile(QStringLiteral("/my footage/take #2.MLV"));
    QTRY_COMPARE(opener.folders, QStringList{QStringLiteral("/my footage")});
}

void TestFileReveal::folderIsOpenedWhenTheFileManagerRefuses()
{
    const StandInService fileManager(
        m_name, [](const QString &, const QVariantList &) { return std::nullopt; });
    const FolderOpener opener;
    revealFile(QStringLiteral("/footage/clip.MLV"));
    QTRY_COMPARE(opener.folders, QStringList{QStringLiteral("/footage")});
}

void TestFileReveal::nothingThatShowsItIsTold()
{
    const QObject context;
    QStringList told;
    {
        const FolderOpener opener;
        revealFile(QStringLiteral("/footage/clip.MLV"), &context,
                   [&](const QString &problem) { told << problem; });
        QTRY_COMPARE(opener.folders.size(), 1);
    }
    QCOMPARE(told, QStringList());
    // Without a handler and without a program that opens, which no search path leads to.
    qputenv("PATH", "/nonexistent");
    revealFile(QStringLiteral("/footage/clip.MLV"), &context,
               [&](const QString &problem) { told << problem; });
    QTRY_COMPARE(told,
                 QStringList{QStringLiteral("No file manager was found that shows /footage")});
}

FILMWRIGHT_TEST(TestFileReveal, QCoreApplication)
#include "tst_filereveal.moc"
