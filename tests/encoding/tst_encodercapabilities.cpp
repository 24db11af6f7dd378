// SPDX-License-Identifier: MIT
#include "encoding/encodercapabilities.h"
#include "encoding/ffmpegtask.h"
#include "support/logcapture.h"
#include "support/testprogram.h"
#include "support/toolfolder.h"

#include <QTest>

using namespace filmwright;

namespace {

CapabilityRecord pixFmt(const char *name, const char *components)
{
    return {{QStringLiteral("NAME"), QString::fromUtf8(name)},
            {QStringLiteral("NB_COMPONENTS"), QString::fromUtf8(components)},
            {QStringLiteral("BITS_PER_PIXEL"), QString::fromUtf8(components)}};
}

CapabilityRecord encoder(const char *name, const char *title)
{
    return {{QStringLiteral("NAME"), QString::fromUtf8(name)},
            {QStringLiteral("TITLE"), QString::fromUtf8(title)}};
}

QStringList texts(std::initializer_list<const char *> lines)
{
    QStringList list;
    for (const char *line : lines)
        list << QString::fromUtf8(line);
    return list;
}

const char *const legend = " V..... = Video";
const char *const separator = " ------";

} // namespace

class TestEncoderCapabilities : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bitsPerPixelHoldTheComponents()
    {
        QCOMPARE(pixFmtsIn(texts({"Pixel formats:", "I.... = Supported Input format",
                                  "FLAGS NAME            NB_COMPONENTS BITS_PER_PIXEL", "-----",
                                  "IO... yuv420p                3            12",
                                  "..H.. vdpau                  0             0",
                                  ".IO.. bgra                   4            32",
                                  "O.... IO                     3            24",
                                  "IO... gray                   1             8"})),
                 (CapabilityList{pixFmt("yuv420p", "3"), pixFmt("gray", "1")}));
    }

    void pixelFormatWithThreeFieldsIsLogged()
    {
        const LogCapture log;
        QCOMPARE(pixFmtsIn(texts({"IO... yuv420p 3"})), CapabilityList());
        QCOMPARE(LogCapture::lines(), texts({"Unable to parse PixFmts line: \"IO... yuv420p 3\""}));
    }

    void tableWithAFifthColumnGivesNoPixelFormat()
    {
        const LogCapture log;
        QCOMPARE(pixFmtsIn(texts({"IO... yuv420p 3 12 8-8-8", "IO... gray 1 8 8"})),
                 CapabilityList());
        QCOMPARE(LogCapture::lines().size(), 2);
    }

    void encodersOfBothKindsAreTakenFromOneTable()
    {
        const QStringList table =
            texts({"Encoders:", legend, " A..... = Audio", separator,
                   " V....D libx264              libx264 H.264 / AVC (codec h264)",
                   " A....D aac                  AAC (Advanced Audio Coding)",
                   " S..... srt                  SubRip subtitle"});
        QCOMPARE(videoEncodersIn(table),
                 (CapabilityList{encoder("libx264", "libx264 H.264 / AVC (codec h264)")}));
        QCOMPARE(audioEncodersIn(table),
                 (CapabilityList{encoder("aac", "AAC (Advanced Audio Coding)")}));
    }

    void withoutASeparatorThereAreNoEncoders()
    {
        const QStringList table = texts({legend, " V....D libx264 H.264"});
        QCOMPARE(videoEncodersIn(table), CapabilityList());
        QCOMPARE(audioEncodersIn(table), CapabilityList());
    }

    void lineWithoutItsLeadingBlankIsSkipped()
    {
        QCOMPARE(videoEncodersIn(texts({separator, "V....D libx264 H.264"})), CapabilityList());
    }

    void encoderLineWithTwoFieldsIsLogged()
    {
        const LogCapture log;
        const QStringList table = texts({separator, " V....D libx264", " A....D aac"});
        QCOMPARE(videoEncodersIn(table), CapabilityList());
        QCOMPARE(audioEncodersIn(table), CapabilityList());
        QCOMPARE(LogCapture::lines(),
                 texts({"Unable to parse video encoder line: \" V....D libx264\"",
                        "Unable to parse audio encoder line: \" A....D aac\""}));
    }

    void nameInsideTheFlagsCutsTheTitleThere()
    {
        QCOMPARE(videoEncodersIn(texts({separator, " VFS..D FS some codec"})),
                 (CapabilityList{encoder("FS", ".D FS some codec")}));
    }

    void onlyBlanksAreFolded()
    {
        QCOMPARE(removeExcessWhitespace(QStringLiteral("  a   b\t\tc \n")),
                 QStringLiteral("a b\t\tc"));
    }

    void bothProbesRunInOrder()
    {
        ToolFolder tools;
        tools.addTool(QStringLiteral("ffmpeg"),
                      QStringLiteral("case $1 in -pix_fmts) echo 'IO... gray 1 8';; *) "
                                     "printf ' ------\\n V..... raw  Raw video\\n';; esac"));
        const auto task = FFmpegTask::ffmpegTask();
        const QMap<QString, CapabilityList> options = task->readOptions();
        QCOMPARE(options, (QMap<QString, CapabilityList>{
                              {QStringLiteral("pix_fmts"), {pixFmt("gray", "1")}},
                              {QStringLiteral("video_encoders"), {encoder("raw", "Raw video")}},
                              {QStringLiteral("audio_encoders"), {}}}));
        QCOMPARE(tools.calls(QStringLiteral("ffmpeg")),
                 (QList<QStringList>{texts({"-pix_fmts"}), texts({"-encoders"})}));
    }

    void pixelFormatsOfAnEncoder()
    {
        QCOMPARE(supportedPixFmtsIn(
                     texts({"Encoder x [X]:", "    General capabilities: threads ",
                            "    Supported pixel formats: yuv420p gbrp16le", "x AVOptions:"})),
                 texts({"yuv420p", "gbrp16le"}));
        QCOMPARE(supportedPixFmtsIn(texts({"Codec 'x' is not recognized by FFmpeg."})),
                 QStringList());
    }

    void silentToolGivesEmptyLists()
    {
        ToolFolder tools;
        tools.addTool(QStringLiteral("ffmpeg"), QStringLiteral("exit 1"));
        const auto options = FFmpegTask::ffmpegTask()->readOptions();
        QCOMPARE(options.size(), 3);
        for (const CapabilityList &list : options)
            QVERIFY(list.isEmpty());
    }

    void realToolKnowsTheCodecsOfTheMovies()
    {
        const LogCapture log; // this ffmpeg may print a fifth column of pixel formats
        const auto options = FFmpegTask::ffmpegTask()->readOptions();
        const auto names = [&options](const char *list) {
            QStringList found;
            for (const CapabilityRecord &record : options.value(QString::fromUtf8(list)))
                found << record.value(QStringLiteral("NAME"));
            return found;
        };
        for (const char *codec : {"rawvideo", "mpeg4", "libx264"})
            QVERIFY2(names("video_encoders").contains(QString::fromUtf8(codec)), codec);
        QVERIFY(names("audio_encoders").contains(QStringLiteral("pcm_s16le")));

        const auto ffmpeg = FFmpegTask::ffmpegTask();
        Recipe recipe;
        recipe.video = texts({"-c:v", "libx264", "-pix_fmt", "yuv420p"});
        QCOMPARE(ffmpeg->recipeError(recipe), QString());
        recipe.video.last() = QStringLiteral("gbrp16le");
        QVERIFY(ffmpeg->recipeError(recipe).startsWith(
            QLatin1String("ffmpeg's encoder \"libx264\" takes no pixels of the format")));
    }
};

FILMWRIGHT_TEST(TestEncoderCapabilities, QCoreApplication)
#include "tst_encodercapabilities.moc"
