#include "loudness_pass.h"

#include <optional>

#include "audio_source.h"
#include "effect_pass.h"
#include "measuring_thread.h"

namespace sonivex_tool {

Loudness measureEffects(const RenderSettings& settings, const std::shared_ptr<Vorlin::Plugin>& plugin,
                        Console& console) {
    RenderSettings quiet = settings;
    quiet.filter.dump_folder.clear();
    quiet.filter.options.dump = false;
    AudioSource source(quiet.input);
    std::optional<MeasuringThread> meter;
    EffectPass pass(quiet, plugin, source,
                    {.decoded = [](const AVFrame&) {},
                     .processed = [&](const FramePtr& frame) { meter->add(*frame); },
                     .copied = [](const PacketPtr&) {},
                     .note = [](const std::string&) {}});
    meter.emplace(pass.outputSpec());
    pass.run(console);
    return meter->finish();
}

}  // namespace sonivex_tool
