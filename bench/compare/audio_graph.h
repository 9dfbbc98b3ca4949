// A graph of libavfilter on the caller's thread: sources for float or double PCM, one sink.
#pragma once

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavutil/frame.h>
}

#include <memory>
#include <string>
#include <vector>

#include "vorlin/owned_av_frame.h"

namespace compare {

using Frame = Vorlin::OwnedAVFrame;

struct Format {
    AVSampleFormat sample_format;
    std::string layout;  // as libavutil writes layouts, "12C" for twelve channels without places
};

/** A frame of these interleaved samples; the format is float or double, planar or not, or s16.
 *  @param samples [frames][channels], full scale 1. */
Frame makeFrame(const Format& format, const float* samples, std::size_t frames);

class AudioGraph {
  public:
    struct Source {
        std::string pad;  // as the description names it
        Format format;
    };

    /** @param description filters between the sources' pads and a pad "out".
     *  @param filters     how many it names; a conversion that libavfilter adds would change what is measured
     *                     and is refused. Throws std::runtime_error. */
    AudioGraph(const std::vector<Source>& sources, const std::string& description, unsigned filters);
    AudioGraph(const AudioGraph&) = delete;
    AudioGraph& operator=(const AudioGraph&) = delete;

    /** Hand in a reference to a frame's samples. */
    void push(std::size_t source, const AVFrame* frame);
    /** No more comes from this source. */
    void close(std::size_t source);
    /** The next frame of the output; null when there is none yet. It lives until the next pull. */
    const AVFrame* pull();

  private:
    struct FreeGraph {
        void operator()(AVFilterGraph* graph) const { avfilter_graph_free(&graph); }
    };
    std::unique_ptr<AVFilterGraph, FreeGraph> graph_;
    std::vector<AVFilterContext*> sources_;
    AVFilterContext* sink_ = nullptr;
    Frame pushed_;
    Frame pulled_;
};

}  // namespace compare
