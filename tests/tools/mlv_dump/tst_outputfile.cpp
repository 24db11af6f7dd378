// SPDX-License-Identifier: MIT
#include "mlv_dump/outputfile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using mlvdump::OutputFile;

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

private:
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
    const auto victim = m_folder->filePath(QStringLiteral("victim"));
    QFile file(victim);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("precious");
    file.close();
    QVERIFY(QFile::link(victim, m_folder->filePath(QStringLiteral("a.dng.part"))));
    OutputFile output(path("a.dng"));
    output.write(bytesOf("x"));
    output.commit();
    QCOMPARE(contentOf(victim), QByteArray("precious"));
}

void TestOutputFile::fileThatCannotBeCreatedIsAnError()
{
    QVERIFY_THROWS_EXCEPTION(mlvdump::WriteError, OutputFile(path("missing/a.dng")));
}

QTEST_APPLESS_MAIN(TestOutputFile)
#include "tst_outputfile.moc"
