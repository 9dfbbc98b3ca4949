#include "preparation.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "failure.h"
#include "output.h"
#include "result_stream.h"

namespace sonivex_tool {
namespace {

void checkEffect(const Effect& effect, const FilterSettings& settings, const Vorlin::Plugin& plugin) {
    if (!plugin.exports(effect.exported_function.c_str())) {
        throw Failure(ExitCode::EffectMissing,
                      "the plug-in does not have " + effect.title + "; choose another --effect or --plugin");
    }
    if (!effectDelayFrames(effect, settings.call_frames)) {
        throw Failure(ExitCode::Usage, "--frame-size " + std::to_string(settings.call_frames) +
                                           " would leave silent gaps in the output of " + effect.title +
                                           "; choose a divisor or a multiple of " +
                                           std::to_string(effect.timing.block_frames));
    }
    if (settings.threaded && settings.call_frames < kShortestThreadedCallFrames) {
        throw Failure(ExitCode::Usage, "--threaded needs a --frame-size of at least " +
                                           std::to_string(kShortestThreadedCallFrames));
    }
}

std::string levelText(const LevelSettings& level) {
    std::array<char, 96> text{};
    (void)std::snprintf(text.data(), text.size(), "%.1f LUFS, true peak at most %.1f dBTP",
                        *level.target_lufs, level.true_peak_dbtp);
    return text.data();
}

// A render would find out when it creates its temporary file, but a dry run creates none.
void checkFolder(const std::string& path) {
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    const std::string where = folder.empty() ? "." : folder.string();
    if (access(where.c_str(), W_OK | X_OK) == 0) return;
    throw Failure(ExitCode::OutputNotWritable, "cannot write \"" + path + "\": " + std::strerror(errno));
}

// Checks what needs no open file, and returns how the input is opened.
InputSettings checkedInput(const RenderSettings& settings, const Vorlin::Plugin& plugin) {
    for (const Effect* effect : settings.filter.chain) checkEffect(*effect, settings.filter, plugin);
    checkOutput(settings.output);
    if (settings.dry_run && !namesStandardOutput(settings.output.path)) checkFolder(settings.output.path);
    InputSettings input = settings.input;
    input.keeps_packets = !settings.output.audio_only;
    return input;
}

OutputPlan planFor(const RenderSettings& settings, const AudioSource& source, const EffectPass& pass) {
    AudioSpec audio = pass.outputSpec();
    audio.format = source.info().spec.format;  // not of the effects: the output keeps the file's precision
    return planOutput(settings.output, source.container(), source.stream().index, audio,
                      source.info().bits_per_sample);
}

}  // namespace

Preparation::Preparation(const RenderSettings& settings, const std::shared_ptr<Vorlin::Plugin>& plugin,
                         PassOutputs outputs)
    : source_(checkedInput(settings, *plugin)),
      pass_(settings, plugin, source_, std::move(outputs)),
      output_(planFor(settings, source_, pass_)),
      path_(settings.input.path) {
    if (pass_.isBypassed()) {
        throw Failure(ExitCode::Usage,
                      "the filter processes nothing at this video: --fps times --speed, both cut to whole "
                      "numbers, must be below 62");
    }
    if (!settings.output.audio_only) source_.deliverPackets(wantedPackets(output_));
    // A film has a clock of its own. An audio file begins where the film begins.
    if (!output_.is_film && !settings.trim_start) source_.insertLeadIn();
}

double Preparation::audioStart_s() const {
    return output_.is_film ? source_.info().start_seconds : 0.0;
}

std::vector<std::string> Preparation::notes() const {
    std::vector<std::string> lines = sentencesOn(path_, source_.info());
    const auto append = [&](const std::vector<std::string>& more) {
        lines.insert(lines.end(), more.begin(), more.end());
    };
    append(pass_.conversions());
    return lines;
}

std::string namesOf(const std::vector<const Effect*>& chain) {
    std::string names;
    for (const Effect* effect : chain) names += (names.empty() ? "" : ",") + effect->name;
    return names;
}

std::string describeText(const Preparation& preparation, const RenderSettings& settings) {
    std::string text = "input " + settings.input.path + "\neffect: " + namesOf(settings.filter.chain) + "\n";
    if (settings.level.target_lufs) text += "level: " + levelText(settings.level) + "\n";
    for (const std::string& line : describe(preparation.output())) text += line + "\n";
    for (const std::string& line : preparation.notes()) text += "note: " + line + "\n";
    return text;
}

std::string describeJson(const Preparation& preparation, const RenderSettings& settings) {
    using Json = nlohmann::ordered_json;
    const Json json = {
        {"input", settings.input.path},
        {"effect", namesOf(settings.filter.chain)},
        {"target_lufs", settings.level.target_lufs ? Json(*settings.level.target_lufs) : Json()},
        {"output", Json::parse(planAsJson(preparation.output()))},
        {"notes", preparation.notes()}};
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace sonivex_tool
