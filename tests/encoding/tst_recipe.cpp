// SPDX-License-Identifier: MIT
#include "encoding/recipe.h"
#include "encoding/recipes.h"
#include "encoding/shellwords.h"

#include "support/testprogram.h"
#include "support/words.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <random>

using namespace filmwright;

namespace {

const QByteArray good = "[Recipe]\n"
                        "Name=ProRes 422 HQ\n"
                        "Description=10 bits 4:2:2, for editing\n"
                        "Extension=mov\n"
                        "Suffix=\n"
                        "Develop=-6\n"
                        "Video=-c:v prores_ks -profile:v hq -pix_fmt yuv422p10le\n"
                        "Sound=-c:a pcm_s16le\n";

} // namespace

class TestRecipe : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void shellWordsOfALine_data();
    void shellWordsOfALine();
    void everyFieldIsRead();
    void fieldsMayBeMissing();
    void quotesOfAShell();
    void commentsAndBlankLines();
    void slips_data();
    void slips();
    void argumentsThatAreRefused_data();
    void argumentsThatAreRefused();
    void argumentsThatAreTaken_data();
    void argumentsThatAreTaken();
    void fileThatIsNoRecipe_data();
    void fileThatIsNoRecipe();
    void randomFilesDoNoHarm();
    void bundledRecipesAreInOrder_data();
    void bundledRecipesAreInOrder();
    void ownRecipeWinsAndIsListed();
    void recipeByFile();
    void unknownRecipeNamesTheOthers();
    void missingEncoderIsTold();
    void missingPixelFormatIsTold();
    void moviePath();

private:
    /// Each in a folder of its own: QSettings doesn't see changes that come too quickly.
    RecipeFile read(const QByteArray &content) const
    {
        static int number = 0;
        const QString folder = m_folder.filePath(QString::number(++number));
        QDir().mkpath(folder);
        QFile file(folder + QStringLiteral("/one.recipe"));
        if (file.open(QIODevice::WriteOnly))
            file.write(content);
        file.close();
        return readRecipe(file.fileName());
    }
    QString errorOf(const QByteArray &content) const
    {
        const RecipeFile file = read(content);
        return QString(file.error).remove(QFileInfo(file.recipe.path).path() + QLatin1Char('/'));
    }

    QTemporaryDir m_folder;
};

/// The person's configuration folder is one of our own.
void TestRecipe::initTestCase()
{
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_folder.filePath(QStringLiteral("config"))));
    QVERIFY(QDir().mkpath(m_folder.filePath(QStringLiteral("config/filmwright/recipes"))));
}

void TestRecipe::shellWordsOfALine_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<std::optional<QStringList>>("expected");
    const auto row = [](const char *line, const std::optional<QStringList> &expected) {
        QTest::newRow(line) << QString::fromUtf8(line) << expected;
    };
    row("", QStringList());
    row("  a  b\tc ", words("a b c"));
    row("'a b' \"c d\"", QStringList{QStringLiteral("a b"), QStringLiteral("c d")});
    row("a'b c'd", QStringList{QStringLiteral("ab cd")});
    row("'' \"\"", QStringList{QString(), QString()});
    row(R"(a\ b \' \\)",
        QStringList{QStringLiteral("a b"), QStringLiteral("'"), QStringLiteral("\\")});
    row(R"('a\b' "a\b" "a\"b")",
        QStringList{QStringLiteral(R"(a\b)"), QStringLiteral(R"(a\b)"), QStringLiteral("a\"b")});
    row("$HOME *.c `ls` > x", words("$HOME *.c `ls` > x"));
    row("'open", std::nullopt);
    row("\"open", std::nullopt);
    row("ends\\", std::nullopt);
}

void TestRecipe::shellWordsOfALine()
{
    QFETCH(QString, line);
    QTEST(shellWords(line), "expected");
}

