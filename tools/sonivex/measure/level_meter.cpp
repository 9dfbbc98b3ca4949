#include "level_meter.h"

#include <algorithm>
#include <cmath>

namespace sonivex_tool {
namespace {

constexpr double kAudible = 0.001;  // -60 dBFS

AudioSpec planesOf(AudioSpec spec) {
    spec.format = AV_SAMPLE_FMT_DBLP;
    return spec;
}

std::optional<double> decibels(double value, double per_decade) {
    if (!(value > 0.0) || !std::isfinite(value)) return std::nullopt;
    return per_decade * std::log10(value);
}

void raise(std::optional<double>& highest, const std::optional<double>& value) {
    if (value && (!highest || *value > *highest)) highest = value;
}

}  // namespace

void LevelMeter::Closer::operator()(ebur128_state* state) const {
    ebur128_destroy(&state);
}

// The mix's meter is constructed first. It throws for every spec that the channels' meters could not measure.
LevelMeter::LevelMeter(const AudioSpec& spec) : to_planes_(planesOf(spec)), mix_(spec) {
    for (int c = 0; c < spec.channels(); ++c) {
        constexpr int kMeasures = EBUR128_MODE_I | EBUR128_MODE_TRUE_PEAK;
        channels_.emplace_back().meter.reset(
            allocated(ebur128_init(1, static_cast<unsigned long>(spec.rate_hz), kMeasures)));
    }
}

LevelMeter::~LevelMeter() = default;

void LevelMeter::addChannel(Channel& channel, const double* samples, int frames) {
    for (int n = 0; n < frames; ++n) channel.energy += samples[n] * samples[n];
    if (ebur128_add_frames_double(channel.meter.get(), samples, static_cast<size_t>(frames)) ==
        EBUR128_ERROR_NOMEM) {
        throw std::bad_alloc();
    }
}

void LevelMeter::add(const AVFrame& frame) {
    const FramePtr planes = to_planes_.convert(FramePtr(allocated(av_frame_clone(&frame))));
    if (planes == nullptr) return;
    mix_.add(frame);
    int first_audible = planes->nb_samples;
    for (size_t c = 0; c < channels_.size(); ++c) {
        const auto* samples = reinterpret_cast<const double*>(planes->extended_data[c]);
        addChannel(channels_[c], samples, planes->nb_samples);
        const double* audible =
            std::find_if(samples, samples + first_audible, [](double x) { return std::abs(x) > kAudible; });
        first_audible = static_cast<int>(audible - samples);
    }
    if (!first_audible_frame_ && first_audible < planes->nb_samples)
        first_audible_frame_ = frames_ + first_audible;
    frames_ += planes->nb_samples;
}

LevelReport LevelMeter::result() const {
    LevelReport report;
    report.frames = frames_;
    report.first_audible_frame = first_audible_frame_;
    const auto frames = static_cast<double>(std::max<int64_t>(frames_, 1));
    double energy = 0.0;
    for (const Channel& channel : channels_) {
        Levels& levels = report.channels.emplace_back();
        energy += channel.energy;
        levels.is_finite = std::isfinite(channel.energy);
        if (!levels.is_finite) continue;
        double value = 0.0;
        levels.rms_dbfs = decibels(channel.energy / frames, 10.0);
        if (ebur128_sample_peak(channel.meter.get(), 0, &value) == EBUR128_SUCCESS)
            levels.sample_peak_dbfs = decibels(value, 20.0);
        if (ebur128_true_peak(channel.meter.get(), 0, &value) == EBUR128_SUCCESS)
            levels.true_peak_dbtp = decibels(value, 20.0);
        if (ebur128_loudness_global(channel.meter.get(), &value) == EBUR128_SUCCESS && std::isfinite(value))
            levels.integrated_lufs = value;
        raise(report.all.sample_peak_dbfs, levels.sample_peak_dbfs);
        raise(report.all.true_peak_dbtp, levels.true_peak_dbtp);
    }
    if (!std::isfinite(energy)) {
        report.all = {};
        report.all.is_finite = false;
        return report;
    }
    report.all.rms_dbfs = decibels(energy / frames / static_cast<double>(channels_.size()), 10.0);
    report.all.integrated_lufs = mix_.result().integrated_lufs;
    return report;
}

}  // namespace sonivex_tool
