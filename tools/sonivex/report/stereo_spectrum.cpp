#include "stereo_spectrum.h"

extern "C" {
#include <libavutil/mem.h>
#include <libavutil/tx.h>
}

#include <array>
#include <cmath>
#include <numbers>

#include "av_objects.h"

namespace sonivex_tool {

/** libavutil's transform and its aligned buffers. */
struct StereoSpectrum::Transform {
    Transform() {
        constexpr float kScale = 1.0F;
        if (av_tx_init(&context, &run, AV_TX_FLOAT_FFT, 0, kWindow, &kScale, 0) < 0) throw std::bad_alloc();
        input.reset(
            allocated(static_cast<AVComplexFloat*>(av_malloc_array(kWindow, sizeof(AVComplexFloat)))));
        output.reset(
            allocated(static_cast<AVComplexFloat*>(av_malloc_array(kWindow, sizeof(AVComplexFloat)))));
        for (std::size_t n = 0; n < kWindow; ++n) {
            const double turn =
                2.0 * std::numbers::pi * static_cast<double>(n) / static_cast<double>(kWindow);
            window.at(n) = static_cast<float>(0.5 - 0.5 * std::cos(turn));
        }
    }
    ~Transform() { av_tx_uninit(&context); }
    Transform(const Transform&) = delete;
    Transform& operator=(const Transform&) = delete;

    struct Free {
        void operator()(AVComplexFloat* values) const { av_free(values); }
    };

    AVTXContext* context = nullptr;
    av_tx_fn run = nullptr;
    std::unique_ptr<AVComplexFloat, Free> input;
    std::unique_ptr<AVComplexFloat, Free> output;
    std::array<float, kWindow> window{};
};

StereoSpectrum::StereoSpectrum() : transform_(std::make_unique<Transform>()) {}

StereoSpectrum::~StereoSpectrum() = default;

void StereoSpectrum::transform(std::span<const std::complex<float>> samples) {
    Transform& own = *transform_;
    for (std::size_t n = 0; n < kWindow; ++n) {
        own.input.get()[n] = {samples[n].real() * own.window.at(n), samples[n].imag() * own.window.at(n)};
    }
    own.run(own.context, own.output.get(), own.input.get(), sizeof(AVComplexFloat));
}

StereoSpectrum::Bin StereoSpectrum::at(std::size_t bin) const {
    const auto value = [&](std::size_t k) {
        const AVComplexFloat& of = transform_->output.get()[k];
        return std::complex<double>(of.re, of.im);
    };
    const std::complex<double> here = value(bin);
    const std::complex<double> mirrored = std::conj(value((kWindow - bin) % kWindow));
    const std::complex<double> difference = here - mirrored;
    // The difference is divided by 2i.
    return {(here + mirrored) / 2.0, {difference.imag() / 2.0, -difference.real() / 2.0}};
}

}  // namespace sonivex_tool