void TestRecipe::everyFieldIsRead()
{
    const RecipeFile file = read(good + "FastStart=true\n");
    QCOMPARE(file.error, QString());
    const Recipe &recipe = file.recipe;
    QCOMPARE(recipe.id, QStringLiteral("one"));
    QCOMPARE(recipe.name, QStringLiteral("ProRes 422 HQ"));
    QCOMPARE(recipe.description, QStringLiteral("10 bits 4:2:2, for editing"));
    QCOMPARE(recipe.extension, QStringLiteral("mov"));
    QCOMPARE(recipe.suffix, QString());
    QCOMPARE(recipe.develop, words("-6"));
    QCOMPARE(recipe.video, words("-c:v prores_ks -profile:v hq -pix_fmt yuv422p10le"));
    QCOMPARE(recipe.sound, words("-c:a pcm_s16le"));
    QVERIFY(recipe.fastStart && recipe.developsSixteenBits() && !recipe.developsHalfSize());
    QCOMPARE(recipe.videoEncoder(), QStringLiteral("prores_ks"));
    QCOMPARE(recipe.soundEncoder(), QStringLiteral("pcm_s16le"));
    QVERIFY(!recipe.keepsRgb());
}

void TestRecipe::fieldsMayBeMissing()
{
    const RecipeFile file = read("[Recipe]\nExtension=avi\nVideo=-c:v ffv1 -pix_fmt gbrp16le\n");
    QCOMPARE(file.error, QString());
    QCOMPARE(file.recipe.name, QStringLiteral("one"));
    QVERIFY(file.recipe.sound.isEmpty() && file.recipe.develop.isEmpty());
    QVERIFY(!file.recipe.fastStart);
    QVERIFY(file.recipe.keepsRgb());
}

void TestRecipe::quotesOfAShell()
{
    const QStringList expected{QStringLiteral("-c:v"), QStringLiteral("libx264"),
                               QStringLiteral("-metadata"), QStringLiteral("title=a, b;c")};
    for (const char *video :
         {"'-c:v' libx264 -metadata \"title=a, b;c\"", R"("-c:v libx264 -metadata 'title=a, b;c'")",
          R"("-c:v libx264 -metadata \"title=a, b;c\"")"}) {
        const RecipeFile file = read(QByteArray("[Recipe]\nExtension=mov\nVideo=") + video + '\n');
        if (*video == '\'') { // which QSettings would take away
            QVERIFY(file.error.contains(QLatin1String(":3: bad quoting")));
            continue;
        }
        QCOMPARE(file.error, QString());
        QCOMPARE(file.recipe.video, expected);
    }
}

void TestRecipe::commentsAndBlankLines()
{
    QCOMPARE(errorOf("; one\n\n# two\n" + good + "\n   ; three\n"), QString());
}

void TestRecipe::slips_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("problem");
    const auto row = [](const char *name, const QByteArray &content, const char *problem) {
        QTest::newRow(name) << content << QString::fromUtf8(problem);
    };
    row("unknown field", good + "Colour=red\n",
        "one.recipe:9: unknown field \"Colour\"; there are Name, Description, Extension, Suffix, "
        "Develop, Video, Sound, FastStart");
    row("field in another case", good + "name=x\n",
        "one.recipe:9: unknown field \"name\"; there are Name, Description, Extension, Suffix, "
        "Develop, Video, Sound, FastStart");
    row("raw frames that are encoded", "[Recipe]\nExtension=dng\nSuffix=\nVideo=-c:v ffv1\n",
        "one.recipe:4: with Extension=dng there is no Video");
    row("raw frames that are developed", "[Recipe]\nDevelop=-6\nExtension=dng\n",
        "one.recipe:2: with Extension=dng there is no Develop");
    row("field twice", good + "Name=again\n", "one.recipe:9: Name is there twice");
    row("no field", good + "what\n",
        "one.recipe:9: neither a section, a comment nor a field with its value");
    row("other section", "[General]\n" + good, "one.recipe:1: the only section is [Recipe]");
    row("field before the section", "Name=x\n" + good, "one.recipe:1: [Recipe] is missing above");
    row("empty", "", "one.recipe: [Recipe] is missing");
    row("open quote of the file", "[Recipe]\nName=\"x\nExtension=mov\n",
        "one.recipe:2: bad quoting: a \" is not closed");
    row("open quote of the words", "[Recipe]\nExtension=mov\nVideo=-c:v 'x\n",
        "one.recipe:3: bad quoting: a ' or \" is not closed");
    row("value over two lines", "[Recipe]\nExtension=mov\nVideo=-c:v x \\\n -crf 3\n",
        "one.recipe:3: a value can't go on in the next line");
    row("value of another type", "[Recipe]\nName=@Variant(\\0\\0\\0)\n",
        "one.recipe:2: a value can't begin with @");
    row("control character", "[Recipe]\nExtension=mov\nName=a\\nb\nVideo=-c:v x\n",
        "one.recipe:3: Name has a control character");
    row("no extension", "[Recipe]\nVideo=-c:v x\n",
        "one.recipe: Extension is one of mov, mp4, avi, dng, not \"\"");
    row("other container", "[Recipe]\nName=x\nExtension=mkv\nVideo=-c:v x\n",
        "one.recipe:3: Extension is one of mov, mp4, avi, dng, not \"mkv\"");
    row("suffix with a folder", "[Recipe]\nExtension=mov\nSuffix=/../x\nVideo=-c:v x\n",
        "one.recipe:3: Suffix is a part of a file's name, at most 40 letters");
    row("no picture", "[Recipe]\nExtension=mov\n",
        "one.recipe: it names no encoder: -c:v is missing");
    row("missing encoder", "[Recipe]\nExtension=mov\nVideo=-crf 3\n",
        "one.recipe:3: it names no encoder: -c:v is missing");
    row("missing encoder of the sound", "[Recipe]\nExtension=mov\nVideo=-c:v x\nSound=-b:a 3\n",
        "one.recipe:4: it names no encoder: -c:a is missing");
    row("switch", good + "FastStart=maybe\n",
        "one.recipe:9: FastStart is true or false, not \"maybe\"");
    row("development", "[Recipe]\nExtension=mov\nDevelop=-6 -o 2\nVideo=-c:v x\n",
        "one.recipe:3: \"-o\" is not for recipes; -6, -h, -m, -n and -C are");
    row("development without its number", "[Recipe]\nExtension=mov\nDevelop=-m -6\nVideo=-c:v x\n",
        "one.recipe:3: -m lacks a number");
}

