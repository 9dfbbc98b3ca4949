// The worker's side of the filter: takes frames from the input queue, decides what becomes of each, and puts
// what is kept into the output queue.

extern "C" {
#include <libavutil/error.h>
#include <libavutil/frame.h>
}

#include <exception>

#include "SonivexFilter.h"
#include "frame_checks.h"
#include "vorlin/log.h"

namespace Vorlin {

namespace {

constexpr int64_t kIdleSleep_ms = 10;
constexpr std::size_t kMaxFinishedFrames = 1;  // more than this many wait for `pull`: the worker rests

bool isSupportedChannelCount(int channels) {
    return channels == 1 || channels == 2 || channels == 6 || channels == 8;
}

// Whether `effect` works on such a stream.
bool isSupportedStream(Effect effect, int channels, int sample_rate_hz) {
    const bool is_common_rate = sample_rate_hz == 44100 || sample_rate_hz == 48000;
    switch (effect) {
        case Effect::Surround:
            return isSupportedChannelCount(channels) && is_common_rate;
        case Effect::Dialogue:
            return channels == 2 && is_common_rate;
        case Effect::Normalizer:
            return isSupportedChannelCount(channels) && (is_common_rate || sample_rate_hz == 16000);
        case Effect::None:
            break;
    }
    return false;
}

}  // namespace

int sonivexFilter::FilterLoop() {
    for (;;) {
        IQFFrame* taken = nullptr;
        if (mOutQueue.sizeForProducer() > kMaxFinishedFrames || !mInQueue.pop(taken)) {
            if (!worksInsidePush()) qf_msleep(kIdleSleep_ms);
            return 0;
        }
        std::unique_ptr<IQFFrame> frame(taken);

        Outcome outcome;
        try {
            outcome = handleFrame(frame.get());
        } catch (const std::exception& error) {
            // Memory ran out: this frame is lost, the worker and the player's process are not.
            __log_print(LOG_ERROR, kFilterName, "sonivex: frame lost: %s", error.what());
        }

        // The only three ways out for a frame that was taken.
        switch (outcome.way) {
            case Outcome::PassedOn:
                handOut(std::move(frame));
                return 0;
            case Outcome::Processed:
                handOut(std::move(frame));
                break;
            case Outcome::GivenUp:
                frame.reset();
                return outcome.result;
        }
    }
}

void sonivexFilter::handOut(std::unique_ptr<IQFFrame> frame) {
    if (mOutQueue.push(frame.get())) (void)frame.release();  // the queue owns it now
}

sonivexFilter::Outcome sonivexFilter::handleFrame(IQFFrame* frame) {
    if (frame == nullptr) {
        __log_print(LOG_ERROR, kFilterName, "mAbuffer_ctx is nullptr or avframe is nullptr");
        return passedOn();
    }
    IQFFrame::audioInfo& info = frame->getInfo();
    if (mSrcFormat == -1) mSrcFormat = info.format;
    const auto* holder = dynamic_cast<AVQFFrame*>(frame);
    AVFrame* av_frame = holder != nullptr ? static_cast<AVFrame*>(*holder) : nullptr;
    mChannels = info.channels;

    if (mInvalid.load()) return passedOn();
    const Effect effect = selectedEffect();
    if (effect == Effect::None) return passedOn();
    if (!isSupportedStream(effect, info.channels, info.sample_rate)) return passedOn();
    if (!isSupportedChannelCount(info.channels)) {
        __log_print(LOG_WARNING, kFilterName, "sonivex filter not support. inChannel %d, nb_samples %d",
                    info.channels, info.nb_samples);
        return passedOn();
    }
    // Before a graph is made from the description: a frame that lies about itself must not shape it.
    if (av_frame != nullptr && !frameMatchesDescription(info, av_frame)) {
        __log_print(LOG_ERROR, kFilterName,
                    "sonivex: frame does not hold what it describes. channels %d, samples %d", info.channels,
                    info.nb_samples);
        return givenUp(AVERROR(EINVAL));
    }

    if (mFilterGraph == nullptr || mAbuffer_ctx == nullptr) {
        takeOnStream(info);
        if (const int error = initAVFilter(); error < 0) {
            __log_print(LOG_ERROR, kFilterName, "init AVFilter error %d\n", error);
            return givenUp(error);
        }
    }
    if (mAbuffer_ctx == nullptr || av_frame == nullptr) {
        __log_print(LOG_ERROR, kFilterName, "mAbuffer_ctx is nullptr or avframe is nullptr");
        return passedOn();
    }
    if (const int error = convertToS16(info, av_frame); error < 0) {
        const bool has_nothing_yet = error == AVERROR(EAGAIN) || error == AVERROR_EOF;
        if (has_nothing_yet && !worksInsidePush()) qf_msleep(kIdleSleep_ms);
        return givenUp(has_nothing_yet ? 0 : error);
    }
    return dispatch(effect, info, av_frame);
}

// The switches are three separate stores of another thread, so two may be seen on: one reading per frame,
// which yields at most one effect, and everything after goes by it.
Effect sonivexFilter::selectedEffect() const {
    if (mEnableDialogue) return Effect::Dialogue;
    if (mEnableSurround) return Effect::Surround;
    if (mEnableNormalizer) return Effect::Normalizer;
    return Effect::None;
}

}  // namespace Vorlin
