#include "level_stage.h"

#include <cmath>
#include <span>

namespace sonivex_tool {
namespace {

AudioSpec doubles(AudioSpec spec) {
    spec.format = AV_SAMPLE_FMT_DBL;
    return spec;
}

double linear(double level_db) {
    return std::pow(10.0, level_db / 20.0);
}

void multiply(FramePtr& frame, double gain) {
    if (av_frame_make_writable(frame.get()) < 0) throw std::bad_alloc();
    const auto samples =
        static_cast<size_t>(frame->nb_samples) * static_cast<size_t>(frame->ch_layout.nb_channels);
    for (double& sample : std::span(reinterpret_cast<double*>(frame->extended_data[0]), samples))
        sample *= gain;
}

}  // namespace

LevelStage::LevelStage(const AudioSpec& spec, const LevelPlan& plan, Output output)
    : gain_lin_(linear(plan.gain_db)),
      limit_lin_(plan.limits ? linear(plan.limit_dbtp) : 1.0),
      to_double_(doubles(spec)),
      output_(std::move(output)) {
    if (plan.limits) limiter_.emplace(doubles(spec));
}

void LevelStage::deliver(std::vector<FramePtr> limited) {
    for (FramePtr& frame : limited) {
        multiply(frame, limit_lin_);
        output_(std::move(frame));
    }
}

void LevelStage::apply(FramePtr frame) {
    if (frame == nullptr) return;
    multiply(frame, gain_lin_ / limit_lin_);
    if (!limiter_) return output_(std::move(frame));
    deliver(limiter_->limit(std::move(frame)));
}

void LevelStage::push(FramePtr frame) {
    apply(to_double_.convert(std::move(frame)));
}

void LevelStage::finish() {
    apply(to_double_.flush());
    if (limiter_) deliver(limiter_->finish());
}

}  // namespace sonivex_tool
