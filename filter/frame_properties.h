#pragma once

#include "vorlin/owned_av_frame.h"

namespace Vorlin {

/** What a frame carries beside its samples (timestamps, duration, side data, metadata), kept while the frame
 * goes through a graph that rescales or rebuilds them. */
class FrameProperties {
  public:
    /** Keep the properties of `frame`. @return 0 or a negative AVERROR. */
    int save(const AVFrame* frame);
    /** Give `frame` exactly the properties that were saved. @return 0 or a negative AVERROR. */
    int restore(AVFrame* frame) const;

  private:
    OwnedAVFrame mSaved;
};

}  // namespace Vorlin
