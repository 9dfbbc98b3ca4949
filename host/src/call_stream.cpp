#include "call_stream.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "call_frame.h"
#include "vorlin/av_compat.h"
#include "vorlin/av_frame.h"
#include "wrapped_frame.h"

extern "C" {
#include <libavutil/error.h>
}

namespace Vorlin {

namespace {

// Times that jump by less are taken for the coarse clock of a container: the sound goes on without a break.
constexpr int kShortestGapDivisor = 10;  // of the sample rate: 100 ms

// The length of silent calls, and of the pieces of a tail, when frames go in as they come.
constexpr int kDefaultCall_frames = 1024;

AVFrame* samplesOf(IQFFrame& frame) {
    const auto* holder = dynamic_cast<AVQFFrame*>(&frame);
    return holder != nullptr ? static_cast<AVFrame*>(*holder) : nullptr;
}

}  // namespace

CallStream::CallStream(const PlayerConfig& config, Filter filter, Player::Output output)
    : mConfig(config), mFilter(std::move(filter)), mPending(std::move(output)), mTimes(config.time_base) {}

CallStream::~CallStream() = default;

bool CallStream::takes(IQFFrame& frame) {
    return holdsAudio(samplesOf(frame), frame.getInfo());
}

FilterTiming CallStream::timing() const {
    return mFilter.timing != nullptr ? mFilter.timing->timing(mStream) : FilterTiming{};
}

int CallStream::callFrames() const {
    return mConfig.call_frames > 0 ? mConfig.call_frames : kDefaultCall_frames;
}

int CallStream::push(std::unique_ptr<IQFFrame> frame, bool is_bypassed) {
    AVFrame& samples = *samplesOf(*frame);
    mStream = frame->getInfo();
    if (isUnderWay()) {
        const int64_t gap = mTimes.gapBefore(samples);
        const int64_t shortest = mStream.sample_rate / kShortestGapDivisor;
        if (gap > shortest || gap < -shortest) {
            if (const int result = end(std::max<int64_t>(gap, 0), is_bypassed); result < 0) return result;
        }
    } else if (samples.nb_samples == 0) {
        // The frame does not go through the filter, where others may be.
        if (const int result = mFilter.settle(); result < 0) return result;
    }
    if (const int result = mLine.append(samples); result < 0) return result;
    const int64_t begin = mAdded;
    mAdded += samples.nb_samples;
    mTimes.take(samples);
    mPending.add(std::move(frame), &samples, begin, mTimes.base());
    return pushCalls();
}

int CallStream::pushCalls() {
    while (mLine.size() > 0 && mLine.size() >= mConfig.call_frames) {
        const int frames = mConfig.call_frames > 0 ? mConfig.call_frames : mLine.size();
        if (const int result = pushCall(frames, mTimes.before(mLine.size())); result < 0) return result;
    }
    return mPending.takeError();
}

// A call that the filter does not take is lost.
int CallStream::pushCall(int frames, int64_t pts) {
    const Span span{mPushed, mPushed + frames};
    mPushed = span.end;
    int result = AVERROR(ENOMEM);
    if (OwnedAVFrame samples = mLine.take(frames)) {
        samples->pts = pts;
        std::unique_ptr<IQFFrame> call =
            CallFrame::make(std::move(samples), mStream.channel_layout, span, timing());
        if (call) {
            mCalls.push_back(span);
            result = mFilter.push(call);
            if (result < 0) std::erase_if(mCalls, [&](const Span& s) { return s.begin == span.begin; });
        }
    }
    if (result < 0) mPending.markLost(span);
    return result < 0 ? result : mPending.takeError();
}

bool CallStream::receive(std::unique_ptr<IQFFrame>& frame) {
    const auto* call = dynamic_cast<const CallFrame*>(frame.get());
    if (call == nullptr) return false;
    // The filter gave up the calls between this one and the one before.
    while (!mCalls.empty() && mCalls.front().begin < call->span().begin) {
        mPending.markLost(mCalls.front());
        mCalls.pop_front();
    }
    if (!mCalls.empty()) mCalls.pop_front();
    answer(*call);
    frame.reset();
    return true;
}

EffectQueue& CallStream::queueOf(const FilterTiming& timing) {
    return mQueues.try_emplace(timing.effect, timing).first->second;
}

void CallStream::answer(const CallFrame& call) {
    const AVFrame* samples = call;
    if (call.isUntouched() || samples == nullptr) {
        mPending.supplyUntouched(call.span().end);
        return;
    }
    if (!mConfig.corrects_times) {
        mPending.supply(call.span(), *samples, 0);
        return;
    }
    EffectQueue& queue = queueOf(call.timing());
    if (mLastQueue != nullptr && mLastQueue != &queue) mPending.supplyUntouched(call.span().begin);
    mLastQueue = &queue;
    int offset = 0;
    for (const Span& part : queue.answer(call.span())) {
        mPending.supply(part, *samples, offset);
        offset += static_cast<int>(part.frames());
    }
}

int CallStream::end(int64_t longest_tail_frames, bool is_bypassed) {
    if (!isUnderWay()) return mFilter.settle();
    const FilterTiming timing = this->timing();
    const bool is_late = mConfig.corrects_times && !is_bypassed;
    if (is_late && mConfig.delivers_tail) {
        const int64_t tail = std::min<int64_t>(timing.tail_frames, longest_tail_frames);
        if (const int result = addTail(tail); result < 0) return result;
    }
    // An effect without a queue gets the last call as short as it is.
    const int call_frames = timing.block_frames > 0 ? callFrames() : std::max(mLine.size(), 1);
    if (const int result = pushRest(call_frames); result < 0) return result;
    if (const int result = finishPushed(); result < 0) return result;
    if (is_late && isUnderWay()) {
        if (const int result = driveOut(timing, call_frames); result < 0) return result;
    }
    mPending.supplyUntouched(std::numeric_limits<int64_t>::max());
    return mPending.takeError();
}

int CallStream::finishWaiting() {
    if (const int result = finishPushed(); result < 0) return result;  // the queue then knows every call
    const FilterTiming timing = this->timing();
    if (mLine.size() == 0 || (timing.block_frames > 0 && !mConfig.corrects_times)) return 0;
    const auto queue = mQueues.find(timing.effect);
    const int answered =
        (queue != mQueues.end() ? queue->second : EffectQueue(timing)).answeredOf(mLine.size());
    for (const int frames : {answered, mLine.size() - answered}) {
        if (frames == 0) continue;
        if (const int result = pushCall(frames, mTimes.before(mLine.size())); result < 0) return result;
    }
    return finishPushed();
}

// Pushes what waits before the filter, and fills the last call with silence.
int CallStream::pushRest(int call_frames) {
    int64_t pts = mTimes.before(mLine.size());
    const int rest = mLine.size() % call_frames;
    if (rest > 0) {
        if (const int result = mLine.appendSilence(call_frames - rest); result < 0) return result;
        mAdded += call_frames - rest;
    }
    while (mLine.size() > 0) {
        if (const int result = pushCall(call_frames, pts); result < 0) return result;
        pts = AV_NOPTS_VALUE;
    }
    return 0;
}

// Pushes silence until the effect has let go of every frame.
int CallStream::driveOut(const FilterTiming& timing, int call_frames) {
    const auto queue = mQueues.find(timing.effect);
    if (queue == mQueues.end()) return 0;
    const int calls = queue->second.callsUntil(mPending.end(), call_frames);
    for (int i = 0; i < calls; ++i) {
        if (const int result = mLine.appendSilence(call_frames); result < 0) return result;
        mAdded += call_frames;
        if (const int result = pushCall(call_frames, AV_NOPTS_VALUE); result < 0) return result;
    }
    return finishPushed();
}

// Adds silence to the stream, for the sound that follows its end, in frames of their own.
int CallStream::addTail(int64_t frames) {
    while (frames > 0) {
        const int piece = static_cast<int>(std::min<int64_t>(frames, callFrames()));
        if (const int result = mLine.appendSilence(piece); result < 0) return result;
        OwnedAVFrame samples = mLine.makeSilence(piece);
        if (!samples) return AVERROR(ENOMEM);
        samples->time_base = mTimes.base();
        mTimes.take(*samples);
        const int64_t pts = samples->pts;
        const int64_t next = mTimes.next();
        av::setFrameDuration(samples.get(), pts != AV_NOPTS_VALUE && next != AV_NOPTS_VALUE ? next - pts : 0);
        AVFrame* const raw = samples.get();
        std::unique_ptr<IQFFrame> frame = wrapFrame(std::move(samples));
        mPending.add(std::move(frame), raw, mAdded, mTimes.base());
        mAdded += piece;
        frames -= piece;
    }
    return 0;
}

// Waits until all calls have come out. The filter gave up those that have not.
int CallStream::finishPushed() {
    if (const int result = mFilter.settle(); result < 0) return result;
    for (const Span& lost : mCalls) mPending.markLost(lost);
    mCalls.clear();
    return mPending.takeError();
}

void CallStream::forget() {
    mPending.clear();
    mTimes.forget();
    mLine.clear();
    mQueues.clear();
    mLastQueue = nullptr;
    mCalls.clear();
    mAdded = 0;
    mPushed = 0;
}

}  // namespace Vorlin
