#pragma once

#include "loudness.h"
#include "work_thread.h"

namespace sonivex_tool {

/** Measures frames on a thread of its own. */
class MeasuringThread {
  public:
    /** @throw as LoudnessMeter does */
    explicit MeasuringThread(const AudioSpec& spec, Peaks peaks = Peaks::Samples);

    /** Appends a frame. The samples are copied: a copy costs little, and the threads share nothing. */
    void add(const AVFrame& frame);
    /** Waits for the last frame and returns the loudness of all. */
    Loudness finish();

  private:
    LoudnessMeter meter_;
    WorkThread<FramePtr> thread_;
};

}  // namespace sonivex_tool
