#include "loudness.h"

#include <algorithm>
#include <cmath>

#include "failure.h"

namespace sonivex_tool {
namespace {

// Below 3.4 kHz the K-weighting's shelf at 1.7 kHz lies above half the sample rate, and libebur128's filter
// is unstable; from 16 to 19 Hz libebur128 writes out of bounds. Above the two upper limits it creates no
// meter.
constexpr int kLowestRate_hz = 4000;
constexpr int kHighestRate_hz = 2822400;
constexpr int kMaxChannels = 64;

AudioSpec doubleSpec(AudioSpec spec) {
    spec.format = AV_SAMPLE_FMT_DBL;
    return spec;
}

// Returns a loudspeaker's position, which sets its weight in ITU-R BS.1770.
int ituPosition(AVChannel channel, int channels) {
    switch (channel) {
        case AV_CHAN_FRONT_LEFT:
            return EBUR128_LEFT;
        case AV_CHAN_FRONT_RIGHT:
            return EBUR128_RIGHT;
        case AV_CHAN_FRONT_CENTER:
            return EBUR128_CENTER;
        case AV_CHAN_LOW_FREQUENCY:
        case AV_CHAN_LOW_FREQUENCY_2:
            return EBUR128_UNUSED;
        case AV_CHAN_SIDE_LEFT:
            return channels > 6 ? EBUR128_Mp090 : EBUR128_LEFT_SURROUND;
        case AV_CHAN_SIDE_RIGHT:
            return channels > 6 ? EBUR128_Mm090 : EBUR128_RIGHT_SURROUND;
        case AV_CHAN_BACK_LEFT:
            return channels > 6 ? EBUR128_Mp135 : EBUR128_LEFT_SURROUND;
        case AV_CHAN_BACK_RIGHT:
            return channels > 6 ? EBUR128_Mm135 : EBUR128_RIGHT_SURROUND;
        default:
            return EBUR128_Mp180;  // a position of weight 1
    }
}

std::optional<double> decibels(double peak) {
    if (!(peak > 0.0) || !std::isfinite(peak)) return std::nullopt;
    return 20.0 * std::log10(peak);
}

}  // namespace

void LoudnessMeter::Closer::operator()(ebur128_state* state) const {
    ebur128_destroy(&state);
}

void placeLoudspeakers(ebur128_state& meter, const AVChannelLayout& layout) {
    for (unsigned c = 0; c < meter.channels; ++c) {
        const AVChannel channel = av_channel_layout_channel_from_index(&layout, c);
        ebur128_set_channel(&meter, c, ituPosition(channel, static_cast<int>(meter.channels)));
    }
}

std::string whyUnmeasurable(const AudioSpec& spec) {
    if (spec.rate_hz < kLowestRate_hz || spec.rate_hz > kHighestRate_hz) {
        return "its sample rate is " + std::to_string(spec.rate_hz) + " Hz; levels can be measured from " +
               std::to_string(kLowestRate_hz) + " to " + std::to_string(kHighestRate_hz) + " Hz";
    }
    if (spec.channels() > kMaxChannels) {
        return "it has " + std::to_string(spec.channels()) + " channels; levels can be measured of at most " +
               std::to_string(kMaxChannels);
    }
    return "";
}

LoudnessMeter::LoudnessMeter(const AudioSpec& spec, Peaks peaks)
    : to_double_(doubleSpec(spec)), peaks_(peaks) {
    const std::string reason = whyUnmeasurable(spec);
    if (!reason.empty()) throw Failure(ExitCode::UnsupportedAudio, "cannot measure the audio: " + reason);
    const int channels = spec.channels();
    const int mode = EBUR128_MODE_I | EBUR128_MODE_SAMPLE_PEAK |
                     (peaks == Peaks::SamplesAndTruePeak ? EBUR128_MODE_TRUE_PEAK : 0);
    state_.reset(allocated(
        ebur128_init(static_cast<unsigned>(channels), static_cast<unsigned long>(spec.rate_hz), mode)));
    placeLoudspeakers(*state_, spec.layout);
}

LoudnessMeter::~LoudnessMeter() = default;

void LoudnessMeter::add(const AVFrame& frame) {
    const FramePtr samples = to_double_.convert(FramePtr(allocated(av_frame_clone(&frame))));
    if (samples == nullptr) return;
    const auto* data = reinterpret_cast<const double*>(samples->extended_data[0]);
    if (ebur128_add_frames_double(state_.get(), data, static_cast<size_t>(samples->nb_samples)) ==
        EBUR128_ERROR_NOMEM) {
        throw std::bad_alloc();
    }
}

double LoudnessMeter::highestPeak(int (*peak_of)(ebur128_state*, unsigned, double*)) const {
    double highest = 0.0;
    for (unsigned c = 0; c < state_->channels; ++c) {
        double of_channel = 0.0;
        if (peak_of(state_.get(), c, &of_channel) == EBUR128_SUCCESS) highest = std::max(highest, of_channel);
    }
    return highest;
}

Loudness LoudnessMeter::result() const {
    Loudness loudness;
    double lufs = 0.0;
    if (ebur128_loudness_global(state_.get(), &lufs) == EBUR128_SUCCESS && std::isfinite(lufs)) {
        loudness.integrated_lufs = lufs;
    }
    loudness.sample_peak_dbfs = decibels(highestPeak(ebur128_sample_peak));
    if (peaks_ == Peaks::SamplesAndTruePeak)
        loudness.true_peak_dbtp = decibels(highestPeak(ebur128_true_peak));
    return loudness;
}

}  // namespace sonivex_tool
