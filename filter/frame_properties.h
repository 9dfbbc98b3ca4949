#pragma once

#include "vorlin/owned_av_frame.h"

namespace Vorlin {

/** Keeps what a frame carries beside its samples (timestamps, duration, side data, metadata) while the frame
 *  goes through a graph, which would rescale or rebuild them. */
class FrameProperties {
  public:
    /** Saves the properties of `frame`. @return 0 or a negative AVERROR.
     *  [any] not real-time safe: allocates */
    int save(const AVFrame* frame);
    /** Replaces the properties of `frame` with the saved ones. @return 0 or a negative AVERROR.
     *  [any] not real-time safe: allocates */
    int restore(AVFrame* frame) const;

  private:
    OwnedAVFrame mSaved;
};

}  // namespace Vorlin
