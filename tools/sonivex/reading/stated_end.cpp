#include "stated_end.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "wav_end.h"

namespace sonivex_tool {
namespace {

// Matroska states the length of a stream in a tag, "00:00:06.021000000".
std::optional<double> lengthTag_s(const AVStream& stream) {
    const AVDictionaryEntry* entry = av_dict_get(stream.metadata, "DURATION", nullptr, 0);
    int hours = 0;
    int minutes = 0;
    double seconds = 0.0;
    if (entry == nullptr || std::sscanf(entry->value, "%d:%d:%lf", &hours, &minutes, &seconds) != 3)
        return std::nullopt;
    if (hours < 0 || minutes < 0 || !(seconds >= 0.0)) return std::nullopt;
    const double length_s = hours * 3600.0 + minutes * 60.0 + seconds;
    return length_s > 0.0 ? std::optional(length_s) : std::nullopt;
}

// Uncompressed audio has a length that its bytes tell.
std::optional<double> statedWavEnd_s(const std::string& path, const AVStream& audio) {
    const AVCodecParameters& codec = *audio.codecpar;
    const bool is_pcm = std::string_view(avcodec_get_name(codec.codec_id)).starts_with("pcm_");
    if (!is_pcm || codec.sample_rate <= 0 || codec.block_align <= 0) return std::nullopt;
    const std::optional<int64_t> bytes = statedWavBytes(path);
    if (!bytes) return std::nullopt;
    return static_cast<double>(*bytes) / codec.block_align / codec.sample_rate;
}

bool isSound(const AVStream& stream) {
    return stream.codecpar->codec_type == AVMEDIA_TYPE_AUDIO;
}

bool isVideo(const AVStream& stream) {
    return stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO &&
           (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) == 0;
}

bool isOnlyStream(const AVFormatContext& container, const AVStream& audio) {
    for (unsigned i = 0; i < container.nb_streams; ++i) {
        const AVStream& stream = *container.streams[i];
        if (&stream != &audio && (isSound(stream) || isVideo(stream))) return false;
    }
    return true;
}

}  // namespace

std::optional<double> startOf_s(const AVStream& stream) {
    if (stream.start_time == AV_NOPTS_VALUE) return std::nullopt;
    return static_cast<double>(stream.start_time) * av_q2d(stream.time_base);
}

std::optional<double> statedEnd_s(const std::string& path, const AVFormatContext& container,
                                  const AVStream& audio) {
    if (const auto end = statedWavEnd_s(path, audio)) return end;
    if (container.duration_estimation_method != AVFMT_DURATION_FROM_STREAM) return std::nullopt;
    // Writers disagree whether the tag holds the end of the stream or its length: take the earlier time.
    if (const auto end = lengthTag_s(audio)) return end;
    const double start = startOf_s(audio).value_or(0.0);
    if (audio.duration != AV_NOPTS_VALUE && audio.duration > 0)
        return start + static_cast<double>(audio.duration) * av_q2d(audio.time_base);
    if (container.duration == AV_NOPTS_VALUE || container.duration <= 0 || !isOnlyStream(container, audio))
        return std::nullopt;
    return start + static_cast<double>(container.duration) / AV_TIME_BASE;
}

std::optional<double> presentationStart_s(const AVFormatContext& container) {
    std::optional<double> earliest;
    for (unsigned i = 0; i < container.nb_streams; ++i) {
        const AVStream& stream = *container.streams[i];
        if (!isSound(stream) && !isVideo(stream)) continue;
        const auto start = startOf_s(stream);
        if (start && (!earliest || *start < *earliest)) earliest = start;
    }
    return earliest;
}

std::optional<double> statedLength_s(const AVFormatContext& container, const AVStream& stream) {
    if (stream.duration != AV_NOPTS_VALUE && stream.duration > 0)
        return static_cast<double>(stream.duration) * av_q2d(stream.time_base);
    if (container.duration == AV_NOPTS_VALUE || container.duration <= 0) return std::nullopt;
    return static_cast<double>(container.duration) / AV_TIME_BASE;
}

bool isBareStream(const AVFormatContext& container) {
    return container.nb_streams == 1 && container.duration_estimation_method == AVFMT_DURATION_FROM_BITRATE;
}

}  // namespace sonivex_tool
