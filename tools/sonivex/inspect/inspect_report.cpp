#include "inspect_report.h"

#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>

namespace sonivex_tool {
namespace {

using Json = nlohmann::ordered_json;

std::string fixed(double number, int decimals) {
    std::array<char, 64> text{};
    (void)std::snprintf(text.data(), text.size(), "%.*f", decimals, number);
    return text.data();
}

std::string signedFixed(double number, int decimals) {
    const std::string text = fixed(number, decimals);
    return text.front() == '-' ? text : "+" + text;
}

double milliseconds(int64_t frames, int rate_hz) {
    return 1000.0 * static_cast<double>(frames) / rate_hz;
}

double lengthSeconds(const InspectedFile& file) {
    return static_cast<double>(file.levels.frames) / file.spec.rate_hz;
}

// Returns a channel's abbreviation such as "FL", or its number from 1 if it has no position.
std::string channelName(const AudioSpec& spec, size_t channel) {
    const AVChannel id = av_channel_layout_channel_from_index(&spec.layout, static_cast<unsigned>(channel));
    std::array<char, 32> name{};
    if (id == AV_CHAN_NONE || av_channel_name(name.data(), name.size(), id) < 0)
        return std::to_string(channel + 1);
    return name.data();
}

std::string row(const std::string& name, const std::array<std::string, 4>& cells) {
    std::array<char, 160> line{};
    (void)std::snprintf(line.data(), line.size(), "  %-8s %12s %12s %12s %12s\n", name.c_str(),
                        cells[0].c_str(), cells[1].c_str(), cells[2].c_str(), cells[3].c_str());
    return line.data();
}

std::string row(const std::string& name, const Levels& levels) {
    if (!levels.is_finite) return row(name, {"not finite", "not finite", "not finite", "not finite"});
    const auto cell = [](const std::optional<double>& value, const char* unit) {
        return value ? fixed(*value, 1) + " " + unit : std::string("-");
    };
    return row(name, {cell(levels.rms_dbfs, "dBFS"), cell(levels.sample_peak_dbfs, "dBFS"),
                      cell(levels.true_peak_dbtp, "dBTP"), cell(levels.integrated_lufs, "LUFS")});
}

std::string fileText(const InspectedFile& file) {
    const int channels = file.spec.channels();
    std::string text = file.path + "\n  " + file.codec + ", " + std::to_string(file.spec.rate_hz) + " Hz, " +
                       std::to_string(channels) + (channels == 1 ? " channel" : " channels") + " (" +
                       layoutName(file.spec.layout) + "), " + fixed(lengthSeconds(file), 3) + " s\n";
    if (!file.assumptions.empty()) {
        std::string list;
        for (const std::string& assumption : file.assumptions)
            list += (list.empty() ? "" : " and ") + assumption;
        text += "  not specified by the file, assumed: " + list + " (see --channels, --rate)\n";
    }
    for (const std::string& note : file.notes) text += "  " + note + "\n";
    if (file.damage.isDamaged()) text += "  damaged, " + file.damage.lossText() + " of the file is lost\n";
    text += row("channel", {"RMS", "sample peak", "true peak", "loudness"});
    for (size_t c = 0; c < file.levels.channels.size(); ++c)
        text += row(channelName(file.spec, c), file.levels.channels[c]);
    return text + row("all", file.levels.all);
}

std::string pairText(const InspectedPair& pair) {
    std::string text = pair.input + "\n-> " + pair.output + "\n  latency  ";
    if (pair.delay_frames) {
        text += std::to_string(*pair.delay_frames) + " frames, " +
                fixed(milliseconds(*pair.delay_frames, pair.rate_hz), 1) + " ms\n";
    } else {
        text += "no clear match\n";
    }
    return text + "  gain     " + (pair.gain_db ? signedFixed(*pair.gain_db, 1) + " dB" : "-") + "\n";
}

Json orNull(const std::optional<double>& value) {
    return value ? Json(*value) : Json(nullptr);
}

Json levelsJson(const std::string& name, const Levels& levels) {
    return {{"channel", name},
            {"finite", levels.is_finite},
            {"rms_dbfs", orNull(levels.rms_dbfs)},
            {"sample_peak_dbfs", orNull(levels.sample_peak_dbfs)},
            {"true_peak_dbtp", orNull(levels.true_peak_dbtp)},
            {"integrated_lufs", orNull(levels.integrated_lufs)}};
}

Json fileJson(const InspectedFile& file) {
    Json channels = Json::array();
    for (size_t c = 0; c < file.levels.channels.size(); ++c)
        channels.push_back(levelsJson(channelName(file.spec, c), file.levels.channels[c]));
    return {{"path", file.path},
            {"codec", file.codec},
            {"sample_rate_hz", file.spec.rate_hz},
            {"channels", file.spec.channels()},
            {"channel_layout", layoutName(file.spec.layout)},
            {"assumed", file.assumptions},
            {"notes", file.notes},
            {"damaged", file.damage.isDamaged()},
            {"frames", file.levels.frames},
            {"length_seconds", lengthSeconds(file)},
            {"levels", channels},
            {"all", levelsJson("all", file.levels.all)}};
}

Json pairJson(const InspectedPair& pair) {
    const auto& delay = pair.delay_frames;
    return {{"input", pair.input},
            {"output", pair.output},
            {"latency_frames", delay ? Json(*delay) : Json(nullptr)},
            {"latency_ms", delay ? Json(milliseconds(*delay, pair.rate_hz)) : Json(nullptr)},
            {"gain_db", orNull(pair.gain_db)}};
}

}  // namespace

std::string asText(const InspectReport& report) {
    std::string text;
    const auto append = [&](const std::string& part) { text += (text.empty() ? "" : "\n") + part; };
    for (const InspectedFile& file : report.files) append(fileText(file));
    for (const InspectedPair& pair : report.pairs) append(pairText(pair));
    return text;
}

std::string asJson(const InspectReport& report) {
    Json object = {{"files", Json::array()}, {"pairs", Json::array()}};
    for (const InspectedFile& file : report.files) object["files"].push_back(fileJson(file));
    for (const InspectedPair& pair : report.pairs) object["pairs"].push_back(pairJson(pair));
    return object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace sonivex_tool
