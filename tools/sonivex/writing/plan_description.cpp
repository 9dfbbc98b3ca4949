// The texts of a plan.

#include <libavutil/samplefmt.h>

#include <nlohmann/json.hpp>

#include "output_plan.h"

namespace sonivex_tool {
namespace {

using Json = nlohmann::ordered_json;

constexpr int64_t kBitsPerKilobit = 1000;

// The sample format that the file holds. A lossy codec holds none.
std::string sampleFormatName(const EncoderPlan& encoder) {
    return encoder.bit_rate > 0 ? "" : nameOf(storedFormat(encoder.codec->id, encoder.spec.format));
}

std::string fateName(StreamFate fate) {
    if (fate == StreamFate::Rendered) return "rendered";
    return fate == StreamFate::Copied ? "copied" : "left out";
}

}  // namespace

std::vector<std::string> describe(const OutputPlan& plan) {
    const EncoderPlan& encoder = plan.encoder;
    const std::string format = sampleFormatName(encoder);
    std::string audio = std::string(avcodec_get_name(encoder.codec->id)) + ", " +
                        std::to_string(encoder.spec.rate_hz) + " Hz, " + layoutName(encoder.spec.layout);
    if (!format.empty()) audio += ", " + format;
    if (encoder.bit_rate > 0) audio += ", " + std::to_string(encoder.bit_rate / kBitsPerKilobit) + " kbit/s";
    std::vector<std::string> lines = {
        "output " + plan.path + ": " + encoder.muxer->name + (plan.is_film ? ", a film" : ", an audio file"),
        "audio: " + audio};
    for (size_t i = 0; i < plan.streams.size(); ++i) {
        const StreamPlan& stream = plan.streams[i];
        lines.push_back(describeStream(stream.facts, i) + ": " + fateName(stream.fate) +
                        (stream.reason.empty() ? "" : ", " + stream.reason));
    }
    if (plan.chapters > 0) lines.push_back("chapters: " + std::to_string(plan.chapters) + " copied");
    return lines;
}

std::string planAsJson(const OutputPlan& plan) {
    const EncoderPlan& encoder = plan.encoder;
    const std::string format = sampleFormatName(encoder);
    Json audio = {{"codec", avcodec_get_name(encoder.codec->id)},
                  {"encoder", encoder.codec->name},
                  {"sample_rate_hz", encoder.spec.rate_hz},
                  {"channels", encoder.spec.channels()},
                  {"channel_layout", layoutName(encoder.spec.layout)},
                  {"sample_format", format.empty() ? Json() : Json(format)},
                  {"bit_rate", encoder.bit_rate > 0 ? Json(encoder.bit_rate) : Json()}};
    Json streams = Json::array();
    for (const StreamPlan& stream : plan.streams) {
        const char* kind = av_get_media_type_string(stream.facts.kind);
        streams.push_back({{"kind", stream.facts.is_picture ? "picture"
                                    : kind != nullptr       ? kind
                                                            : "unknown"},
                           {"codec", stream.facts.codec_name},
                           {"language", stream.facts.language.empty() ? Json() : Json(stream.facts.language)},
                           {"fate", fateName(stream.fate)},
                           {"reason", stream.reason.empty() ? Json() : Json(stream.reason)}});
    }
    const Json json = {
        {"path", plan.path},  {"format", encoder.muxer->name}, {"is_film", plan.is_film},  {"audio", audio},
        {"streams", streams}, {"chapters", plan.chapters},     {"notes", Json(plan.notes)}};
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace sonivex_tool
