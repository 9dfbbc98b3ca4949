#include "probe_report.h"

#include <libavutil/samplefmt.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>

namespace sonivex_tool {
namespace {

using Json = nlohmann::ordered_json;

constexpr double kShownStart_s = 0.0005;  // anything less prints as 0.000 s

std::string secondsText(const std::optional<double>& length_s) {
    if (!length_s) return "length unknown";
    std::array<char, 64> text{};
    (void)std::snprintf(text.data(), text.size(), "%.3f s", *length_s);
    return text.data();
}

std::string formatName(const AudioSpec& spec) {
    const char* name = av_get_sample_fmt_name(spec.format);
    return name != nullptr ? name : "unknown";
}

std::string audioText(const ProbedStream& stream) {
    std::string text = std::to_string(stream.spec.rate_hz) + " Hz, " + layoutName(stream.spec.layout) + ", " +
                       formatName(stream.spec);
    if (stream.bits_per_sample > 0) text += " (" + std::to_string(stream.bits_per_sample) + " bits)";
    return text;
}

std::string streamText(const ProbedStream& stream) {
    std::string text = "  " + std::to_string(stream.index) + " " + stream.kind;
    if (stream.audio_number) text += " " + std::to_string(*stream.audio_number);
    text += ": " + stream.codec;
    if (stream.audio_number && stream.spec.rate_hz > 0) text += ", " + audioText(stream);
    if (stream.width > 0 && stream.height > 0)
        text += ", " + std::to_string(stream.width) + "x" + std::to_string(stream.height);
    if (stream.length_s) text += ", " + secondsText(stream.length_s);
    if (std::abs(stream.start_s) >= kShownStart_s) text += ", starts at " + secondsText(stream.start_s);
    if (!stream.language.empty()) text += ", " + stream.language;
    if (!stream.title.empty()) text += ", \"" + stream.title + "\"";
    if (stream.is_default) text += ", default";
    if (stream.is_chosen) text += "; render reads this one";
    return text + "\n";
}

std::string kindText(EffectFit::Kind kind) {
    if (kind == EffectFit::Kind::AsItIs) return "as it is";
    return kind == EffectFit::Kind::Converted ? "converted" : "not at all";
}

std::string fitText(const EffectFit& fit) {
    constexpr size_t kNameWidth = 11;
    std::string text = "      " + fit.effect + std::string(kNameWidth - fit.effect.size(), ' ');
    text += kindText(fit.kind);
    for (size_t i = 0; i < fit.reasons.size(); ++i) text += (i == 0 ? ": " : "; ") + fit.reasons[i];
    return text + "\n";
}

Json orNull(const std::string& text) {
    return text.empty() ? Json(nullptr) : Json(text);
}

Json orNull(const std::optional<double>& number) {
    return number ? Json(*number) : Json(nullptr);
}

Json fitJson(const EffectFit& fit) {
    const bool is_possible = fit.kind != EffectFit::Kind::Not;
    return {{"effect", fit.effect},
            {"possible", is_possible},
            {"as_it_is", fit.kind == EffectFit::Kind::AsItIs},
            {"reasons", fit.reasons}};
}

Json streamJson(const ProbedStream& stream) {
    Json json = {{"index", stream.index},
                 {"kind", stream.kind},
                 {"codec", stream.codec},
                 {"language", orNull(stream.language)},
                 {"title", orNull(stream.title)},
                 {"default", stream.is_default},
                 {"length_seconds", orNull(stream.length_s)}};
    if (stream.audio_number) {
        json["stream"] = *stream.audio_number;
        json["chosen"] = stream.is_chosen;
        json["sample_format"] = formatName(stream.spec);
        json["bits_per_sample"] = stream.bits_per_sample > 0 ? Json(stream.bits_per_sample) : Json(nullptr);
        json["sample_rate_hz"] = stream.spec.rate_hz;
        json["channels"] = stream.spec.channels();
        json["channel_layout"] = layoutName(stream.spec.layout);
        json["start_seconds"] = stream.start_s;
        json["problem"] = orNull(stream.problem);
        json["effects"] = Json::array();
        for (const EffectFit& fit : stream.fits) json["effects"].push_back(fitJson(fit));
    }
    if (stream.width > 0) {
        json["width"] = stream.width;
        json["height"] = stream.height;
    }
    return json;
}

}  // namespace

std::string asText(const Probe& probe) {
    std::string text = probe.path + ": " + probe.container + ", " + secondsText(probe.length_s);
    if (probe.chapters > 0)
        text += ", " + std::to_string(probe.chapters) + (probe.chapters == 1 ? " chapter" : " chapters");
    text += "\n";
    for (const ProbedStream& stream : probe.streams) {
        text += streamText(stream);
        if (!stream.problem.empty()) text += "      " + stream.problem + "\n";
        for (const EffectFit& fit : stream.fits) text += fitText(fit);
    }
    return text;
}

std::string asJson(const Probe& probe) {
    Json object = {{"path", probe.path},
                   {"format", probe.container},
                   {"length_seconds", orNull(probe.length_s)},
                   {"chapters", probe.chapters},
                   {"streams", Json::array()}};
    for (const ProbedStream& stream : probe.streams) object["streams"].push_back(streamJson(stream));
    return object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace sonivex_tool
