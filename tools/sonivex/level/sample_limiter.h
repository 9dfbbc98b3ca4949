#pragma once

#include <memory>
#include <vector>

#include "audio_spec.h"

struct AVFilterContext;
struct AVFilterGraph;

namespace sonivex_tool {

/** Limits the samples of interleaved doubles to full scale, with libavfilter's look-ahead limiter. All
 *  channels share one gain. The output is aligned with the input and as long.
 *
 *  The members throw std::bad_alloc, and Failure (Internal) if libavfilter lacks the limiter or fails. */
class SampleLimiter {
  public:
    /** @param spec of every frame; interleaved doubles with named loudspeakers */
    explicit SampleLimiter(const AudioSpec& spec);

    /** Appends a frame. @return the limited frames that are ready */
    std::vector<FramePtr> push(FramePtr frame);
    /** Ends the input. @return the rest */
    std::vector<FramePtr> finish();

  private:
    struct Freer {
        void operator()(AVFilterGraph* graph) const;
    };

    void send(FramePtr frame);
    std::vector<FramePtr> ready();

    AudioSpec spec_;
    std::unique_ptr<AVFilterGraph, Freer> graph_;
    AVFilterContext* source_ = nullptr;  // owned by the graph
    AVFilterContext* sink_ = nullptr;    // owned by the graph
    int64_t input_frames_ = 0;
    int64_t sent_frames_ = 0;  // the input's and the silence after it
    int64_t output_frames_ = 0;
};

}  // namespace sonivex_tool
