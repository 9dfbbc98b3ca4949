#include "comparisons.h"

#include <cstring>
#include <stdexcept>

#include "SonivexFilter.h"
#include "audio_graph.h"
#include "material.h"
#include "sonivex/surround.h"
#include "turns.h"

namespace compare {
namespace {

constexpr std::size_t kFrame_frames = 1024;
constexpr std::size_t kChannels = 2;

// Surround alone, called the way the filter calls it.
class Effect {
  public:
    explicit Effect(const Material& material)
        : material_(material),
          out_(kFrame_frames * 2),
          handle_(aem_CreateSurround(static_cast<int>(kChannels), static_cast<int>(kRate_hz), 1, 1, 1)) {
        if (handle_ == nullptr) throw std::runtime_error("aem_CreateSurround failed");
    }
    Effect(const Effect&) = delete;
    Effect& operator=(const Effect&) = delete;
    ~Effect() { aem_ReleaseSurround(handle_); }

    const std::vector<short>& process(std::size_t first_frame) {
        aem_ProcessSurround(handle_, material_.pcm.data() + first_frame * kChannels, out_.data(),
                            static_cast<int>(kFrame_frames));
        return out_;
    }
    void pass() {
        for (std::size_t frame = 0; frame < material_.frames(); frame += kFrame_frames) process(frame);
    }

  private:
    const Material& material_;
    std::vector<short> out_;
    void* handle_;
};

// An inactive filter: `push` does the work on the caller's thread.
class Filter {
  public:
    Filter(const Material& material, AVSampleFormat format) : filter_({}, {}, false) {
        filter_.init(0);
        filter_.setOption(Vorlin::filterPrototype::FILTER_OPTION, R"({"enable_surround": true})", "");
        filter_.setInvalid(false);
        std::vector<float> samples;
        for (const std::int16_t sample : material.pcm)
            samples.push_back(static_cast<float>(sample) / 32768.0F);
        for (std::size_t i = 0; i < samples.size(); i += kFrame_frames * kChannels) {
            frames_.push_back(makeFrame({format, "stereo"}, samples.data() + i, kFrame_frames));
        }
    }

    // Pushes a new reference to the same samples, as a decoder does with frames that it may still need.
    std::unique_ptr<Vorlin::IQFFrame> process(std::size_t index) {
        std::unique_ptr<Vorlin::IQFFrame> in =
            std::make_unique<Vorlin::AVQFFrame>(av_frame_clone(frames_[index].get()));
        filter_.push(in, 0);
        std::unique_ptr<Vorlin::IQFFrame> out;
        if (filter_.pull(out, 0) != 0) throw std::runtime_error("the filter returned no frame");
        return out;
    }
    void pass() {
        for (std::size_t i = 0; i < frames_.size(); ++i) process(i);
    }

  private:
    Vorlin::sonivexFilter filter_;
    std::vector<Frame> frames_;
};

// With 16-bit frames the filter's output must equal the effect's.
void check(const Material& material) {
    Effect effect(material);
    Filter filter(material, AV_SAMPLE_FMT_S16);
    for (std::size_t i = 0; i * kFrame_frames < material.frames(); ++i) {
        const std::vector<short>& expected = effect.process(i * kFrame_frames);
        const auto out = filter.process(i);
        const AVFrame* const frame = static_cast<Vorlin::AVQFFrame&>(*out);
        if (frame->nb_samples != static_cast<int>(kFrame_frames) ||
            std::memcmp(frame->extended_data[0], expected.data(), expected.size() * sizeof(short)) != 0) {
            throw std::runtime_error("the filter's output differs from its effect's");
        }
    }
}

}  // namespace

void measureFilter(Report& report, const Effort& effort) {
    const Material material =
        makeMaterial(kChannels, kChannels, effort.material_steps * kMaterialStep_frames, 1);
    check(material);
    Effect effect(material);
    Filter s16(material, AV_SAMPLE_FMT_S16);
    Filter fltp(material, AV_SAMPLE_FMT_FLTP);
    const double audio_s = static_cast<double>(material.frames()) / kRate_hz;
    const std::vector<Timing> timings = takeTurns({{"surround alone", [&] { effect.pass(); }, audio_s},
                                                   {"filter, s16", [&] { s16.pass(); }, audio_s},
                                                   {"filter, fltp", [&] { fltp.pass(); }, audio_s}},
                                                  effort.turns);

    report.section("Filter with surround, stereo: processor time per frame of 1024");
    constexpr double kUsPerFrame = 1e3 * kFrame_frames / kRate_hz;  // from ms per second of audio
    for (const Timing& timing : timings) {
        report.row(timing.name, "stereo", median(timing.cpu_ms_per_s) * kUsPerFrame, "us");
    }
    for (const std::size_t i : {1U, 2U}) {
        report.row("added by the " + timings[i].name, "stereo",
                   100 * (medianRatio(timings[i], timings[0]) - 1), "%", atMost({}, 15.0));
    }
}

}  // namespace compare
