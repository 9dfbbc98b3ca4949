#include "filter_run.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

#include "failure.h"
#include "plugin_search.h"
#include "vorlin/av_compat.h"
#include "vorlin/av_frame.h"

namespace sonivex_tool {
namespace {

AVChannelLayout byPosition(int channels) {
    AVChannelLayout layout{};
    layout.order = AV_CHANNEL_ORDER_UNSPEC;
    layout.nb_channels = channels;
    return layout;
}

// Returns the frame that sounds at a time. A time such as 0.576 s has no exact double, and times the rate it
// may be a little less than the whole number of frames that it stands for.
int64_t frameAt(double time_s, int rate_hz) {
    constexpr double kRounding_frames = 1e-3;
    return static_cast<int64_t>(std::floor(time_s * rate_hz + kRounding_frames));
}

void setLayout(AVFrame& frame, const AVChannelLayout& layout) {
    if (Vorlin::av::setFrameLayout(&frame, layout) < 0) throw std::bad_alloc();
}

}  // namespace

FilterRun::FilterRun(const FilterSettings& settings, const Effect& effect,
                     const std::shared_ptr<Vorlin::Plugin>& plugin, const AudioSpec& spec,
                     Timeline::Output output)
    : spec_(spec),
      keeps_channels_(!effect.output_channels),
      delay_frames_(effectDelayFrames(effect, settings.call_frames).value()),
      call_frames_(settings.call_frames),
      timeline_(0, std::move(output)) {
    Vorlin::PlayerConfig config;
    config.filter_name = kFilterName;
    config.active = settings.threaded;
    // The calls have the right length already, and the timeline aligns them.
    config.call_frames = 0;
    config.corrects_times = false;
    config.source.format = spec.format;
    config.source.channels = spec.channels();
    config.source.sample_rate = spec.rate_hz;
    config.source.channel_layout = keeps_channels_ ? 0 : Vorlin::av::layoutMask(spec.layout);
    player_ = Vorlin::Player::create(
        plugin, config, [this](std::unique_ptr<Vorlin::IQFFrame> frame) { receive(std::move(frame)); });
    if (player_ == nullptr) {
        throw Failure(ExitCode::FilterFailed, "cannot initialise the filter (--verbose shows its log)");
    }
    if (!player_->setOptions(optionsJson(effect, settings.options))) {
        throw Failure(ExitCode::FilterFailed, "the filter rejected its options (--verbose shows its log)");
    }
    if (settings.playback_speed) player_->setSpeed(*settings.playback_speed);
    if (settings.video_fps) player_->setVideoFps(*settings.video_fps);
    // A bypassed filter has no delay.
    if (player_->isBypassed()) delay_frames_ = 0;
    timeline_.setDelay(settings.keep_delay ? 0 : delay_frames_);
    for (const double time_s : settings.flush_at_s) flushes_.push_back(frameAt(time_s, spec.rate_hz));
    std::sort(flushes_.begin(), flushes_.end(), std::greater<>());
}

void FilterRun::setEnd(int64_t frames) {
    timeline_.setEnd(frames);
    std::erase_if(flushes_, [frames](int64_t flush) { return flush >= frames; });
}

void FilterRun::receive(std::unique_ptr<Vorlin::IQFFrame> frame) {
    if (output_error_ != nullptr) return;
    try {
        const auto* audio = dynamic_cast<Vorlin::AVQFFrame*>(frame.get());
        AVFrame* samples = audio != nullptr ? static_cast<AVFrame*>(*audio) : nullptr;
        if (samples == nullptr) return;
        // The samples move out of the player's frame, so that the output may hand them to another thread.
        FramePtr out(allocated(av_frame_alloc()));
        av_frame_move_ref(out.get(), samples);
        if (keeps_channels_) setLayout(*out, spec_.layout);
        timeline_.accept(std::move(out));
    } catch (...) {
        output_error_ = std::current_exception();
    }
}

void FilterRun::check(int result) {
    if (output_error_ != nullptr) std::rethrow_exception(output_error_);
    if (result == AVERROR(ETIMEDOUT)) throw Failure(ExitCode::FilterFailed, "the filter stopped responding");
    if (result == AVERROR(ENOMEM)) throw std::bad_alloc();
    if (result < 0) throw Failure(ExitCode::FilterFailed, "the filter failed: " + errorText(result));
}

void FilterRun::flushWhenDue() {
    bool is_due = false;
    while (!flushes_.empty() && flushes_.back() < pushed_frames_ + call_frames_) {
        flushes_.pop_back();
        is_due = true;
    }
    if (!is_due) return;
    check(player_->drain());
    player_->seek();
}

void FilterRun::seek() {
    player_->seek();
    timeline_.restart();
    pushed_frames_ = 0;
    flushes_.clear();
}

void FilterRun::push(FramePtr frame) {
    flushWhenDue();
    frame->pts = pushed_frames_;
    pushed_frames_ += frame->nb_samples;
    if (keeps_channels_) setLayout(*frame, byPosition(spec_.channels()));
    auto wrapped = std::make_unique<Vorlin::AVQFFrame>(frame.get());
    (void)frame.release();  // `wrapped` owns it now
    check(player_->push(std::move(wrapped)));
}

void FilterRun::finish() {
    check(player_->drain());
    if (counts().pulled == 0)
        throw Failure(ExitCode::FilterFailed, "the filter dropped every frame (--verbose shows its log)");
    timeline_.finish();
}

}  // namespace sonivex_tool
