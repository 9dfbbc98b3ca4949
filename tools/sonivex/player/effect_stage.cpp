#include "effect_stage.h"

#include <algorithm>

#include "response_tail.h"

namespace sonivex_tool {

AudioSpec EffectStage::outputSpec(const AudioSpec& input, const Effect& effect) {
    AudioSpec spec = input;
    if (effect.output_channels) spec.layout = defaultLayout(*effect.output_channels);
    return spec;
}

EffectStage::EffectStage(const FilterSettings& settings, const Effect& effect,
                         const std::shared_ptr<Vorlin::Plugin>& plugin, const AudioSpec& spec,
                         Timeline::Output output)
    : call_frames_(settings.call_frames),
      input_channels_(spec.channels()),
      output_channels_(outputSpec(spec, effect).channels()),
      keeps_delay_(settings.keep_delay),
      tail_frames_(settings.keep_tail ? responseTailFrames(effect, settings.options, spec.channels()) : 0),
      waiting_(spec),
      run_(settings, effect, plugin, spec, std::move(output)) {}

void EffectStage::push(const AVFrame& frame) {
    input_frames_ += frame.nb_samples;
    waiting_.append(frame);
    pushCalls();
}

void EffectStage::pushCalls() {
    while (waiting_.size() >= call_frames_) run_.push(waiting_.take(call_frames_));
}

void EffectStage::pushSilence(int64_t frames) {
    while (frames > 0) {
        const int piece = static_cast<int>(std::min<int64_t>(frames, call_frames_));
        waiting_.appendSilence(piece);
        frames -= piece;
        pushCalls();
    }
}

void EffectStage::seek() {
    if (waiting_.size() > 0) (void)waiting_.take(waiting_.size());
    input_frames_ = 0;
    run_.seek();
}

void EffectStage::finish() {
    if (input_frames_ == 0) return;
    const int64_t tail = run_.isBypassed() ? 0 : tail_frames_;
    run_.setEnd(input_frames_ + tail + (keeps_delay_ ? run_.delayFrames() : 0));
    // Silence drives out what the filter still holds, and fills the last call.
    const int64_t rest = waiting_.size() + tail + run_.delayFrames();
    const int64_t calls = (rest + call_frames_ - 1) / call_frames_;
    pushSilence(calls * call_frames_ - waiting_.size());
    run_.finish();
}

}  // namespace sonivex_tool
