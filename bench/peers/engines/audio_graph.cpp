#include "audio_graph.h"

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
}

#include <cstdint>
#include <stdexcept>

#include "material.h"
#include "vorlin/av_compat.h"

namespace compare {
namespace {

void check(int result, const std::string& what) {
    if (result >= 0) return;
    char message[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(result, message, sizeof(message));
    throw std::runtime_error("libavfilter: " + what + ": " + message);
}

Frame allocatedFrame() {
    Frame frame(av_frame_alloc());
    if (!frame) throw std::bad_alloc();
    return frame;
}

// Writes one sample (full scale 1) in the frame's own format.
void store(AVFrame& frame, int index, int channel, float sample) {
    const auto format = static_cast<AVSampleFormat>(frame.format);
    const bool is_planar = av_sample_fmt_is_planar(format) != 0;
    const int channels = frame.ch_layout.nb_channels;
    std::uint8_t* const plane = frame.extended_data[is_planar ? channel : 0];
    const int place = is_planar ? index : index * channels + channel;
    switch (av_get_packed_sample_fmt(format)) {
        case AV_SAMPLE_FMT_S16:
            reinterpret_cast<std::int16_t*>(plane)[place] = static_cast<std::int16_t>(sample * 32768.0F);
            break;
        case AV_SAMPLE_FMT_FLT:
            reinterpret_cast<float*>(plane)[place] = sample;
            break;
        case AV_SAMPLE_FMT_DBL:
            reinterpret_cast<double*>(plane)[place] = static_cast<double>(sample);
            break;
        default:
            throw std::invalid_argument("the sample format must be 16-bit integer, float or double");
    }
}

}  // namespace

Frame makeFrame(const Format& format, const float* samples, std::size_t frames) {
    Frame frame = allocatedFrame();
    AVChannelLayout layout{};
    check(av_channel_layout_from_string(&layout, format.layout.c_str()), "layout " + format.layout);
    const int result = Vorlin::av::setFrameLayout(frame.get(), layout);
    av_channel_layout_uninit(&layout);
    check(result, "layout " + format.layout);
    frame->format = format.sample_format;
    frame->sample_rate = static_cast<int>(kRate_hz);
    frame->nb_samples = static_cast<int>(frames);
    check(av_frame_get_buffer(frame.get(), 0), "av_frame_get_buffer");
    const int channels = frame->ch_layout.nb_channels;
    for (int i = 0; i < frame->nb_samples; ++i) {
        for (int channel = 0; channel < channels; ++channel) store(*frame, i, channel, *samples++);
    }
    return frame;
}

AudioGraph::AudioGraph(const std::vector<Source>& sources, const std::string& description, unsigned filters)
    : graph_(avfilter_graph_alloc()), pushed_(allocatedFrame()), pulled_(allocatedFrame()) {
    if (!graph_) throw std::bad_alloc();
    graph_->nb_threads = 1;

    check(avfilter_graph_create_filter(&sink_, avfilter_get_by_name("abuffersink"), "sink", nullptr, nullptr,
                                       graph_.get()),
          "abuffersink");
    AVFilterInOut* outputs = nullptr;  // outputs of the filters that exist already: the sources
    for (auto source = sources.rbegin(); source != sources.rend(); ++source) {
        const std::string arguments = std::string("time_base=1/48000:sample_rate=48000:sample_fmt=") +
                                      av_get_sample_fmt_name(source->format.sample_format) +
                                      ":channel_layout=" + source->format.layout;
        AVFilterContext* context = nullptr;
        check(avfilter_graph_create_filter(&context, avfilter_get_by_name("abuffer"), source->pad.c_str(),
                                           arguments.c_str(), nullptr, graph_.get()),
              "abuffer");
        sources_.insert(sources_.begin(), context);
        AVFilterInOut* const pad = avfilter_inout_alloc();
        if (pad == nullptr) throw std::bad_alloc();
        *pad = {av_strdup(source->pad.c_str()), context, 0, outputs};
        outputs = pad;
    }
    AVFilterInOut* inputs = avfilter_inout_alloc();
    if (inputs == nullptr) throw std::bad_alloc();
    *inputs = {av_strdup("out"), sink_, 0, nullptr};
    const int result =
        avfilter_graph_parse_ptr(graph_.get(), description.c_str(), &inputs, &outputs, nullptr);
    avfilter_inout_free(&inputs);
    avfilter_inout_free(&outputs);
    check(result, description);
    check(avfilter_graph_config(graph_.get(), nullptr), description);
    if (graph_->nb_filters != sources.size() + 1 + filters) {
        throw std::runtime_error("libavfilter inserted a conversion into " + description);
    }
}

void AudioGraph::push(std::size_t source, const AVFrame* frame) {
    check(av_frame_ref(pushed_.get(), frame), "av_frame_ref");
    check(av_buffersrc_add_frame(sources_[source], pushed_.get()), "av_buffersrc_add_frame");
}

void AudioGraph::close(std::size_t source) {
    check(av_buffersrc_close(sources_[source], 0, 0), "av_buffersrc_close");
}

const AVFrame* AudioGraph::pull() {
    av_frame_unref(pulled_.get());
    const int result = av_buffersink_get_frame(sink_, pulled_.get());
    if (result == AVERROR(EAGAIN)) return nullptr;
    check(result, "av_buffersink_get_frame");
    return pulled_.get();
}

}  // namespace compare
