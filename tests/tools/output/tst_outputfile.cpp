// SPDX-License-Identifier: MIT
#include "output/outputfile.h"

#include "support/fulldisk.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using output::OutputFile;
using output::WriteError;

namespace {

std::span<const std::byte> bytesOf(std::string_view text)
{
    return std::as_bytes(std::span(text.data(), text.size()));
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("not there");
}

/// What WriteError says when `work` throws one.
template <typename Work>
QByteArray refusal(const Work &work)
{
    try {
        work();
    } catch (const WriteError &error) {
        return error.what();
    }
    return "not refused";
}

} // namespace

class TestOutputFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void fileHasItsNameOnlyWhenItIsComplete();
    void fileThatIsGivenUpLeavesNothing();
    void oldFileStaysUntilTheNewOneIsComplete();
    void leftoverThatIsALinkIsNotFollowed();
    void fileThatCannotBeCreatedIsAnError();
    void fullDiskIsAnErrorAndLeavesNothing();
    void nameThatCannotBeGivenIsAnErrorAndLeavesNothing();

    void replacementHasThePermissionsOfTheOldFile();
    void throughALinkTheFileItLeadsToIsReplaced();
    void replacementThatIsGivenUpLeavesTheOldFile();
    void twoReplacementsAtOnceDoNotMix();
    void whatIsNotThereIsNotReplaced();

private:
    QString write(const char *name, const char *content) const
    {
        const QString path = m_folder->filePath(QLatin1String(name));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) < 0)
            qFatal("%s can't be written", qPrintable(path));
        return path;
    }
    std::string path(const char *name) const
    {
        return m_folder->filePath(QLatin1String(name)).toStdString();
    }
    QStringList entries() const
    {
        return QDir(m_folder->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestOutputFile::fileHasItsNameOnlyWhenItIsComplete()
{
    OutputFile file(path("a.dng"));
    file.write(bytesOf("first "));
    file.write(bytesOf("second"));
    QCOMPARE(entries(), QStringList{QStringLiteral("a.dng.part")});
    file.commit();
    QCOMPARE(entries(), QStringList{QStringLiteral("a.dng")});
    QCOMPARE(contentOf(m_folder->filePath(QStringLiteral("a.dng"))), QByteArray("first second"));
}

void TestOutputFile::fileThatIsGivenUpLeavesNothing()
{
    {
        OutputFile file(path("a.dng"));
        file.write(bytesOf("x"));
        const OutputFile moved(std::move(file));
    }
    QVERIFY(entries().isEmpty());
}

void TestOutputFile::oldFileStaysUntilTheNewOneIsComplete()
{
    {
        OutputFile file(path("a.dng"));
        file.write(bytesOf("old"));
        file.commit();
    }
    OutputFile file(path("a.dng"));
    file.write(bytesOf("new"));
    QCOMPARE(contentOf(m_folder->filePath(QStringLiteral("a.dng"))), QByteArray("old"));
    file.commit();
    QCOMPARE(contentOf(m_folder->filePath(QStringLiteral("a.dng"))), QByteArray("new"));
}

void TestOutputFile::leftoverThatIsALinkIsNotFollowed()
{
    const auto victim = write("victim", "precious");
    QVERIFY(QFile::link(victim, m_folder->filePath(QStringLiteral("a.dng.part"))));
    OutputFile output(path("a.dng"));
    output.write(bytesOf("x"));
    output.commit();
    QCOMPARE(contentOf(victim), QByteArray("precious"));
}

void TestOutputFile::fileThatCannotBeCreatedIsAnError()
{
    QCOMPARE(refusal([&] { OutputFile(path("missing/a.dng")); }),
             QByteArray("can't be written beside: No such file or directory"));
}

void TestOutputFile::fullDiskIsAnErrorAndLeavesNothing()
{
    {
        const FullDisk disk(10);
        OutputFile file(path("a.dng"));
        file.write(bytesOf("eight by"));
        QCOMPARE(refusal([&] { file.write(bytesOf("tes and more")); }),
                 QByteArray("can't be written: File too large"));
    }
    QVERIFY(entries().isEmpty());
}

void TestOutputFile::nameThatCannotBeGivenIsAnErrorAndLeavesNothing()
{
    QVERIFY(QDir(m_folder->path()).mkpath(QStringLiteral("a.dng/in the way")));
    {
        OutputFile file(path("a.dng"));
        QCOMPARE(refusal([&] { file.commit(); }), QByteArray("can't be replaced: Is a directory"));
    }
    QCOMPARE(entries(), QStringList{QStringLiteral("a.dng")});
}

void TestOutputFile::replacementHasThePermissionsOfTheOldFile()
{
    const auto old = write("a.dng", "old");
    const auto permissions = QFile::ReadOwner | QFile::ReadGroup | QFile::ExeOther;
    QVERIFY(QFile::setPermissions(old, permissions));
    auto file = OutputFile::replacing(path("a.dng"));
    file.write(bytesOf("new"));
    QCOMPARE(contentOf(old), QByteArray("old"));
    file.commitToDisk();
    QCOMPARE(contentOf(old), QByteArray("new"));
    QCOMPARE(QFile::permissions(old) & ~(QFile::ReadUser | QFile::WriteUser | QFile::ExeUser),
             permissions);
    QCOMPARE(entries(), QStringList{QStringLiteral("a.dng")});
}

void TestOutputFile::throughALinkTheFileItLeadsToIsReplaced()
{
    const auto old = write("a.dng", "old");
    const auto link = m_folder->filePath(QStringLiteral("link.dng"));
    QVERIFY(QFile::link(old, link));
    auto file = OutputFile::replacing(path("link.dng"));
    file.write(bytesOf("new"));
    file.commit();
    QVERIFY(QFileInfo(link).isSymLink());
    QCOMPARE(contentOf(old), QByteArray("new"));
}

void TestOutputFile::replacementThatIsGivenUpLeavesTheOldFile()
{
    const auto old = write("a.dng", "old");
    {
        auto file = OutputFile::replacing(path("a.dng"));
        file.write(bytesOf("new"));
    }
    QCOMPARE(contentOf(old), QByteArray("old"));
    QCOMPARE(entries(), QStringList{QStringLiteral("a.dng")});
}

void TestOutputFile::twoReplacementsAtOnceDoNotMix()
{
    const auto old = write("a.dng", "old");
    auto first = OutputFile::replacing(path("a.dng"));
    auto second = OutputFile::replacing(path("a.dng"));
    first.write(bytesOf("first"));
    second.write(bytesOf("sec"));
    first.commit();
    QCOMPARE(contentOf(old), QByteArray("first"));
    second.write(bytesOf("ond"));
    second.commit();
    QCOMPARE(contentOf(old), QByteArray("second"));
}

void TestOutputFile::whatIsNotThereIsNotReplaced()
{
    QVERIFY_THROWS_EXCEPTION(std::system_error, OutputFile::replacing(path("missing.dng")));
    QVERIFY(entries().isEmpty());
}

FILMWRIGHT_TEST(TestOutputFile, QCoreApplication)
#include "tst_outputfile.moc"
