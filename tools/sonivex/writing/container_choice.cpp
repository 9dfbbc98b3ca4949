#include "container_choice.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <set>

#include "failure.h"
#include "result_stream.h"
#include "vorlin/av_format_compat.h"

namespace sonivex_tool {
namespace {

// Extensions of files that hold sound only, although their muxers hold video as well.
constexpr std::array<const char*, 8> kAudioExtensions = {".m4a", ".m4b", ".m4r", ".mka",
                                                         ".ogg", ".oga", ".wma", ".opus"};

std::string extensionOf(const std::string& path) {
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

// Returns true if the format holds only samples. A player would have to guess their sample rate and channels.
bool isHeaderless(const AVOutputFormat& muxer) {
    const std::string name = muxer.name;
    if (name == "aptx" || name == "aptx_hd" || name == "dfpwm") return true;
    return avcodec_get_name(muxer.audio_codec) == "pcm_" + name;
}

bool isAudioFile(const AVOutputFormat& muxer) {
    return (muxer.flags & (AVFMT_NOFILE | AVFMT_NEEDNUMBER)) == 0 && muxer.audio_codec != AV_CODEC_ID_NONE;
}

Failure refusal(const OutputSettings& settings, const std::string& reason) {
    return {ExitCode::OutputFormat, "cannot write \"" + settings.path + "\": " + reason};
}

// Accepts libavformat's names ("matroska") and the extensions of files ("mkv").
const AVOutputFormat* namedContainer(const OutputSettings& settings) {
    const std::string& name = *settings.format;
    const AVOutputFormat* muxer = av_guess_format(name.c_str(), nullptr, nullptr);
    if (muxer == nullptr) muxer = av_guess_format(nullptr, ("out." + name).c_str(), nullptr);
    if (muxer == nullptr) throw refusal(settings, "unknown file format \"" + name + "\" given to --format");
    if (!isAudioFile(*muxer))
        throw refusal(settings, "\"" + name + "\", given to --format, is not an audio file format");
    return muxer;
}

bool isPicture(AVCodecID codec) {
    return codec == AV_CODEC_ID_MJPEG || codec == AV_CODEC_ID_PNG || codec == AV_CODEC_ID_BMP ||
           codec == AV_CODEC_ID_GIF || codec == AV_CODEC_ID_TIFF || codec == AV_CODEC_ID_WEBP;
}

// Codecs of containers whose muxers do not tell.
bool holdsByTable(const AVOutputFormat& muxer, AVCodecID codec) {
    static const std::set<AVCodecID> transport_stream = {
        AV_CODEC_ID_MPEG1VIDEO,   AV_CODEC_ID_MPEG2VIDEO,
        AV_CODEC_ID_MPEG4,        AV_CODEC_ID_H264,
        AV_CODEC_ID_HEVC,         AV_CODEC_ID_VC1,
        AV_CODEC_ID_DIRAC,        AV_CODEC_ID_CAVS,
        AV_CODEC_ID_MP1,          AV_CODEC_ID_MP2,
        AV_CODEC_ID_MP3,          AV_CODEC_ID_AAC,
        AV_CODEC_ID_AAC_LATM,     AV_CODEC_ID_AC3,
        AV_CODEC_ID_EAC3,         AV_CODEC_ID_DTS,
        AV_CODEC_ID_TRUEHD,       AV_CODEC_ID_OPUS,
        AV_CODEC_ID_S302M,        AV_CODEC_ID_DVB_SUBTITLE,
        AV_CODEC_ID_DVB_TELETEXT, AV_CODEC_ID_HDMV_PGS_SUBTITLE};
    static const std::set<AVCodecID> program_stream = {
        AV_CODEC_ID_MPEG1VIDEO, AV_CODEC_ID_MPEG2VIDEO, AV_CODEC_ID_MP1,         AV_CODEC_ID_MP2,
        AV_CODEC_ID_AC3,        AV_CODEC_ID_DTS,        AV_CODEC_ID_DVD_SUBTITLE};
    static const std::set<AVCodecID> ogg = {AV_CODEC_ID_VORBIS, AV_CODEC_ID_OPUS,   AV_CODEC_ID_FLAC,
                                            AV_CODEC_ID_SPEEX,  AV_CODEC_ID_THEORA, AV_CODEC_ID_VP8};
    if (isOneOf(muxer, "mpegts")) return transport_stream.contains(codec);
    if (isOneOf(muxer, "mpeg vob svcd dvd vcd")) return program_stream.contains(codec);
    if (isOneOf(muxer, "ogg ogv oga"))
        return ogg.contains(codec) &&
               (muxer.video_codec != AV_CODEC_ID_NONE || avcodec_get_type(codec) == AVMEDIA_TYPE_AUDIO);
    return false;
}

}  // namespace

bool isOneOf(const AVOutputFormat& muxer, const std::string& names) {
    return (" " + names + " ").find(" " + std::string(muxer.name) + " ") != std::string::npos;
}

bool goesToStandardOutput(const OutputSettings& settings) {
    return namesStandardOutput(settings.path);
}

const AVOutputFormat* chooseContainer(const OutputSettings& settings) {
    if (settings.format) return namedContainer(settings);
    if (goesToStandardOutput(settings)) {
        throw Failure(ExitCode::OutputFormat,
                      "cannot write to standard output: its format is unknown; give it with --format, as in "
                      "--format wav");
    }
    const std::string& path = settings.path;
    const std::string extension = std::filesystem::path(path).extension().string();
    const AVOutputFormat* muxer = extension.empty() ? av_guess_format("wav", nullptr, nullptr)
                                                    : av_guess_format(nullptr, path.c_str(), nullptr);
    if (muxer == nullptr) throw refusal(settings, "unknown file format \"" + extension + "\"");
    if (!isAudioFile(*muxer)) throw refusal(settings, "\"" + extension + "\" is not an audio file format");
    if (isHeaderless(*muxer)) {
        throw refusal(settings,
                      "\"" + extension + "\" files store neither the sample rate nor the channel count");
    }
    return muxer;
}

bool isForFilms(const AVOutputFormat& muxer, const std::string& path) {
    const std::string extension = extensionOf(path);
    if (std::find(kAudioExtensions.begin(), kAudioExtensions.end(), extension) != kAudioExtensions.end())
        return false;
    // These two hold films only in files named so.
    if (isOneOf(muxer, "ipod")) return extension == ".m4v";
    if (isOneOf(muxer, "ogg oga opus spx")) return extension == ".ogv";
    return muxer.video_codec != AV_CODEC_ID_NONE && !isPicture(muxer.video_codec);
}

bool holdsSeveralStreams(const AVOutputFormat& muxer) {
    return isOneOf(muxer,
                   "matroska webm mp4 mov ipod psp 3gp 3g2 f4v avi mpegts mpeg vob svcd dvd asf ogg oga ogv "
                   "nut mxf");
}

bool holds(const AVOutputFormat& muxer, AVCodecID codec) {
    if (isOneOf(muxer, "mpegts mpeg vob svcd dvd vcd ogg ogv oga")) return holdsByTable(muxer, codec);
    if (codec == AV_CODEC_ID_NONE) return false;
    const int answer = avformat_query_codec(&muxer, codec, FF_COMPLIANCE_NORMAL);
    return answer == 1 || codec == muxer.audio_codec;
}

bool holdsPicture(const AVOutputFormat& muxer, AVCodecID codec) {
    if (!isPicture(codec)) return false;
    if (holdsAttachments(muxer)) return true;
    const bool is_common = codec == AV_CODEC_ID_MJPEG || codec == AV_CODEC_ID_PNG;
    return is_common && isOneOf(muxer, "mp3 flac aiff mp4 ipod");
}

bool holdsAttachments(const AVOutputFormat& muxer) {
    return isOneOf(muxer, "matroska");
}

bool holdsRotation(const AVOutputFormat& muxer) {
    if (isOneOf(muxer, "matroska webm")) return Vorlin::av::kMatroskaHoldsRotation;
    return isOneOf(muxer, "mp4 mov ipod psp 3gp 3g2 f4v ismv");
}

bool needsSeeking(const AVOutputFormat& muxer) {
    return isOneOf(muxer, "aiff w64 au voc");
}

bool leavesDelayToCaller(const AVOutputFormat& muxer, AVCodecID codec) {
    if (Vorlin::av::kMatroskaDelaysBlocks) return false;
    return codec == AV_CODEC_ID_OPUS && isOneOf(muxer, "matroska webm");
}

bool holdsChapters(const AVOutputFormat& muxer) {
    return isOneOf(muxer, "matroska webm mp4 mov ipod opus mp3 asf nut");
}

}  // namespace sonivex_tool
