#pragma once

#include <memory>

#include "span.h"
#include "vorlin/av_frame.h"
#include "vorlin/effect_timing.h"

namespace Vorlin {

/** One call of the filter: a frame that the player made of the frames of the stream. */
class CallFrame final : public AVQFFrame {
  public:
    /** @param frame the samples.
     *  @param layout the channel mask of the description of the stream's frames.
     *  @return null if memory runs out. */
    static std::unique_ptr<CallFrame> make(OwnedAVFrame frame, uint64_t layout, Span span,
                                           const FilterTiming& timing);

    /** @return where its frames stand in the stream. */
    Span span() const { return mSpan; }
    /** @return the timing of the effect for which the call was made. */
    const FilterTiming& timing() const { return mTiming; }

    /** @return true if the filter passed the call on untouched. */
    bool isUntouched() const;

  private:
    CallFrame(AVFrame* frame, OwnedAVFrame pushed, Span span, const FilterTiming& timing)
        : AVQFFrame(frame), mPushed(std::move(pushed)), mSpan(span), mTiming(timing) {}

    // Refers to the samples that were pushed. An effect must not write into samples that somebody else refers
    // to, so it delivers its own in another buffer.
    OwnedAVFrame mPushed;
    Span mSpan;
    FilterTiming mTiming;
};

}  // namespace Vorlin
