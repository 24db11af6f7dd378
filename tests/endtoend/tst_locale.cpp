// SPDX-License-Identifier: MIT
// Locales in which people start a program without having chosen them: cron's, ssh's, a server's.

#include "commandline.h"
#include "sample.h"
#include "support/testprogram.h"
#include "support/toolfolder.h"

#include <QFile>
#include <QTest>

class TestLocale : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(writeSample(path(QStringLiteral("Übung 映画.MLV")),
                            QStringLiteral("--size 128x72 --frames 2")));
    }

    void recordingIsConvertedWithoutAWordAboutTheLocale_data();
    void recordingIsConvertedWithoutAWordAboutTheLocale();

private:
    QString path(const QString &name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
};

void TestLocale::recordingIsConvertedWithoutAWordAboutTheLocale_data()
{
    QTest::addColumn<QString>("variable");
    QTest::addColumn<QString>("locale");
    QTest::newRow("none") << QString() << QString();
    QTest::newRow("C for everything") << "LC_ALL"
                                      << "C";
    QTest::newRow("C for characters") << "LC_CTYPE"
                                      << "C";
    QTest::newRow("POSIX") << "LANG"
                           << "POSIX";
    QTest::newRow("one that isn't installed") << "LANG"
                                              << "xx_XX.UTF-8";
    QTest::newRow("UTF-8") << "LANG"
                           << "C.UTF-8";
}

void TestLocale::recordingIsConvertedWithoutAWordAboutTheLocale()
{
    QFETCH(QString, variable);
    QFETCH(QString, locale);
    ToolFolder tools;
    const QString seen = path(QStringLiteral("seen"));
    tools.addTool(QStringLiteral("ffmpeg"),
                  QStringLiteral("env | grep -E '^(LC_[A-Z]+|LANG)=' >'%1'; exec %2 \"$@\"")
                      .arg(seen, realTool(QStringLiteral("ffmpeg"))));
    CommandLine cli;
    for (const QString &key : cli.environment.keys())
        if (key.startsWith(QLatin1String("LC_")) || key == QLatin1String("LANG"))
            cli.environment.remove(key);
    if (!variable.isEmpty())
        cli.environment.insert(variable, locale);
    QVERIFY(cli.run({QStringLiteral("convert"), path(QStringLiteral("Übung 映画.MLV"))}));
    QCOMPARE(cli.output(), QStringList{path(QStringLiteral("Übung 映画.mov"))});
    for (const QString &message : cli.messages())
        QVERIFY2(message.startsWith(QStringLiteral("Übung 映画.")), qPrintable(message));

    // The tools are given what the person chose.
    QFile file(seen);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString chosen =
        variable.isEmpty() ? QString() : variable + QLatin1Char('=') + locale + QLatin1Char('\n');
    QCOMPARE(QString::fromUtf8(file.readAll()), chosen);
}

FILMWRIGHT_TEST(TestLocale, QCoreApplication)
#include "tst_locale.moc"
