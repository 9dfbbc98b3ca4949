#include "quantiser.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

namespace sonivex_tool {
namespace {

constexpr uint64_t kNoiseSeed = 0x2545F4914F6CDD1DU;
constexpr double kHalfWord = 4294967296.0;  // 2^32

}  // namespace

Quantiser::Quantiser(const AudioSpec& target, int bits, bool dither)
    : target_(target),
      dither_(dither),
      steps_(std::ldexp(1.0, bits - 1)),
      highest_step_((int32_t{1} << (bits - 1)) - 1),
      unused_bits_(8 * av_get_bytes_per_sample(target.format) - bits),
      hold_frames_(static_cast<size_t>(target.channels()), 0),
      noise_state_(kNoiseSeed) {}

// Returns the sum of two uniform numbers from -1/2 to 1/2. They are the halves of one word of the generator
// xorshift64* (Vigna 2016).
double Quantiser::noise() {
    noise_state_ ^= noise_state_ >> 12U;
    noise_state_ ^= noise_state_ << 25U;
    noise_state_ ^= noise_state_ >> 27U;
    const uint64_t word = noise_state_ * 0x2545F4914F6CDD1DU;
    return (static_cast<double>(word >> 32U) + static_cast<double>(word & 0xFFFFFFFFU) + 1.0) / kHalfWord -
           1.0;
}

int32_t Quantiser::step(double sample, int& hold_frames) {
    if (std::isnan(sample)) return 0;
    if (std::abs(sample) > 1.0) {
        ++clipped_samples_;
        return sample > 0.0 ? highest_step_ : -highest_step_ - 1;
    }
    double position = sample * steps_;
    if (position != std::rint(position)) hold_frames = kDitherHold_frames;
    if (dither_ && hold_frames > 0) {
        --hold_frames;
        position += noise();
    }
    const auto nearest = static_cast<int32_t>(std::lrint(position));
    return std::clamp(nearest, -highest_step_ - 1, highest_step_);
}

template <typename Sample>
void Quantiser::fill(AVFrame& out, const AVFrame& doubles) {
    // Unsigned samples have their silence at half scale.
    constexpr int32_t kZero = std::is_unsigned_v<Sample> ? 1 << (8 * sizeof(Sample) - 1) : 0;
    const int channels = target_.channels();
    const bool is_planar = av_sample_fmt_is_planar(target_.format) != 0;
    const auto* samples = reinterpret_cast<const double*>(doubles.extended_data[0]);
    auto* interleaved = reinterpret_cast<Sample*>(out.extended_data[0]);
    for (int i = 0; i < doubles.nb_samples; ++i) {
        for (int c = 0; c < channels; ++c) {
            const int32_t value =
                step(*samples++, hold_frames_[static_cast<size_t>(c)]) * (1 << unused_bits_);
            const auto stored = static_cast<Sample>(value + kZero);
            if (is_planar) {
                reinterpret_cast<Sample*>(out.extended_data[c])[i] = stored;
            } else {
                *interleaved++ = stored;
            }
        }
    }
}

FramePtr Quantiser::quantise(const AVFrame& doubles) {
    FramePtr out = makeFrame(target_, doubles.nb_samples);
    switch (av_get_packed_sample_fmt(target_.format)) {
        case AV_SAMPLE_FMT_U8:
            fill<uint8_t>(*out, doubles);
            break;
        case AV_SAMPLE_FMT_S16:
            fill<int16_t>(*out, doubles);
            break;
        default:
            fill<int32_t>(*out, doubles);
            break;
    }
    return out;
}

}  // namespace sonivex_tool
