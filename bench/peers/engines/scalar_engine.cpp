#include "engines.h"

#include <algorithm>
#include <stdexcept>

#include "au2_limiter_owner.h"
#include "fftconvolver.h"
#include "pcm.h"
#include "unit_scale.h"

namespace compare {
namespace {

constexpr std::size_t kBlock_frames = 240;

class ScalarEngine : public Engine {
  public:
    ScalarEngine(const Layout& layout, const Material& material)
        : Engine("scalar"), material_(material), planes_(material.channels * kBlock_frames) {
        if (layout.stages.size() != 1) throw std::invalid_argument("the layout must have exactly one stage");
        for (const Path& path : layout.stages.front().paths) {
            paths_.push_back({path.channel, path.ear, std::make_unique<fftconvolver::FFTConvolver>()});
            paths_.back().convolver->init(kBlock_frames, path.response.data(), path.response.size());
        }
    }

    std::size_t callFrames() const override { return kBlock_frames; }

    void process(std::size_t first_frame) override {
        const std::size_t channels = material_.channels;
        sonivex::int16ToUnitScale(material_.pcm.data() + first_frame * channels,
                                  static_cast<int>(kBlock_frames * channels), in_);
        for (std::size_t i = 0; i < kBlock_frames * channels; ++i) {
            planes_[i % channels * kBlock_frames + i / channels] = in_[i];
        }
        std::fill(std::begin(ears_), std::end(ears_), 0.0F);
        for (const Convolution& path : paths_) {
            float heard[kBlock_frames];
            path.convolver->process(planes_.data() + path.channel * kBlock_frames, heard, kBlock_frames);
            for (std::size_t i = 0; i < kBlock_frames; ++i) ears_[2 * i + path.ear] += heard[i];
        }
        float limited[kEarSamples];
        sonivex::unitScaleToInt16Units(ears_, kEarSamples, in_);
        au2_limiter_proc(limiter_.get(), in_, kEarSamples, limited);
        sonivex::floatToInt16(limited, kEarSamples, out_);
    }

    void appendOutput(Ears& ears) override {
        float samples[kEarSamples];
        sonivex::int16ToUnitScale(out_, kEarSamples, samples);
        ears.insert(ears.end(), std::begin(samples), std::end(samples));
    }

    bool isLimitedPcm() const override { return true; }

  private:
    static constexpr int kEarSamples = 2 * kBlock_frames;
    static constexpr std::size_t kMaxChannels = 8;

    struct Convolution {
        std::size_t channel;
        std::size_t ear;
        std::unique_ptr<fftconvolver::FFTConvolver> convolver;
    };

    const Material& material_;
    std::vector<Convolution> paths_;
    sonivex::Au2LimiterOwner limiter_ = sonivex::makeAu2Limiter();
    std::vector<float> planes_;
    float in_[kMaxChannels * kBlock_frames] = {};
    float ears_[kEarSamples] = {};
    std::int16_t out_[kEarSamples] = {};
};

}  // namespace

std::unique_ptr<Engine> makeScalarEngine(const Layout& layout, const Material& material) {
    return std::make_unique<ScalarEngine>(layout, material);
}

}  // namespace compare
