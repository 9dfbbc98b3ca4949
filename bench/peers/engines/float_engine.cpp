#include "float_engine.h"

#include <fftw3.h>

#include <algorithm>
#include <new>
#include <stdexcept>

#include "tiled_spectra.h"

namespace compare {
namespace {

constexpr std::size_t kBlock_frames = 240;
constexpr std::size_t kPoints = 2 * kBlock_frames;
constexpr std::size_t kBins = kPoints / 2 + 1;
constexpr std::size_t kTiles = (kBins + kTileBins - 1) / kTileBins;

struct FreeByFftw {
    void operator()(void* memory) const { fftwf_free(memory); }
};
template <typename Element>
using FftwArray = std::unique_ptr<Element[], FreeByFftw>;

// fftwf_malloc aligns the array for FFTW's vector code.
template <typename Element>
FftwArray<Element> makeArray(std::size_t count) {
    auto* const memory = static_cast<Element*>(fftwf_malloc(count * sizeof(Element)));
    if (memory == nullptr) throw std::bad_alloc();
    return FftwArray<Element>(memory);
}

using Tiles = std::vector<Tile>;  // zeroed

// Batch of `count` real transforms: time [signal][480], spectra [signal][241].
class Transforms {
  public:
    explicit Transforms(std::size_t count)
        : time_(makeArray<float>(count * kPoints)), spectra_(makeArray<fftwf_complex>(count * kBins)) {
        const int points = kPoints;
        const int signals = static_cast<int>(count);
        forward_ = fftwf_plan_many_dft_r2c(1, &points, signals, time_.get(), nullptr, 1, kPoints,
                                           spectra_.get(), nullptr, 1, kBins, FFTW_PATIENT);
        inverse_ = fftwf_plan_many_dft_c2r(1, &points, signals, spectra_.get(), nullptr, 1, kBins,
                                           time_.get(), nullptr, 1, kPoints, FFTW_PATIENT);
        std::fill_n(time_.get(), count * kPoints, 0.0F);  // planning overwrites its arrays
    }
    Transforms(const Transforms&) = delete;
    Transforms& operator=(const Transforms&) = delete;
    ~Transforms() {
        fftwf_destroy_plan(forward_);
        fftwf_destroy_plan(inverse_);
    }

    float* time(std::size_t signal) { return time_.get() + signal * kPoints; }
    fftwf_complex* spectrum(std::size_t signal) { return spectra_.get() + signal * kBins; }
    void forward() { fftwf_execute(forward_); }
    void inverse() { fftwf_execute(inverse_); }

  private:
    FftwArray<float> time_;
    FftwArray<fftwf_complex> spectra_;
    fftwf_plan forward_;
    fftwf_plan inverse_;
};

// Copies a spectrum from FFTW's order into tiles that are `stride` apart.
void toTiles(const fftwf_complex* spectrum, Tile* tiles, std::size_t stride) {
    for (std::size_t tile = 0; tile < kTiles; ++tile, tiles += stride) {
        const std::size_t first = tile * kTileBins;
        const std::size_t bins = std::min(kTileBins, kBins - first);
        for (std::size_t i = 0; i < bins; ++i) {
            tiles->re[i] = spectrum[first + i][0];
            tiles->im[i] = spectrum[first + i][1];
        }
    }
}

void fromTiles(const Tile* tiles, std::size_t stride, fftwf_complex* spectrum) {
    for (std::size_t tile = 0; tile < kTiles; ++tile, tiles += stride) {
        const std::size_t first = tile * kTileBins;
        const std::size_t bins = std::min(kTileBins, kBins - first);
        for (std::size_t i = 0; i < bins; ++i) {
            spectrum[first + i][0] = tiles->re[i];
            spectrum[first + i][1] = tiles->im[i];
        }
    }
}

class FloatConvolver {
  public:
    explicit FloatConvolver(const Stage& stage)
        : channels_(stage.channels),
          partitions_((stage.longestResponse() + kBlock_frames - 1) / kBlock_frames),
          in_(channels_),
          out_(2),
          x_(kTiles * channels_ * 2 * partitions_),
          h_(kTiles * channels_ * partitions_ * 2),
          y_(kTiles * 2) {
        for (const Path& path : stage.paths) load(path);
    }

    // Slot for the next 240 samples of a channel.
    float* in(std::size_t channel) { return in_.time(channel) + kBlock_frames; }
    const float* out(std::size_t ear) { return out_.time(ear) + kBlock_frames; }

    void process() {
        in_.forward();
        newest_ = (newest_ == 0 ? partitions_ : newest_) - 1;
        for (std::size_t channel = 0; channel < channels_; ++channel) {
            Tile* const history = x_.data() + channel * 2 * partitions_ + newest_;
            toTiles(in_.spectrum(channel), history, channels_ * 2 * partitions_);
            for (std::size_t tile = 0; tile < kTiles; ++tile) {
                Tile* const newest = history + tile * channels_ * 2 * partitions_;
                newest[partitions_] = *newest;
            }
            std::copy_n(in(channel), kBlock_frames, in_.time(channel));
        }
        sumOfProducts(x_.data(), h_.data(), kTiles, channels_, partitions_, newest_, y_.data());
        for (const std::size_t ear : {0U, 1U}) fromTiles(y_.data() + ear, 2, out_.spectrum(ear));
        out_.inverse();
    }

  private:
    void load(const Path& path) {
        Transforms transforms(1);
        for (std::size_t partition = 0; partition * kBlock_frames < path.response.size(); ++partition) {
            const std::size_t first = partition * kBlock_frames;
            const std::size_t taps = std::min(kBlock_frames, path.response.size() - first);
            std::fill_n(transforms.time(0), kPoints, 0.0F);
            for (std::size_t i = 0; i < taps; ++i) {
                // FFTW's inverse is not normalized; the responses carry the factor.
                transforms.time(0)[i] = path.response[first + i] / static_cast<float>(kPoints);
            }
            transforms.forward();
            Tile* const tiles = h_.data() + (path.channel * partitions_ + partition) * 2 + path.ear;
            toTiles(transforms.spectrum(0), tiles, channels_ * partitions_ * 2);
        }
    }

    std::size_t channels_;
    std::size_t partitions_;
    Transforms in_;   // time domain: the previous block and the current one
    Transforms out_;  // time domain: 240 aliased samples, then the 240 of the output
    Tiles x_;
    Tiles h_;
    Tiles y_;
    std::size_t newest_ = 0;
};

class FloatEngine : public Engine {
  public:
    FloatEngine(const Layout& layout, const Material& material)
        : Engine("float yardstick"), planes_(material.planes()), convolver_(layout.stages.front()) {
        if (layout.stages.size() != 1) throw std::invalid_argument("the layout must have exactly one stage");
    }

    std::size_t callFrames() const override { return kBlock_frames; }

    void process(std::size_t first_frame) override {
        for (std::size_t channel = 0; channel < planes_.size(); ++channel) {
            std::copy_n(planes_[channel].data() + first_frame, kBlock_frames, convolver_.in(channel));
        }
        convolver_.process();
    }

    void appendOutput(Ears& ears) override {
        for (std::size_t i = 0; i < kBlock_frames; ++i) {
            ears.push_back(convolver_.out(0)[i]);
            ears.push_back(convolver_.out(1)[i]);
        }
    }

  private:
    std::vector<std::vector<float>> planes_;
    FloatConvolver convolver_;
};

}  // namespace

std::unique_ptr<Engine> makeFloatEngine(const Layout& layout, const Material& material) {
    return std::make_unique<FloatEngine>(layout, material);
}

}  // namespace compare
