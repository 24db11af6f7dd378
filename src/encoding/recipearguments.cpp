// SPDX-License-Identifier: MIT
#include "encoding/recipearguments.h"

#include <QRegularExpression>
#include <QSet>

#include <algorithm>

namespace filmwright {

namespace {

QSet<QString> setOf(const char *words)
{
    const QStringList list = QString::fromLatin1(words).split(QLatin1Char(' '));
    return {list.cbegin(), list.cend()};
}

/// ffmpeg's own options (as opposed to those of encoders) that take no value, from "ffmpeg -h full"
/// of the versions 5.1 and 7.1. What follows them would be taken for the movie's name.
bool hasNoValue(const QString &name)
{
    static const QSet<QString> names = setOf(
        "L ? version buildconf formats muxers demuxers devices codecs decoders encoders bsfs "
        "protocols filters pix_fmts layouts sample_fmts dispositions colors hwaccels report y n "
        "ignore_unknown stats copy_unknown recast_media benchmark benchmark_all stdin dump hex "
        "copyts start_at_zero auto_conversion_filters debug_ts psnr vstats qphist seek_timestamp "
        "accurate_seek re shortest bitexact copyinkf find_stream_info autorotate autoscale vn an "
        "sn dn force_fps fix_sub_duration hide_banner xerror print_graphs "
        "fix_sub_duration_heartbeat "
        "display_hflip display_vflip apply_cropping");
    return names.contains(name) ||
           (name.startsWith(QLatin1String("no")) && names.contains(name.mid(2)));
}

/// Options that name files, streams or graphs, or decide what is Filmwright's to decide.
bool isRefused(const QString &name)
{
    static const QSet<QString> names = setOf(
        "i f progress attach dump_attachment passlogfile pass vstats_file filter_script "
        "filter_complex filter_complex_script lavfi vf filter af stats_enc_pre stats_enc_post "
        "stats_mux_pre sdp_file init_hw_device filter_hw_device hwaccel target pre vpre apre "
        "spre fpre map map_metadata map_chapters map_channel t to ss sseof r fpsmax frames "
        "vframes aframes dframes fs vsync async fps_mode itsoffset itsscale stream_loop "
        "isync timecode movflags loglevel v help h program stream_group tag_file "
        "protocol_whitelist protocol_blacklist format_whitelist timelimit discard timestamp "
        "enc_time_base time_base copytb "
        "color_range colorspace color_primaries color_trc");
    return names.contains(name);
}

/// "24000/1001" is a number; any other value with a slash is a path or an address. So is one with a
/// protocol in front.
bool namesFile(const QString &value)
{
    static const QRegularExpression ratio(QStringLiteral("^\\d+/\\d+$"));
    static const QRegularExpression protocol(QStringLiteral(
        "^(async|cache|concat|concatf|crypto|data|fd|ffrtmp\\w*|file|ftp|gophers?|hls|httpproxy|"
        "https?|icecast|ipfs|ipns|md5|mms\\w*|pipe|prompeg|rtmp\\w*|rtp|rtsp|sctp|srt|srtp|subfile|"
        "tcp|tee|tls|udp|udplite|unix|zmq)[:,]"));
    // Those of the encoders' own parameter lists.
    static const QRegularExpression parameter(QStringLiteral(
        "(^|:)(stats|csv|qpfile|cqmfile|tcfile-(in|out)|zonefile|lambda-file|scaling-list|recon|"
        "dolby-vision-rpu|dhdr10-info|analysis-(save|load|reuse-file)|dump-yuv|log-file|input|"
        "output|opencl-clbin|film-grain|nnedi3_weights)="));
    return (value.contains(QLatin1Char('/')) && !ratio.match(value).hasMatch()) ||
           protocol.match(value).hasMatch() || parameter.match(value).hasMatch();
}

bool isOption(const QString &word)
{
    static const QRegularExpression option(
        QStringLiteral("^-[A-Za-z][A-Za-z0-9_-]*(:[A-Za-z0-9_]+)*$"));
    return option.match(word).hasMatch();
}

QString nameOf(const QString &option)
{
    return option.mid(1).section(QLatin1Char(':'), 0, 0);
}

bool isEncoderOption(const QString &option, QChar stream)
{
    return option == QStringLiteral("-c:%1").arg(stream) ||
           option == QStringLiteral("-codec:%1").arg(stream) ||
           option == QStringLiteral("-%1codec").arg(stream);
}

/// How many values one of dcraw's options takes; -1: not in a recipe.
int developmentValues(const QString &option)
{
    if (option == QLatin1String("-6") || option == QLatin1String("-h"))
        return 0;
    if (option == QLatin1String("-m") || option == QLatin1String("-n"))
        return 1;
    return option == QLatin1String("-C") ? 2 : -1;
}

} // namespace

QString encodingError(const QStringList &words, QChar stream)
{
    for (qsizetype i = 0; i < words.size(); i += 2) {
        const QString &option = words.at(i);
        if (!isOption(option)) {
            return QStringLiteral(
                       "\"%1\" is neither an option nor an option's value; it would name another "
                       "output")
                .arg(option);
        }
        if (hasNoValue(nameOf(option)) || isRefused(nameOf(option)))
            return QStringLiteral("%1 is not for recipes").arg(option);
        if (i + 1 == words.size())
            return QStringLiteral("%1 lacks its value").arg(option);
        if (namesFile(words.at(i + 1)))
            return QStringLiteral("%1 names a file, \"%2\"").arg(option, words.at(i + 1));
    }
    if (encoderIn(words, stream).isEmpty())
        return QStringLiteral("it names no encoder: -c:%1 is missing").arg(stream);
    return {};
}

QString developmentError(const QStringList &words)
{
    static const QRegularExpression number(QStringLiteral("^\\d{1,6}(\\.\\d{1,6})?$"));
    for (qsizetype i = 0; i < words.size(); ++i) {
        const QString &option = words.at(i);
        const int values = developmentValues(option);
        if (values < 0)
            return QStringLiteral("\"%1\" is not for recipes; -6, -h, -m, -n and -C are")
                .arg(option);
        for (int value = 0; value < values; ++value)
            if (!number.match(words.value(++i)).hasMatch())
                return QStringLiteral("%1 lacks a number").arg(option);
    }
    return {};
}

QString encoderIn(const QStringList &words, QChar stream)
{
    QString encoder;
    for (qsizetype i = 0; i + 1 < words.size(); i += 2)
        if (isEncoderOption(words.at(i), stream))
            encoder = words.at(i + 1);
    return encoder;
}

} // namespace filmwright
