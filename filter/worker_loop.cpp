// The worker's side of the filter. It takes frames from the input queue, decides the fate of each, and puts
// those that it keeps into the output queue.

extern "C" {
#include <libavutil/error.h>
#include <libavutil/frame.h>
}

#include <exception>
#include <new>

#include "SonivexFilter.h"
#include "effects.h"
#include "frame_checks.h"
#include "prepare_to_throw.h"
#include "vorlin/log.h"

namespace Vorlin {

namespace {

constexpr int64_t kIdleSleep_ms = 10;
constexpr std::size_t kMaxFinishedFrames = 1;  // the worker rests while more than this wait for `pull`

bool isSupportedChannelCount(int channels) {
    return channels == 1 || channels == 2 || channels == 6 || channels == 8;
}

}  // namespace

// The body of the worker. Frames wait until its thread can throw, so that a lack of memory costs frames only.
int sonivexFilter::runWorker() {
    if (!mWorkerCanThrow) mWorkerCanThrow = sonivex::prepareToThrow();
    if (mWorkerCanThrow) return FilterLoop();
    qf_msleep(kIdleSleep_ms);
    return 0;
}

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
        } catch (const std::bad_alloc&) {
            // The frame is lost, but the worker and the player's process go on.
            __log_print(LOG_ERROR, kFilterName, "sonivex: frame lost: out of memory");
        } catch (const std::exception& error) {
            __log_print(LOG_ERROR, kFilterName, "sonivex: frame lost: %s", error.what());
        }

        // A frame that was taken leaves the loop in one of these three ways.
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
    const EffectRecord* effect = selectedEffect();
    if (effect == nullptr) return passedOn();
    if (!isSupportedStream(*effect, info.channels, info.sample_rate)) return passedOn();
    if (!isSupportedChannelCount(info.channels)) {
        __log_print(LOG_WARNING, kFilterName, "sonivex filter not support. inChannel %d, nb_samples %d",
                    info.channels, info.nb_samples);
        return passedOn();
    }
    // This check comes before the graph, which is made from the description: a frame that lies about itself
    // must not shape it.
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
    return dispatch(*effect, info, av_frame);
}

// The player's thread stores each switch separately, so the worker may see two of them on, or none. It reads
// them once per frame here, which yields at most one effect. Everything after that goes by this effect.
const EffectRecord* sonivexFilter::selectedEffect() const {
    for (const EffectRecord* effect : effectsByPrecedence()) {
        if (this->*effect->is_on) return effect;
    }
    return nullptr;
}

}  // namespace Vorlin
