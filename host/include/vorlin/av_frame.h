#pragma once

#include "vorlin/frame.h"
#include "vorlin/owned_av_frame.h"

namespace Vorlin {

/** A frame whose samples are an AVFrame, which it owns. */
class VORLIN_API AVQFFrame : public IQFFrame {
  public:
    /** Take over `frame` (may be null: a frame without samples) and describe it. */
    explicit AVQFFrame(AVFrame* frame);
    ~AVQFFrame() override;

    /** The AVFrame, still owned by this object; null for a frame without samples. */
    // NOLINTNEXTLINE(google-explicit-constructor): the player's habit
    operator AVFrame*() const { return mFrame.get(); }

    /** Describe an AVFrame: what `getInfo` of an AVQFFrame around it starts with. */
    static audioInfo describe(const AVFrame* frame);

  private:
    OwnedAVFrame mFrame;
};

}  // namespace Vorlin