void TestRecipe::slips()
{
    QFETCH(QByteArray, content);
    QTEST(errorOf(content), "problem");
}

void TestRecipe::argumentsThatAreRefused_data()
{
    QTest::addColumn<QString>("reason");
    const auto row = [](const char *arguments, const char *reason) {
        QTest::newRow(arguments) << QString::fromUtf8(reason);
    };
    const char *output =
        "\"other.mov\" is neither an option nor an option's value; it would name another output";
    row("-c:v x other.mov", output);
    row("other.mov -c:v x", output);
    row("-c:v x -crf 3 other.mov", output);
    row("-c:v x -shortest other.mov", "-shortest is not for recipes");
    row("-c:v x -nostats other.mov", "-nostats is not for recipes");
    row("-c:v x -an", "-an is not for recipes");
    row("-c:v x -y", "-y is not for recipes");
    row("-c:v x -i film", "-i is not for recipes");
    row("-c:v x -report", "-report is not for recipes");
    row("-c:v x -f tee", "-f is not for recipes");
    row("-c:v x -f:v tee", "-f:v is not for recipes");
    row("-c:v x -vf null", "-vf is not for recipes");
    row("-c:v x -filter:v null", "-filter:v is not for recipes");
    row("-c:v x -map 0", "-map is not for recipes");
    row("-c:v x -t 3", "-t is not for recipes");
    row("-c:v x -r 30", "-r is not for recipes");
    row("-c:v x -passlogfile log", "-passlogfile is not for recipes");
    row("-c:v x -movflags frag_keyframe", "-movflags is not for recipes");
    row("-c:v x -crf", "-crf lacks its value");
    row("-c:v x --crf 3", "\"--crf\" is neither an option nor an option's value; it would name "
                          "another output");
    row("-c:v x -/crf file", "\"-/crf\" is neither an option nor an option's value; it would name "
                             "another output");
    row("-c:v x -preset /etc/passwd", "-preset names a file, \"/etc/passwd\"");
    row("-c:v x -preset file:name", "-preset names a file, \"file:name\"");
    row("-c:v x -preset pipe:1", "-preset names a file, \"pipe:1\"");
    row("-c:v libx265 -x265-params crf=3:csv=log", "-x265-params names a file, \"crf=3:csv=log\"");
    row("-c:v libx264 -x264-params stats=log", "-x264-params names a file, \"stats=log\"");
}

