#include "loudness_curve.h"

#include <algorithm>
#include <cmath>

#include "failure.h"
#include "loudness.h"

namespace sonivex_tool {
namespace {

constexpr double kMomentary_s = 0.4;
constexpr double kShortTerm_s = 3.0;
constexpr double kAbsoluteGate_lufs = -70.0;

AudioSpec doubleSpec(AudioSpec spec) {
    spec.format = AV_SAMPLE_FMT_DBL;
    return spec;
}

std::optional<double> decibels(double value) {
    if (!(value > 0.0) || !std::isfinite(value)) return std::nullopt;
    return 20.0 * std::log10(value);
}

}  // namespace

void LoudnessCurveMeter::Closer::operator()(ebur128_state* state) const {
    ebur128_destroy(&state);
}

LoudnessCurveMeter::LoudnessCurveMeter(const AudioSpec& spec)
    : to_double_(doubleSpec(spec)),
      channels_(spec.channels()),
      rate_hz_(spec.rate_hz),
      step_frames_(std::max(1, static_cast<int>(std::lround(kLoudnessStep_s * spec.rate_hz)))) {
    const std::string reason = whyUnmeasurable(spec);
    if (!reason.empty()) throw Failure(ExitCode::UnsupportedAudio, "cannot measure the audio: " + reason);
    state_.reset(allocated(ebur128_init(
        static_cast<unsigned>(channels_), static_cast<unsigned long>(spec.rate_hz),
        EBUR128_MODE_M | EBUR128_MODE_S | EBUR128_MODE_I | EBUR128_MODE_LRA | EBUR128_MODE_TRUE_PEAK)));
    placeLoudspeakers(*state_, spec.layout);
}

LoudnessCurveMeter::~LoudnessCurveMeter() = default;

void LoudnessCurveMeter::read() {
    LoudnessReading& reading = curve_.readings.emplace_back();
    reading.time_s = static_cast<double>(frames_) / rate_hz_;
    double value = 0.0;
    const auto keep = [&](std::optional<double>& place, double window_s, int result) {
        const bool is_full = reading.time_s >= window_s - 0.5 / rate_hz_;
        if (is_full && result == EBUR128_SUCCESS && std::isfinite(value)) place = value;
    };
    keep(reading.momentary_lufs, kMomentary_s, ebur128_loudness_momentary(state_.get(), &value));
    keep(reading.short_term_lufs, kShortTerm_s, ebur128_loudness_shortterm(state_.get(), &value));
    reading.true_peak_dbtp = decibels(step_peak_);
    in_step_ = 0;
    step_peak_ = 0.0;
}

void LoudnessCurveMeter::addSamples(const double* samples, int frames) {
    if (ebur128_add_frames_double(state_.get(), samples, static_cast<size_t>(frames)) == EBUR128_ERROR_NOMEM)
        throw std::bad_alloc();
    for (unsigned c = 0; c < static_cast<unsigned>(channels_); ++c) {
        double peak = 0.0;
        if (ebur128_prev_true_peak(state_.get(), c, &peak) == EBUR128_SUCCESS)
            step_peak_ = std::max(step_peak_, peak);
    }
    peak_ = std::max(peak_, step_peak_);
    frames_ += frames;
    in_step_ += frames;
}

void LoudnessCurveMeter::add(const AVFrame& frame) {
    const FramePtr doubles = to_double_.convert(FramePtr(allocated(av_frame_clone(&frame))));
    if (doubles == nullptr) return;
    const auto* samples = reinterpret_cast<const double*>(doubles->extended_data[0]);
    int left = doubles->nb_samples;
    while (left > 0) {
        const int piece = std::min(left, step_frames_ - in_step_);
        addSamples(samples, piece);
        samples += static_cast<std::ptrdiff_t>(piece) * channels_;
        left -= piece;
        if (in_step_ == step_frames_) read();
    }
}

LoudnessCurve LoudnessCurveMeter::finish() {
    if (in_step_ > 0) read();
    double value = 0.0;
    if (ebur128_loudness_global(state_.get(), &value) == EBUR128_SUCCESS && std::isfinite(value)) {
        curve_.integrated_lufs = value;
        if (ebur128_relative_threshold(state_.get(), &value) == EBUR128_SUCCESS && std::isfinite(value))
            curve_.relative_gate_lufs = std::max(value, kAbsoluteGate_lufs);
    }
    const bool has_short_term =
        std::any_of(curve_.readings.begin(), curve_.readings.end(),
                    [](const LoudnessReading& reading) { return reading.short_term_lufs.has_value(); });
    if (has_short_term && ebur128_loudness_range(state_.get(), &value) == EBUR128_SUCCESS &&
        std::isfinite(value))
        curve_.range_lu = value;
    curve_.true_peak_dbtp = decibels(peak_);
    return std::move(curve_);
}

}  // namespace sonivex_tool
