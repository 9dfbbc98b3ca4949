#pragma once

#include "audio_spec.h"

namespace sonivex_tool {

/** Queues frames of any length and returns frames of the requested lengths. All frames have one spec. */
class Reframer {
  public:
    /** Creates an empty queue. @throw std::bad_alloc, as do the members that append or take samples */
    explicit Reframer(const AudioSpec& spec);

    /** Appends the samples of `frame`, which are copied. */
    void append(const AVFrame& frame);

    /** Appends `frames` samples of silence per channel. */
    void appendSilence(int frames);

    /** Queued samples per channel. */
    int size() const;

    /** Removes the oldest `frames` samples per channel and returns them. Requires frames <= size(). */
    FramePtr take(int frames);

  private:
    AudioSpec spec_;
    AudioFifoPtr fifo_;
};

}  // namespace sonivex_tool