void TestRecipe::argumentsThatAreRefused()
{
    QFETCH(QString, reason);
    const QByteArray arguments = QTest::currentDataTag();
    QCOMPARE(errorOf("[Recipe]\nExtension=mov\nVideo=" + arguments + '\n'),
             QStringLiteral("one.recipe:3: ") + reason);
}

void TestRecipe::argumentsThatAreTaken_data()
{
    QTest::addColumn<QByteArray>("arguments");
    for (const char *arguments :
         {"-c:v libx264 -crf 17 -preset medium -tune film -x264-params keyint=24:bframes=2",
          "-vcodec libx264 -s 1280x720 -aspect 16/9 -b:v 8M -maxrate 10M -bufsize 20M",
          "-codec:v dnxhd -profile:v dnxhr_hq -pix_fmt yuv422p -bf -1 -tag:v AVdh",
          "-c:v libx264 -metadata copyright=me -force_key_frames expr:gte(t\\,n_forced*2)"})
        QTest::newRow(arguments) << QByteArray(arguments);
}

void TestRecipe::argumentsThatAreTaken()
{
    QFETCH(QByteArray, arguments);
    QCOMPARE(
        errorOf("[Recipe]\nExtension=mov\nVideo=\"" + arguments.replace("\\", "\\\\") + "\"\n"),
        QString());
}

void TestRecipe::fileThatIsNoRecipe_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("reason");
    QTest::newRow("too long") << QByteArray(70000, ';') << "it is too long for a recipe";
    QTest::newRow("zeros") << QByteArray(100, '\0') << "it is no text in UTF-8";
    QTest::newRow("Latin 1") << QByteArray("[Recipe]\nName=\xfc\n") << "it is no text in UTF-8";
    QTest::newRow("lone carriage return")
        << QByteArray("[Recipe]\rName=x\n") << "it is no text in UTF-8";
}

void TestRecipe::fileThatIsNoRecipe()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, reason);
    QCOMPARE(errorOf(content), QStringLiteral("one.recipe: ") + reason);
    QCOMPARE(readRecipe(QStringLiteral("/no/such.recipe")).error,
             QStringLiteral("/no/such.recipe: there is no such file"));
    QCOMPARE(readRecipe(QStringLiteral("/dev/null")).error,
             QStringLiteral("/dev/null: there is no such file"));
}

/// Bytes at random, and good recipes with bytes changed at random.
void TestRecipe::randomFilesDoNoHarm()
{
    std::mt19937 generator(20261122);
    int refused = 0;
    for (int number = 0; number < 200; ++number) {
        QByteArray content = good;
        if (number % 2 == 0)
            content = QByteArray(int(generator() % 2000), '\0');
        const int changes = number % 2 == 0 ? int(content.size()) : 1 + number % 7;
        for (int change = 0; change < changes && !content.isEmpty(); ++change)
            content[qsizetype(generator() % quint32(content.size()))] = char(generator());
        const RecipeFile file = read(content);
        if (file.error.isEmpty()) {
            QVERIFY(file.recipe.keepsRawFrames() != !file.recipe.videoEncoder().isEmpty());
        } else {
            ++refused;
            QVERIFY(file.error.startsWith(file.recipe.path + QLatin1Char(':')));
        }
    }
    QVERIFY(refused >= 100); // what is random throughout is never a recipe
}

void TestRecipe::bundledRecipesAreInOrder_data()
{
    QTest::addColumn<bool>("deep");
    QTest::addColumn<QString>("extension");
    for (const char *name : {"prores-lt", "prores-hq", "prores-4444", "dnxhr-hqx", "hevc-10"})
        QTest::newRow(name) << true << "mov";
    QTest::newRow("ffv1") << true << "avi";
    QTest::newRow("web") << false << "mp4";
    QTest::newRow("draft") << false << "mov";
    QTest::newRow("cinema-dng") << false << "dng";
}

void TestRecipe::bundledRecipesAreInOrder()
{
    const RecipeFile file = readRecipe(
        QStringLiteral(RECIPES "/%1.recipe").arg(QString::fromUtf8(QTest::currentDataTag())));
    QCOMPARE(file.error, QString());
    QVERIFY(!file.recipe.description.isEmpty());
    QTEST(file.recipe.developsSixteenBits(), "deep");
    QTEST(file.recipe.extension, "extension");
    QCOMPARE(QDir(QStringLiteral(RECIPES)).entryList(QDir::Files).size(), 9);
}

