#include "effect_pass.h"

#include <algorithm>

#include "interrupt.h"
#include "read_ahead.h"

namespace sonivex_tool {
namespace {

// Frames and packets that are read in advance: about half a second of audio, since frames have a thousand
// samples or more.
constexpr std::size_t kItemsAhead = 32;

ChainCounts operator+(ChainCounts sum, const ChainCounts& more) {
    sum.pushed += more.pushed;
    sum.dropped += more.dropped;
    sum.bypassed += more.bypassed;
    sum.flushes += more.flushes;
    sum.filled_frames += more.filled_frames;
    sum.dump_input_bytes += more.dump_input_bytes;
    sum.dump_output_bytes += more.dump_output_bytes;
    sum.delay_frames = std::max(sum.delay_frames, more.delay_frames);
    return sum;
}

ConditionerCounts operator+(ConditionerCounts sum, const ConditionerCounts& more) {
    sum.samples += more.samples;
    sum.above_full_scale += more.above_full_scale;
    sum.not_finite += more.not_finite;
    return sum;
}

std::string describe(const AudioSpec& spec) {
    return std::to_string(spec.rate_hz) + " Hz, " + layoutName(spec.layout);
}

}  // namespace

EffectPass::EffectPass(const RenderSettings& settings, const std::shared_ptr<Vorlin::Plugin>& plugin,
                       AudioSource& source, PassOutputs outputs)
    : settings_(settings),
      plugin_(plugin),
      source_(source),
      outputs_(std::move(outputs)),
      first_plan_(planConversion(source.info().spec, settings.filter.chain, settings.conversion)) {
    start(source.info().spec);
}

AudioSpec EffectPass::outputSpec(const ConversionPlan& plan) const {
    return plan.restoredSpec(EffectChain::outputSpec(plan.work, settings_.filter.chain));
}

// Plans the conversion of a later part of the source, so that the output keeps its rate and layout.
ConversionPlan EffectPass::planFor(const AudioSpec& spec) const {
    ConversionSettings same = settings_.conversion;
    same.rate_hz = first_plan_.work.rate_hz;
    ConversionPlan plan = planConversion(spec, settings_.filter.chain, same);
    if (outputSpec(plan) == outputSpec()) return plan;
    same.layout = layoutName(first_plan_.converted.layout);
    return planConversion(spec, settings_.filter.chain, same);
}

void EffectPass::start(const AudioSpec& spec) {
    const bool is_first = chain_ == nullptr;
    const ConversionPlan plan = is_first ? first_plan_ : planFor(spec);
    for (const std::string& line : plan.notes) {
        if (std::find(conversions_.begin(), conversions_.end(), line) != conversions_.end()) continue;
        conversions_.push_back(line);
        if (!is_first) outputs_.note(line);
    }
    FilterSettings filter = settings_.filter;
    for (double& flush_s : filter.flush_at_s) flush_s -= counts_.input_seconds;
    std::erase_if(filter.flush_at_s, [](double flush_s) { return flush_s < 0.0; });
    conditioner_ = std::make_unique<Conditioner>(plan, settings_.conversion.dither);
    chain_ = std::make_unique<EffectChain>(filter, plugin_, plan.work, [this, plan](FramePtr frame) {
        outputs_.processed(plan.restored(std::move(frame)));
    });
    spec_ = spec;
}

void EffectPass::end() {
    if (const FramePtr rest = conditioner_->flush()) chain_->push(*rest);
    chain_->finish();
    counts_.filters = counts_.filters + chain_->counts();
    counts_.samples = counts_.samples + conditioner_->counts();
}

void EffectPass::push(FramePtr frame) {
    const AudioSpec spec = specOf(*frame);
    if (!(spec == spec_)) {
        // A player flushes on a change of the sample format, too, but the listener need not know of it.
        if (spec.rate_hz != spec_.rate_hz || av_channel_layout_compare(&spec.layout, &spec_.layout) != 0) {
            outputs_.note("the audio changes at " + clockTime(counts_.input_seconds) + " from " +
                          describe(spec_) + " to " + describe(spec) + ": the effect starts afresh");
        }
        end();
        start(spec);
    }
    counts_.input_frames += frame->nb_samples;
    counts_.input_seconds += static_cast<double>(frame->nb_samples) / frame->sample_rate;
    frame = conditioner_->repair(std::move(frame));
    outputs_.decoded(*frame);
    if (const FramePtr converted = conditioner_->convert(std::move(frame))) chain_->push(*converted);
}

PassCounts EffectPass::run(Console& console) {
    ReadAhead<SourceItem> ahead(
        kItemsAhead,
        [this]() -> std::optional<SourceItem> {
            SourceItem item = source_.next();
            if (item.isEnd()) return std::nullopt;
            return item;
        },
        [this] { source_.abandon(); });
    while (std::optional<SourceItem> item = ahead.next()) {
        throwIfInterrupted();
        if (item->packet != nullptr) outputs_.copied(std::move(item->packet));
        if (item->frame != nullptr) push(std::move(item->frame));
        console.progress(counts_.input_seconds, source_.info().length_seconds);
    }
    end();
    return counts_;
}

}  // namespace sonivex_tool
