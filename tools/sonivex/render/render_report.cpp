#include "render_report.h"

#include <libavutil/samplefmt.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <optional>

namespace sonivex_tool {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kLabelWidth = 13;

std::string line(const std::string& label, const std::string& text) {
    return label + std::string(kLabelWidth - label.size(), ' ') + text + "\n";
}

std::string fixed(double number, int decimals) {
    std::array<char, 64> text{};
    (void)std::snprintf(text.data(), text.size(), "%.*f", decimals, number);
    return text.data();
}

std::string sampleFormatName(AVSampleFormat format) {
    const char* name = av_get_sample_fmt_name(format);
    return name != nullptr ? name : "unknown";
}

std::string fileText(const FileReport& file) {
    return file.path + " (" + file.codec + ", " + std::to_string(file.spec.rate_hz) + " Hz, " +
           layoutName(file.spec.layout) + ")";
}

std::string changeText(const std::optional<double>& before, const std::optional<double>& after,
                       const std::string& unit, const std::string& missing) {
    const auto text = [&](const std::optional<double>& value) {
        return value ? fixed(*value, 1) + " " + unit : missing;
    };
    std::string change = text(before) + " -> " + text(after);
    if (before && after) {
        const double difference = *after - *before;
        change += std::string("  (") + (difference < 0.0 ? "" : "+") + fixed(difference, 1) + " dB)";
    }
    return change;
}

std::string levelText(const Loudness& input, const Loudness& output) {
    return line("Loudness",
                changeText(input.integrated_lufs, output.integrated_lufs, "LUFS", "not measurable")) +
           line("Sample peak",
                changeText(input.sample_peak_dbfs, output.sample_peak_dbfs, "dBFS", "silence"));
}

std::string dumpText(const RenderReport& report) {
    std::string text = "in " + report.dump_folder + ": ";
    for (size_t i = 0; i < report.dumps.size(); ++i) text += (i == 0 ? "" : ", ") + report.dumps[i];
    return text;
}

std::string streamText(const SourceInfo& source) {
    std::string text =
        std::to_string(source.stream_number + 1) + " of " + std::to_string(source.audio_streams);
    if (!source.language.empty()) text += " (" + source.language + ")";
    return text;
}

Json timelineJson(const TimelineReport& timeline) {
    return {
        {"lead_in_seconds", timeline.lead_in_s}, {"gaps", timeline.gaps},
        {"filled_seconds", timeline.filled_s},   {"overlaps", timeline.overlaps},
        {"cut_seconds", timeline.cut_s},         {"jumps", timeline.jumps},
    };
}

Json damageJson(const DamageReport& damage) {
    return {
        {"is_damaged", damage.isDamaged()},
        {"read_errors", damage.read_errors},
        {"corrupt_packets", damage.corrupt_packets},
        {"decode_errors", damage.decode_errors},
        {"filled_seconds", damage.filled_s},
        {"missing_end_seconds", damage.missing_end_s},
        {"lost_seconds", damage.isLossKnown() ? Json(damage.lost_s()) : Json(nullptr)},
    };
}

Json orNull(const std::optional<double>& value) {
    return value ? Json(*value) : Json(nullptr);
}

Json fileJson(const FileReport& file) {
    return {
        {"path", file.path},
        {"format", file.format},
        {"codec", file.codec},
        {"sample_format", sampleFormatName(file.spec.format)},
        {"sample_rate_hz", file.spec.rate_hz},
        {"channels", file.spec.channels()},
        {"channel_layout", layoutName(file.spec.layout)},
        {"frames", file.frames},
        {"integrated_lufs", orNull(file.loudness.integrated_lufs)},
        {"sample_peak_dbfs", orNull(file.loudness.sample_peak_dbfs)},
        {"true_peak_dbtp", orNull(file.loudness.true_peak_dbtp)},
    };
}

}  // namespace

double RenderReport::lengthSeconds() const {
    return static_cast<double>(output.frames) / static_cast<double>(output.spec.rate_hz);
}

double RenderReport::timesRealTime() const {
    return elapsed_seconds > 0.0 ? lengthSeconds() / elapsed_seconds : 0.0;
}

