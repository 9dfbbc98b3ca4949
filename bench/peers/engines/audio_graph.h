// A libavfilter graph that runs on the caller's thread, with any number of PCM sources and one sink.
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
    std::string layout;  // in libavutil's notation; "12C" is twelve channels without speaker positions
};

/** Makes a frame at kRate_hz from interleaved samples.
 *  @param format  16-bit integer, float or double; packed or planar
 *  @param samples [frames][channels], full scale 1
 *  Throws std::runtime_error if libavutil fails, std::invalid_argument for another sample format. */
Frame makeFrame(const Format& format, const float* samples, std::size_t frames);

class AudioGraph {
  public:
    struct Source {
        std::string pad;  // its name in the description
        Format format;
    };

    /** @param description filters between the sources' pads and a pad "out"
     *  @param filters     number of filters in the description. A conversion that libavfilter inserts by
     *                     itself would distort the measurement, so the constructor rejects any other number.
     *  Throws std::runtime_error. */
    AudioGraph(const std::vector<Source>& sources, const std::string& description, unsigned filters);
    AudioGraph(const AudioGraph&) = delete;
    AudioGraph& operator=(const AudioGraph&) = delete;

    /** Sends a new reference to the frame's samples into a source. Throws std::runtime_error. */
    void push(std::size_t source, const AVFrame* frame);
    /** Marks the end of a source's stream. Throws std::runtime_error. */
    void close(std::size_t source);
    /** @return the next output frame, valid until the next pull; null if none is ready. Throws
     *  std::runtime_error. */
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
