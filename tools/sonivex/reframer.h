#pragma once

#include "audio_spec.h"

namespace sonivex_tool {

/** Cuts frames of any length into frames of the lengths one asks for. All are of one spec. */
class Reframer {
  public:
    /** @throw std::bad_alloc, here and below */
    explicit Reframer(const AudioSpec& spec);

    void append(const AVFrame& frame);
    void appendSilence(int frames);

    /** Frames that wait. */
    int size() const;

    /** The oldest `frames`, of which there must be so many. */
    FramePtr take(int frames);

  private:
    AudioSpec spec_;
    AudioFifoPtr fifo_;
};

}  // namespace sonivex_tool