std::vector<std::string> remarks(const RenderReport& report) {
    std::vector<std::string> lines;
    if (report.dropped > 0) {
        lines.push_back("the filter dropped " + std::to_string(report.dropped) + " calls; " +
                        std::to_string(report.silent_fill_frames) + " frames of silence replace them");
    }
    if (report.bypassed > 0 && report.bypassed < report.pushed) {
        std::string line = "the filter took too long and passed " + std::to_string(report.bypassed) +
                           " calls through untouched";
        // A bypassed call is not delayed, unlike the calls around it.
        if (report.delay_frames > 0)
            line += "; they are " + std::to_string(report.delay_frames) + " frames early";
        lines.push_back(line);
    }
    if (!report.dump_folder.empty() && report.dumps.empty())
        lines.push_back(report.dump_folder + ": nothing was dumped (--verbose shows the filter's log)");
    if (!report.dumps.empty() && report.dump_bytes_missing > 0) {
        lines.push_back(report.dump_folder + ": the dump is incomplete, " +
                        std::to_string(report.dump_bytes_missing) +
                        " bytes are missing (--verbose shows the filter's log)");
    }
    return lines;
}

std::string asText(const RenderReport& report) {
    std::string text;
    text += line("Input", fileText(report.input));
    text += line("Output", fileText(report.output));
    if (report.source.audio_streams > 1) text += line("Stream", streamText(report.source));
    for (const std::string& conversion : report.conversions) text += line("Converted", conversion);
    text += line("Effect", report.effect);
    text += line("Length", fixed(report.lengthSeconds(), 3) + " s, rendered " +
                               fixed(report.timesRealTime(), 0) + " times faster than real time");
    if (report.is_measured) text += levelText(report.input.loudness, report.output.loudness);
    if (report.output.loudness.true_peak_dbtp)
        text += line("True peak", fixed(*report.output.loudness.true_peak_dbtp, 1) + " dBTP");
    if (report.delay_frames > 0) {
        text += line("Delay", std::to_string(report.delay_frames) + " frames, " +
                                  (report.delay_is_removed ? "removed" : "kept"));
    }
    text +=
        line("Calls", std::to_string(report.pushed) + " of the filter, " + std::to_string(report.dropped) +
                          " dropped, " + std::to_string(report.bypassed) + " bypassed");
    if (!report.dumps.empty()) text += line("Dumped", dumpText(report));
    if (report.damage.isDamaged()) text += line("Damage", report.damage.lossText() + " of IN is lost");
    return text;
}

std::string asJson(const RenderReport& report) {
    Json input = fileJson(report.input);
    input["stream"] = report.source.stream_number;
    input["audio_streams"] = report.source.audio_streams;
    input["language"] = report.source.language.empty() ? Json(nullptr) : Json(report.source.language);
    input["start_seconds"] = report.source.start_seconds;
    const Json object = {
        {"input", input},
        {"output", fileJson(report.output)},
        {"effect", report.effect},
        {"measured", report.is_measured},
        {"length_seconds", report.lengthSeconds()},
        {"elapsed_seconds", report.elapsed_seconds},
        {"times_real_time", report.timesRealTime()},
        {"delay_frames", report.delay_frames},
        {"delay_removed", report.delay_is_removed},
        {"decode_errors", report.damage.decode_errors},
        {"timeline", timelineJson(report.timeline)},
        {"damage", damageJson(report.damage)},
        {"conversions", report.conversions},
        {"samples_above_full_scale", report.samples.above_full_scale},
        {"samples_not_finite", report.samples.not_finite},
        {"frames_pushed", report.pushed},
        {"frames_dropped", report.dropped},
        {"frames_bypassed", report.bypassed},
        {"frames_filled_with_silence", report.silent_fill_frames},
        {"flushes", report.flushes},
        {"dump_folder", report.dump_folder.empty() ? Json(nullptr) : Json(report.dump_folder)},
        {"dump_files", report.dumps},
        {"notes", report.notes},
    };
    // File names may hold any bytes, but JSON must be UTF-8.
    return object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace sonivex_tool
