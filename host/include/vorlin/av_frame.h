#pragma once

#include "vorlin/frame.h"
#include "vorlin/owned_av_frame.h"

namespace Vorlin {

/** A frame that owns its samples as an AVFrame. */
class VORLIN_API AVQFFrame : public IQFFrame {
  public:
    /** Takes ownership of `frame` and describes it. A null `frame` makes a frame without samples.
     *  [any] real-time safe */
    explicit AVQFFrame(AVFrame* frame);
    /** Frees the AVFrame. [any] not real-time safe: frees memory */
    ~AVQFFrame() override;

    /** @return the AVFrame, which this object still owns; null for a frame without samples.
     *  [any] real-time safe */
    // NOLINTNEXTLINE(google-explicit-constructor): players convert without a cast
    operator AVFrame*() const { return mFrame.get(); }

    /** @return the description with which an AVQFFrame around `frame` starts; if null, an empty description.
     *  [any] real-time safe */
    static audioInfo describe(const AVFrame* frame);

  private:
    OwnedAVFrame mFrame;
};

}  // namespace Vorlin
