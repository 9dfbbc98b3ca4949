#include "ffmpeg_engines.h"

#include <algorithm>
#include <stdexcept>

#include "audio_graph.h"

namespace compare {
namespace {

constexpr std::size_t kShortFrame_frames = 256;
constexpr std::size_t kLongFrame_frames = 1024;

// Layouts without a low-frequency channel, because the headphone filter does not convolve that one.
std::string mainLayout(std::size_t channels) {
    return channels == 2 ? "stereo" : channels == 6 ? "hexagonal" : "octagonal";
}

std::string countLayout(std::size_t channels) {
    return std::to_string(channels) + "C";
}

// [taps][channel][ear]
std::vector<float> responsesSideBySide(const Stage& stage) {
    const std::size_t width = 2 * stage.channels;
    std::vector<float> samples(stage.longestResponse() * width, 0.0F);
    for (const Path& path : stage.paths) {
        for (std::size_t i = 0; i < path.response.size(); ++i) {
            samples[i * width + 2 * path.channel + path.ear] = path.response[i];
        }
    }
    return samples;
}

class GraphEngine : public Engine {
  public:
    GraphEngine(std::string name, std::size_t call_frames, AVSampleFormat sample_format, const Layout& layout,
                const Material& material, const std::string& description, unsigned filters)
        : Engine(std::move(name)),
          call_frames_(call_frames),
          graph_({{"in", {sample_format, mainLayout(layout.channels())}},
                  {"responses", {sample_format, countLayout(2 * layout.channels())}}},
                 description, filters) {
        if (layout.stages.size() != 1) throw std::invalid_argument("the layout must have exactly one stage");
        const Format main{sample_format, mainLayout(layout.channels())};
        const std::vector<float> samples = material.interleaved();
        for (std::size_t frame = 0; frame < material.frames(); frame += call_frames) {
            frames_.push_back(makeFrame(main, samples.data() + frame * layout.channels(), call_frames));
        }
        const Stage& stage = layout.stages.front();
        const std::vector<float> responses = responsesSideBySide(stage);
        const Frame all = makeFrame({sample_format, countLayout(2 * stage.channels)}, responses.data(),
                                    stage.longestResponse());
        graph_.push(1, all.get());
        graph_.close(1);
    }

    std::size_t callFrames() const override { return call_frames_; }

    void process(std::size_t first_frame) override {
        graph_.push(0, frames_[first_frame / call_frames_].get());
        out_ = graph_.pull();
        if (out_ == nullptr || out_->nb_samples != static_cast<int>(call_frames_)) {
            throw std::runtime_error(name() + " did not return a frame of the length it was given");
        }
    }

    void appendOutput(Ears& ears) override {
        const bool is_planar = av_sample_fmt_is_planar(static_cast<AVSampleFormat>(out_->format)) != 0;
        for (std::size_t i = 0; i < call_frames_; ++i) {
            for (const std::size_t ear : {0U, 1U}) {
                const std::size_t place = is_planar ? i : 2 * i + ear;
                ears.push_back(
                    reinterpret_cast<const float*>(out_->extended_data[is_planar ? ear : 0])[place]);
            }
        }
    }

  private:
    std::size_t call_frames_;
    AudioGraph graph_;
    std::vector<Frame> frames_;
    const AVFrame* out_ = nullptr;  // owned by the graph
};

// "pan=4C|c0=c0|c1=c0|c2=c1|c3=c1"
std::string eachChannelTwice(std::size_t channels) {
    std::string pan = "pan=" + countLayout(2 * channels);
    for (std::size_t i = 0; i < 2 * channels; ++i) {
        pan += "|c" + std::to_string(i) + "=c" + std::to_string(i / 2);
    }
    return pan;
}

// "pan=stereo|c0=c0+c2|c1=c1+c3"
std::string sumOfEachEar(std::size_t channels) {
    std::string pan = "pan=stereo";
    for (std::size_t ear = 0; ear < 2; ++ear) {
        pan += "|c" + std::to_string(ear) + "=";
        for (std::size_t i = 0; i < channels; ++i) {
            pan += (i == 0 ? "c" : "+c") + std::to_string(2 * i + ear);
        }
    }
    return pan;
}

std::unique_ptr<Engine> makeAfir(const std::string& name, std::size_t call_frames, const Layout& layout,
                                 const Material& material) {
    // The filter outputs twice the convolution, so its responses are halved.
    const std::string graph =
        "[in]" + eachChannelTwice(layout.channels()) +
        "[paths];[paths][responses]afir=gtype=none:irgain=0.5:irfmt=input:minp=256:maxp=256[heard];[heard]" +
        sumOfEachEar(layout.channels()) + "[out]";
    return std::make_unique<GraphEngine>(name, call_frames, AV_SAMPLE_FMT_FLTP, layout, material, graph, 3);
}

}  // namespace

std::unique_ptr<Engine> makeAfirEngine(const Layout& layout, const Material& material) {
    return makeAfir("FFmpeg afir", kLongFrame_frames, layout, material);
}

std::unique_ptr<Engine> makeShortFramesAfirEngine(const Layout& layout, const Material& material) {
    return makeAfir("FFmpeg afir, frames of 256", kShortFrame_frames, layout, material);
}

std::unique_ptr<Engine> makeHeadphoneEngine(const Layout& layout, const Material& material) {
    const std::string places = layout.channels() == 2   ? "FL|FR"
                               : layout.channels() == 6 ? "FL|FR|FC|BL|BR|BC"
                                                        : "FL|FR|FC|BL|BR|BC|SL|SR";
    // The filter attenuates its responses by 3 dB per channel; the gain makes up for it.
    const std::string graph =
        "[in][responses]headphone=map=" + places +
        ":type=freq:hrir=multich:size=1024:gain=" + std::to_string(3 * layout.channels()) + "[out]";
    return std::make_unique<GraphEngine>("FFmpeg headphone", kLongFrame_frames, AV_SAMPLE_FMT_FLT, layout,
                                         material, graph, 1);
}

}  // namespace compare
