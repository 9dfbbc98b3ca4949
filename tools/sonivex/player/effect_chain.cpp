#include "effect_chain.h"

#include <algorithm>

namespace sonivex_tool {

AudioSpec EffectChain::outputSpec(const AudioSpec& input, const std::vector<const Effect*>& chain) {
    AudioSpec spec = input;
    for (const Effect* effect : chain) spec = EffectStage::outputSpec(spec, *effect);
    return spec;
}

EffectChain::EffectChain(const FilterSettings& settings, const std::shared_ptr<Vorlin::Plugin>& plugin,
                         const AudioSpec& spec, const Timeline::Output& output) {
    FilterSettings own = settings;
    AudioSpec stage_spec = spec;
    for (size_t i = 0; i < settings.chain.size(); ++i) {
        const Effect& effect = *settings.chain[i];
        const bool is_last = i + 1 == settings.chain.size();
        Timeline::Output next = output;
        if (!is_last) next = [this, i](FramePtr frame) { stages_[i + 1]->push(*frame); };
        stages_.push_back(std::make_unique<EffectStage>(own, effect, plugin, stage_spec, std::move(next)));
        stage_spec = EffectStage::outputSpec(stage_spec, effect);
        if (!settings.keep_delay) continue;
        // The next filter hears everything later by the delay that this one keeps, flushes included.
        const double delay_s = static_cast<double>(stages_[i]->run().delayFrames()) / spec.rate_hz;
        for (double& flush_s : own.flush_at_s) flush_s += delay_s;
    }
}

void EffectChain::push(const AVFrame& frame) {
    stages_.front()->push(frame);
}

void EffectChain::seek() {
    for (const auto& stage : stages_) stage->seek();
}

void EffectChain::finish() {
    for (const auto& stage : stages_) stage->finish();
}

bool EffectChain::isBypassed() const {
    return std::any_of(stages_.begin(), stages_.end(),
                       [](const auto& stage) { return stage->run().isBypassed(); });
}

ChainCounts EffectChain::counts() const {
    ChainCounts sum;
    for (const auto& stage : stages_) {
        const Vorlin::PlayerCounts& counts = stage->run().counts();
        sum.pushed += counts.pushed;
        sum.dropped += counts.dropped;
        sum.bypassed += counts.bypassed;
        sum.flushes += counts.flushes;
        sum.filled_frames += stage->run().filledFrames();
        sum.delay_frames += stage->run().delayFrames();
        const uint64_t unseen = std::min(counts.dropped + counts.bypassed, counts.pushed);
        const uint64_t sample_bytes = (counts.pushed - unseen) * stage->callBytes();
        sum.dump_input_bytes += sample_bytes * static_cast<uint64_t>(stage->inputChannels());
        sum.dump_output_bytes += sample_bytes * static_cast<uint64_t>(stage->outputChannels());
    }
    return sum;
}

}  // namespace sonivex_tool
