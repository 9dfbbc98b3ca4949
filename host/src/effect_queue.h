#pragma once

#include <deque>
#include <vector>

#include "span.h"
#include "vorlin/effect_timing.h"

namespace Vorlin {

/** Follows the queue of one effect, as FilterTiming describes it, and tells to which part of the stream the
 *  answer to each call belongs. */
class EffectQueue {
  public:
    /** Begins with an effect that has taken nothing yet. Its own delay is a part of the stream before 0. */
    explicit EffectQueue(const FilterTiming& timing);

    /** Enters a call that the effect took.
     *  @param call where its frames stand in the stream.
     *  @return where the frames of its answer stand, in order; empty if the answer is silence. */
    std::vector<Span> answer(Span call);

    /** @return how many of the next `frames` the effect answers with sound, if they come as a call of their
     *  own. It would answer a call of more with silence. */
    int answeredOf(int frames) const;

    /** @return after how many more calls of `call_frames`, at least 1, everything before the position `end`
     *  has come out. */
    int callsUntil(int64_t end, int call_frames) const;

  private:
    const int mBlock;
    int64_t mQueued = 0;
    int64_t mReady = 0;
    std::deque<Span> mInside;  // taken and not answered yet, oldest first
};

}  // namespace Vorlin