void TestRecipe::ownRecipeWinsAndIsListed()
{
    const QString own = recipeFolders().constFirst();
    QCOMPARE(own, m_folder.filePath(QStringLiteral("config/filmwright/recipes")));
    QVERIFY(QFile::copy(read(good).recipe.path, own + QStringLiteral("/mine.recipe")));
    QVERIFY(QFile(own + QStringLiteral("/notes.txt")).open(QIODevice::WriteOnly));
    QVERIFY(QFile(own + QStringLiteral("/broken.recipe")).open(QIODevice::WriteOnly));
    QStringList names;
    const QList<RecipeFile> recipes = foundRecipes();
    for (const RecipeFile &file : recipes)
        names << file.recipe.id + (file.error.isEmpty() ? QString() : QStringLiteral("!"));
    QCOMPARE(names, words("broken! mine"));
    QCOMPARE(findRecipe(QStringLiteral("mine")).recipe.path, own + QStringLiteral("/mine.recipe"));
}

void TestRecipe::recipeByFile()
{
    const QString path = read(good).recipe.path;
    QCOMPARE(findRecipe(path).recipe.name, QStringLiteral("ProRes 422 HQ"));
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(QFileInfo(path).path()));
    const RecipeFile relative = findRecipe(QStringLiteral("one.recipe"));
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(relative.error, QString());
}

void TestRecipe::unknownRecipeNamesTheOthers()
{
    QCOMPARE(findRecipe(QStringLiteral("prores")).error,
             QStringLiteral("there is no recipe \"prores\"; there are broken, mine"));
}

void TestRecipe::missingEncoderIsTold()
{
    const Recipe recipe = read(good).recipe;
    const auto named = [](const char *name) {
        return CapabilityList{{{QStringLiteral("NAME"), QString::fromUtf8(name)}}};
    };
    const QString video = QStringLiteral("video_encoders");
    const QString sound = QStringLiteral("audio_encoders");
    QCOMPARE(encoderError({{video, named("prores_ks")}, {sound, named("pcm_s16le")}}, recipe),
             QString());
    QCOMPARE(encoderError({{video, named("prores")}, {sound, named("pcm_s16le")}}, recipe),
             QStringLiteral("ffmpeg has no encoder \"prores_ks\""));
    QCOMPARE(encoderError({{video, named("prores_ks")}}, recipe),
             QStringLiteral("ffmpeg has no encoder \"pcm_s16le\""));
    QCOMPARE(encoderError({}, read("[Recipe]\nExtension=dng\n").recipe), QString());
}

void TestRecipe::missingPixelFormatIsTold()
{
    Recipe recipe = read(good).recipe;
    recipe.video = QStringList{QStringLiteral("-c:v"), QStringLiteral("prores_ks"),
                               QStringLiteral("-pix_fmt"), QStringLiteral("yuv420p")};
    const QStringList supported{QStringLiteral("yuv422p10le"), QStringLiteral("yuv444p10le")};
    QCOMPARE(pixelFormatError(supported, recipe),
             QStringLiteral("ffmpeg's encoder \"prores_ks\" takes no pixels of the format "
                            "\"yuv420p\", but yuv422p10le, yuv444p10le"));
    QCOMPARE(pixelFormatError({}, recipe), QString());
    recipe.video.last() = supported.constLast();
    QCOMPARE(pixelFormatError(supported, recipe), QString());
    recipe.video = recipe.video.mid(0, 2); // the encoder chooses
    QCOMPARE(pixelFormatError(supported, recipe), QString());
}

void TestRecipe::moviePath()
{
    Recipe recipe = read(good).recipe;
    QCOMPARE(moviePathFor(QStringLiteral("/a/b.c.MLV"), recipe), QStringLiteral("/a/b.c.mov"));
    recipe.suffix = QStringLiteral(".draft");
    QCOMPARE(moviePathFor(QStringLiteral("/a/b.c.MLV"), recipe),
             QStringLiteral("/a/b.c.draft.mov"));
    const Recipe raw = read("[Recipe]\nExtension=dng\n").recipe;
    QCOMPARE(moviePathFor(QStringLiteral("/a/b.c.MLV"), raw), QStringLiteral("/a/b.c"));
}

FILMWRIGHT_TEST(TestRecipe, QCoreApplication)
#include "tst_recipe.moc"
