#pragma once

#include "vorlin/frame.h"

namespace Vorlin {

/** Tells how late the output of an effect is, and for how long it sounds on. A "frame" is one instant of all
 *  channels; a "call" is one frame object that the filter takes.
 *
 *  An effect queues the frames of its calls and works on whole blocks. A call that comes too early is
 *  answered with silence, and everything after it is late by as much:
 *
 *    queued += call;  ready += queued / block * block;  queued %= block
 *    if (ready >= call)  ready -= call, the answer is the next `call` frames of the effect's output
 *    else                the answer is silence
 *
 *  The effect's output is `own_delay_frames` behind its input and goes on for `tail_frames` after its end.
 *  Zeros, as in an effect that passes everything on, answer every call with its own frames. */
struct FilterTiming {
    int effect = 0;            // which effect of the filter; every effect keeps a queue of its own
    int block_frames = 0;      // 0: the effect has no queue
    int own_delay_frames = 0;  // in addition to the queue
    int tail_frames = 0;
};

/** A filter that knows how late it is. A player finds this interface with dynamic_cast. */
class VORLIN_API ITimedFilter {
  public:
    ITimedFilter() = default;
    ITimedFilter(const ITimedFilter&) = delete;
    ITimedFilter& operator=(const ITimedFilter&) = delete;
    virtual ~ITimedFilter();

    /** @return the timing of the effect that the options select for a stream of this description; zeros if
     *  none is selected, or if it does not process such a stream. A filter that is set invalid passes frames
     *  on at once, whatever this function returns.
     *  [player thread] real-time safe */
    virtual FilterTiming timing(const IQFFrame::audioInfo& stream) const = 0;
};

}  // namespace Vorlin
