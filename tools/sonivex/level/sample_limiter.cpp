#include "sample_limiter.h"

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
}

#include <algorithm>

#include "failure.h"

namespace sonivex_tool {
namespace {

// The gain falls over 5 ms before a peak: slowly enough to make no sound of its own, and short enough not to
// duck what comes before. It rises over 100 ms, a few periods of the lowest tones.
constexpr char kSettings[] = "limit=1:attack=5:release=100:level=disabled:latency=1";

// The silence at the end lasts a tenth of a second, several times the look-ahead.
constexpr int kSilencesPerSecond = 10;

int checked(int result) {
    if (result == AVERROR(ENOMEM)) throw std::bad_alloc();
    if (result < 0) throw Failure(ExitCode::Internal, "cannot limit the audio: " + errorText(result));
    return result;
}

AVFilterContext* addFilter(AVFilterGraph* graph, const char* name, const std::string& settings) {
    const AVFilter* filter = avfilter_get_by_name(name);
    if (filter == nullptr)
        throw Failure(ExitCode::Internal, std::string("libavfilter has no filter \"") + name + "\"");
    AVFilterContext* context = nullptr;
    checked(avfilter_graph_create_filter(&context, filter, name, settings.c_str(), nullptr, graph));
    return context;
}

}  // namespace

void SampleLimiter::Freer::operator()(AVFilterGraph* graph) const {
    avfilter_graph_free(&graph);
}

SampleLimiter::SampleLimiter(const AudioSpec& spec) : spec_(spec), graph_(allocated(avfilter_graph_alloc())) {
    graph_->nb_threads = 1;
    const std::string rate = std::to_string(spec.rate_hz);
    source_ = addFilter(graph_.get(), "abuffer",
                        "time_base=1/" + rate + ":sample_rate=" + rate +
                            ":sample_fmt=dbl:channel_layout=" + layoutName(spec.layout));
    AVFilterContext* limiter = addFilter(graph_.get(), "alimiter", kSettings);
    sink_ = addFilter(graph_.get(), "abuffersink", "");
    checked(avfilter_link(source_, 0, limiter, 0));
    checked(avfilter_link(limiter, 0, sink_, 0));
    checked(avfilter_graph_config(graph_.get(), nullptr));
}

// Returns the frames that have left the limiter, cut to the length of the input.
std::vector<FramePtr> SampleLimiter::ready() {
    std::vector<FramePtr> frames;
    while (true) {
        FramePtr frame(allocated(av_frame_alloc()));
        const int result = av_buffersink_get_frame(sink_, frame.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return frames;
        checked(result);
        frame->nb_samples =
            static_cast<int>(std::min<int64_t>(frame->nb_samples, input_frames_ - output_frames_));
        if (frame->nb_samples == 0) continue;
        output_frames_ += frame->nb_samples;
        frames.push_back(std::move(frame));
    }
}

void SampleLimiter::send(FramePtr frame) {
    frame->pts = sent_frames_;
    sent_frames_ += frame->nb_samples;
    checked(av_buffersrc_add_frame(source_, frame.get()));
}

std::vector<FramePtr> SampleLimiter::push(FramePtr frame) {
    input_frames_ += frame->nb_samples;
    send(std::move(frame));
    return ready();
}

std::vector<FramePtr> SampleLimiter::finish() {
    // By itself the filter loses the end of an input that is shorter than its look-ahead.
    FramePtr silence = makeFrame(spec_, spec_.rate_hz / kSilencesPerSecond);
    av_samples_set_silence(silence->extended_data, 0, silence->nb_samples, spec_.channels(), spec_.format);
    send(std::move(silence));
    checked(av_buffersrc_add_frame(source_, nullptr));
    return ready();
}

}  // namespace sonivex_tool
