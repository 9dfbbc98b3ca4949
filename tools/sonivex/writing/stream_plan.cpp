#include "stream_plan.h"

#include <algorithm>

#include "container_choice.h"
#include "failure.h"
#include "vorlin/av_format_compat.h"

namespace sonivex_tool {
namespace {

constexpr uint32_t tagOf(const char (&letters)[5]) {
    return static_cast<uint32_t>(letters[0]) | static_cast<uint32_t>(letters[1]) << 8U |
           static_cast<uint32_t>(letters[2]) << 16U | static_cast<uint32_t>(letters[3]) << 24U;
}

std::string codecName(const AVCodecParameters& parameters) {
    if (parameters.codec_id != AV_CODEC_ID_NONE) return avcodec_get_name(parameters.codec_id);
    char letters[AV_FOURCC_MAX_STRING_SIZE] = {};
    return parameters.codec_tag != 0 ? av_fourcc_make_string(letters, parameters.codec_tag) : "unknown";
}

std::string kindName(const StreamFacts& stream) {
    if (stream.is_picture) return "picture";
    const char* kind = av_get_media_type_string(stream.kind);
    return kind != nullptr ? kind : "unknown";
}

bool isMovingPicture(const StreamFacts& stream) {
    return stream.kind == AVMEDIA_TYPE_VIDEO && !stream.is_picture;
}

// Returns why an audio file cannot have the stream, or nothing if it has it.
std::string whyNotInAudioFile(const StreamFacts& stream, const AVOutputFormat& muxer,
                              const OutputSettings& settings) {
    if (settings.audio_only) return "--audio-only";
    if (stream.is_picture) {
        return holdsPicture(muxer, stream.codec) ? "" : std::string(muxer.name) + " files cannot hold it";
    }
    return "OUT is an audio file";
}

std::string whyNotInFilm(const StreamFacts& stream, const AVOutputFormat& muxer) {
    std::string cannot = std::string(muxer.name) + " files cannot hold it";
    if (stream.is_picture) return holdsPicture(muxer, stream.codec) ? "" : cannot;
    switch (stream.kind) {
        case AVMEDIA_TYPE_ATTACHMENT:
            return holdsAttachments(muxer) ? "" : cannot;
        case AVMEDIA_TYPE_VIDEO:
            if (stream.has_mp4_units && isOneOf(muxer, "avi")) return cannot;
            return holds(muxer, stream.codec) ? "" : cannot;
        case AVMEDIA_TYPE_SUBTITLE:
            return holds(muxer, stream.codec) ? "" : cannot;
        case AVMEDIA_TYPE_DATA:
            return "data streams are not copied";
        default:
            return "its kind is unknown";
    }
}

std::string whyNotAsOtherAudio(const StreamFacts& stream, const AVOutputFormat& muxer,
                               const OutputSettings& settings) {
    if (settings.audio_only) return "--audio-only";
    if (!settings.keep_other_audio) return "it is not the rendered audio (--keep-others keeps it)";
    if (!holdsSeveralStreams(muxer)) return std::string(muxer.name) + " files hold one audio stream";
    return holds(muxer, stream.codec) ? "" : std::string(muxer.name) + " files cannot hold it";
}

StreamPlan planStream(const StreamFacts& stream, bool is_film, const AVOutputFormat& muxer,
                      const OutputSettings& settings) {
    StreamPlan plan;
    plan.facts = stream;
    if (stream.is_rendered) {
        plan.fate = StreamFate::Rendered;
        return plan;
    }
    const bool is_audio = stream.kind == AVMEDIA_TYPE_AUDIO;
    plan.reason = is_audio  ? whyNotAsOtherAudio(stream, muxer, settings)
                  : is_film ? whyNotInFilm(stream, muxer)
                            : whyNotInAudioFile(stream, muxer, settings);
    plan.fate = plan.reason.empty() ? StreamFate::Copied : StreamFate::LeftOut;
    const bool is_expected = settings.audio_only || stream.is_helper ||
                             (is_audio && !settings.keep_other_audio && !is_film) ||
                             (!is_audio && !is_film && !stream.is_picture);
    plan.is_noted = plan.fate == StreamFate::LeftOut && !is_expected;
    return plan;
}

}  // namespace

std::vector<StreamFacts> factsOf(const AVFormatContext& file, int rendered) {
    std::vector<StreamFacts> streams;
    for (unsigned i = 0; i < file.nb_streams; ++i) {
        const AVStream& stream = *file.streams[i];
        const AVCodecParameters& parameters = *stream.codecpar;
        const AVDictionaryEntry* language = av_dict_get(stream.metadata, "language", nullptr, 0);
        StreamFacts facts;
        facts.kind = parameters.codec_type;
        facts.codec = parameters.codec_id;
        facts.codec_name = codecName(parameters);
        facts.language = language != nullptr ? language->value : "";
        facts.is_picture = (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
        facts.is_rotated = Vorlin::av::hasDisplayMatrix(stream);
        facts.is_rendered = static_cast<int>(i) == rendered;
        const bool has_units = facts.codec == AV_CODEC_ID_H264 || facts.codec == AV_CODEC_ID_HEVC;
        facts.has_mp4_units = has_units && parameters.extradata_size > 0 && parameters.extradata[0] == 1;
        const bool is_title_track = parameters.codec_tag == tagOf("text") && file.nb_chapters > 0;
        facts.is_helper =
            facts.kind == AVMEDIA_TYPE_DATA && (is_title_track || parameters.codec_tag == tagOf("tmcd"));
        streams.push_back(facts);
    }
    return streams;
}

bool makesFilm(const std::vector<StreamFacts>& streams, const AVOutputFormat& muxer,
               const OutputSettings& settings) {
    if (settings.audio_only || !isForFilms(muxer, settings.path)) return false;
    return std::any_of(streams.begin(), streams.end(), isMovingPicture);
}

std::vector<StreamPlan> planStreams(const std::vector<StreamFacts>& streams, const AVOutputFormat& muxer,
                                    const OutputSettings& settings) {
    const bool is_film = makesFilm(streams, muxer, settings);
    std::vector<StreamPlan> plans;
    plans.reserve(streams.size());
    for (const StreamFacts& stream : streams) plans.push_back(planStream(stream, is_film, muxer, settings));
    const auto has_picture = [](const StreamPlan& plan) {
        return isMovingPicture(plan.facts) && plan.fate == StreamFate::Copied;
    };
    if (is_film && std::none_of(plans.begin(), plans.end(), has_picture)) {
        const auto video = std::find_if(streams.begin(), streams.end(), isMovingPicture);
        throw Failure(ExitCode::OutputFormat, "cannot write \"" + settings.path + "\": " + muxer.name +
                                                  " files cannot hold this " + video->codec_name +
                                                  " video; choose another format, or --audio-only");
    }
    return plans;
}

std::string describeStream(const StreamFacts& stream, size_t index) {
    const std::string language = stream.language.empty() ? "" : ", " + stream.language;
    return "stream " + std::to_string(index) + " (" + kindName(stream) + ", " + stream.codec_name + language +
           ")";
}

}  // namespace sonivex_tool
