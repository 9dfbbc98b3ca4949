#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>

#include "effect_queue.h"
#include "pending_frames.h"
#include "sample_line.h"
#include "span.h"
#include "stream_times.h"
#include "vorlin/effect_timing.h"
#include "vorlin/filter.h"
#include "vorlin/player.h"

namespace Vorlin {

class CallFrame;

/** Passes the frames of a stream through a filter in calls of one length, and brings the filter's samples to
 *  the times at which they belong.
 *
 *    frames -> SampleLine -> calls -> filter -> EffectQueue: whose samples does the answer hold?
 *       |                                             |
 *       +---------------> PendingFrames <-------------+    -> the same frames, with new samples
 *
 *  A call that comes out untouched means that the filter was bypassed when it took the call. What the effect
 *  still holds then comes out untouched too, because the effect does not run on.
 *
 *  Only the player's thread uses this class. */
class CallStream {
  public:
    /** How a CallStream reaches the filter. */
    struct Filter {
        std::function<int(std::unique_ptr<IQFFrame>&)> push;  // as FilterPump::push
        std::function<int()> settle;  // waits until every call has come out or been given up
        const ITimedFilter* timing;   // null if the filter does not know it
    };

    /** @param config call_frames, corrects_times, delivers_tail and time_base count. */
    CallStream(const PlayerConfig& config, Filter filter, Player::Output output);
    CallStream(const CallStream&) = delete;
    CallStream& operator=(const CallStream&) = delete;
    ~CallStream();

    /** @return true if the samples of `frame` can be joined with others. */
    static bool takes(IQFFrame& frame);

    /** Hands in the next frame of the stream, which `takes`. @return as Player::push. */
    int push(std::unique_ptr<IQFFrame> frame, bool is_bypassed);
    /** Waits until every frame has come out, and the tail if it is wanted.
     *  @param longest_tail_frames what the tail must not exceed.
     *  @return as Player::drain. */
    int end(int64_t longest_tail_frames, bool is_bypassed);
    /** Pushes what waits before the filter in shorter calls, and waits until every call has come out. What
     *  the effect holds stays there. Without `corrects_times` an effect with a queue would answer a shorter
     *  call with silence, so the frames wait on.
     *  @return as Player::push. */
    int finishWaiting();
    /** Takes a frame that came out of the filter. @return false, with `frame` as it was, if it is no call. */
    bool receive(std::unique_ptr<IQFFrame>& frame);
    /** @return true if frames wait before the filter or inside. */
    bool isUnderWay() const { return !mPending.isEmpty(); }
    /** Forgets everything, when the filter is flushed. */
    void forget();

  private:
    int pushCalls();
    int pushCall(int frames, int64_t pts);
    int pushRest(int call_frames);
    int driveOut(const FilterTiming& timing, int call_frames);
    int addTail(int64_t frames);
    int finishPushed();
    FilterTiming timing() const;
    int callFrames() const;
    EffectQueue& queueOf(const FilterTiming& timing);
    void answer(const CallFrame& call);

    const PlayerConfig mConfig;
    const Filter mFilter;
    PendingFrames mPending;
    StreamTimes mTimes;
    SampleLine mLine;
    IQFFrame::audioInfo mStream;
    int64_t mAdded = 0;                       // end of the frames that the line was given, in the stream
    int64_t mPushed = 0;                      // end of the calls that were made
    std::deque<Span> mCalls;                  // inside the filter
    std::map<int, EffectQueue> mQueues;       // of every effect that took a call since the flush
    const EffectQueue* mLastQueue = nullptr;  // of the last call that an effect processed
};

}  // namespace Vorlin
