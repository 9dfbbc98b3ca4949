#include "filter_run.h"

#include <algorithm>
#include <cmath>
#include <functional>

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

void setLayout(AVFrame& frame, const AVChannelLayout& layout) {
    if (Vorlin::av::setFrameLayout(&frame, layout) < 0) throw std::bad_alloc();
}

}  // namespace

FilterRun::FilterRun(const RenderSettings& settings, const std::shared_ptr<Vorlin::Plugin>& plugin,
                     const AudioSpec& spec, Timeline::Output output)
    : mSpec(spec),
      mKeepsChannels(!settings.effect->outputChannels),
      mDelayFrames(effectDelayFrames(*settings.effect, settings.callFrames).value()),
      mCallFrames(settings.callFrames),
      mTimeline(0, std::move(output)) {
    Vorlin::PlayerConfig config;
    config.filterName = kFilterName;
    config.active = settings.threaded;
    config.source.format = spec.format;
    config.source.channels = spec.channels();
    config.source.sample_rate = spec.rateHz;
    config.source.channel_layout = mKeepsChannels ? 0 : Vorlin::av::layoutMask(spec.layout);
    mPlayer = Vorlin::Player::create(
        plugin, config, [this](std::unique_ptr<Vorlin::IQFFrame> frame) { receive(std::move(frame)); });
    if (mPlayer == nullptr) {
        throw Failure(ExitCode::FilterFailed, "the filter cannot be made ready");
    }
    if (!mPlayer->setOptions(optionsJson(*settings.effect, settings.options))) {
        throw Failure(ExitCode::FilterFailed, "the filter does not understand its options");
    }
    if (settings.playbackSpeed) mPlayer->setSpeed(*settings.playbackSpeed);
    if (settings.videoFps) mPlayer->setVideoFps(*settings.videoFps);
    // A filter that passes everything on is never late.
    if (mPlayer->isBypassed()) mDelayFrames = 0;
    mTimeline.setDelay(settings.keepDelay ? 0 : mDelayFrames);
    for (const double seconds : settings.flushAt_s)
        mFlushes.push_back(static_cast<int64_t>(std::floor(seconds * spec.rateHz)));
    std::sort(mFlushes.begin(), mFlushes.end(), std::greater<>());
}

void FilterRun::setEnd(int64_t frames) {
    mTimeline.setEnd(frames);
    std::erase_if(mFlushes, [frames](int64_t flush) { return flush >= frames; });
}

void FilterRun::receive(std::unique_ptr<Vorlin::IQFFrame> frame) {
    if (mOutputError != nullptr) return;
    try {
        const auto* audio = dynamic_cast<Vorlin::AVQFFrame*>(frame.get());
        const AVFrame* samples = audio != nullptr ? static_cast<AVFrame*>(*audio) : nullptr;
        if (samples == nullptr) return;
        FramePtr out(allocated(av_frame_clone(samples)));
        if (mKeepsChannels) setLayout(*out, mSpec.layout);
        mTimeline.accept(std::move(out));
    } catch (...) {
        mOutputError = std::current_exception();
    }
}

void FilterRun::check(int result) {
    if (mOutputError != nullptr) std::rethrow_exception(mOutputError);
    if (result == AVERROR(ETIMEDOUT))
        throw Failure(ExitCode::FilterFailed, "the filter has stopped answering");
    if (result < 0) throw Failure(ExitCode::FilterFailed, "the filter fails: " + errorText(result));
}

void FilterRun::flushWhenDue() {
    bool isDue = false;
    while (!mFlushes.empty() && mFlushes.back() < mPushedFrames + mCallFrames) {
        mFlushes.pop_back();
        isDue = true;
    }
    if (!isDue) return;
    check(mPlayer->drain());
    mPlayer->seek();
}

void FilterRun::push(FramePtr frame) {
    flushWhenDue();
    frame->pts = mPushedFrames;
    mPushedFrames += frame->nb_samples;
    if (mKeepsChannels) setLayout(*frame, byPosition(mSpec.channels()));
    check(mPlayer->push(std::make_unique<Vorlin::AVQFFrame>(frame.release())));
}

void FilterRun::finish() {
    check(mPlayer->drain());
    if (counts().pulled == 0) throw Failure(ExitCode::FilterFailed, "the filter gave up every frame");
    mTimeline.finish();
}

}  // namespace sonivex_tool
