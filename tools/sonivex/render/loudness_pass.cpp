#include "loudness_pass.h"

#include <filesystem>
#include <functional>
#include <optional>

#include "audio_source.h"
#include "effect_pass.h"
#include "failure.h"
#include "level_stage.h"
#include "measuring_thread.h"

namespace sonivex_tool {
namespace {

// Runs a file through the effects. `begin` gets the AudioSpec of their output before the first frame of it.
void runQuietly(const RenderSettings& settings, const std::shared_ptr<Vorlin::Plugin>& plugin,
                Console& console, const std::function<void(const AudioSpec&)>& begin,
                const std::function<void(FramePtr)>& processed) {
    RenderSettings quiet = settings;
    quiet.filter.dump_folder.clear();
    quiet.filter.options.dump = false;
    AudioSource source(quiet.input);
    EffectPass pass(quiet, plugin, source,
                    {.decoded = [](const AVFrame&) {},
                     .processed = processed,
                     .copied = [](const PacketPtr&) {},
                     .note = [](const std::string&) {}});
    begin(pass.outputSpec());
    pass.run(console);
}

Loudness measureEffects(const RenderSettings& settings, const std::shared_ptr<Vorlin::Plugin>& plugin,
                        Console& console) {
    std::optional<MeasuringThread> meter;
    runQuietly(
        settings, plugin, console,
        [&](const AudioSpec& spec) { meter.emplace(spec, Peaks::SamplesAndTruePeak); },
        [&](const FramePtr& frame) { meter->add(*frame); });
    return meter->finish();
}

// Lowers the limiter of a plan until its true peak stays below the ceiling.
void fitLimiter(LevelPlan& plan, const AudioSpec& spec, const RenderSettings& settings,
                const std::shared_ptr<Vorlin::Plugin>& plugin, Console& console) {
    for (int trial = 0; plan.limits && trial < kMostTrials; ++trial) {
        MeasuringThread meter(spec, Peaks::SamplesAndTruePeak);
        LevelStage level(spec, plan, [&](const FramePtr& frame) { meter.add(*frame); });
        runQuietly(
            settings, plugin, console, [](const AudioSpec&) {},
            [&](FramePtr frame) { level.push(std::move(frame)); });
        level.finish();
        if (!lowerLimit(plan, meter.finish())) return;
    }
}

}  // namespace

std::optional<LevelPlan> fittedLevel(const AudioSpec& spec, const RenderSettings& settings,
                                     const std::shared_ptr<Vorlin::Plugin>& plugin, Console& console) {
    if (!settings.level.target_lufs) return std::nullopt;
    std::error_code error;
    if (!std::filesystem::is_regular_file(settings.input.path, error)) {
        throw Failure(ExitCode::Usage,
                      "--target-lufs reads IN more than once, so IN must be a file, not a pipe");
    }
    LevelPlan plan = planLevel(measureEffects(settings, plugin, console), settings.level);
    fitLimiter(plan, spec, settings, plugin, console);
    return plan;
}

}  // namespace sonivex_tool
