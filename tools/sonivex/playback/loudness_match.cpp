#include "loudness_match.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace sonivex_tool {
namespace {

constexpr double kStep_s = 0.1;
constexpr double kWindow_s = 3.0;
constexpr double kShortest_s = 0.4;  // the gating block of R128
constexpr double kSmoothing_s = 0.5;
constexpr double kGate_lufs = -70.0;

ebur128_state* newMeter(int rate_hz) {
    constexpr unsigned kChannels = 2;
    ebur128_state* state = ebur128_init(kChannels, static_cast<unsigned long>(rate_hz), EBUR128_MODE_S);
    if (state == nullptr) throw std::bad_alloc();
    return state;
}

}  // namespace

LoudnessMatch::LoudnessMatch(int rate_hz)
    : rate_hz_(rate_hz),
      original_(newMeter(rate_hz)),
      processed_(newMeter(rate_hz)),
      original_peak_(rate_hz),
      processed_peak_(rate_hz),
      step_frames_(static_cast<int>(kStep_s * rate_hz)) {}

void LoudnessMatch::add(const float* original, const float* processed, int frames) {
    while (frames > 0) {
        const int part = std::min(frames, step_frames_ - frames_in_step_);
        (void)ebur128_add_frames_float(original_.get(), original, static_cast<size_t>(part));
        (void)ebur128_add_frames_float(processed_.get(), processed, static_cast<size_t>(part));
        original_peak_.add(original, part);
        processed_peak_.add(processed, part);
        original += static_cast<ptrdiff_t>(part) * 2;
        processed += static_cast<ptrdiff_t>(part) * 2;
        frames -= part;
        frames_in_step_ += part;
        if (frames_in_step_ < step_frames_) continue;
        frames_in_step_ = 0;
        measured_s_ += static_cast<double>(step_frames_) / rate_hz_;
        update();
    }
}

std::optional<double> LoudnessMatch::shortTerm_lufs(const Meter& meter) const {
    if (measured_s_ < kShortest_s) return std::nullopt;
    // The meter's window would take what it has not heard yet for silence.
    const auto window_ms = static_cast<unsigned long>(1000.0 * std::min(measured_s_, kWindow_s));
    double lufs = 0.0;
    if (ebur128_loudness_window(meter.get(), window_ms, &lufs) != EBUR128_SUCCESS) return std::nullopt;
    if (!(lufs >= kGate_lufs)) return std::nullopt;
    return lufs;
}

void LoudnessMatch::update() {
    reading_.original_lufs = shortTerm_lufs(original_);
    reading_.processed_lufs = shortTerm_lufs(processed_);
    reading_.original_peak_dbfs = original_peak_.peak_dbfs();
    reading_.processed_peak_dbfs = processed_peak_.peak_dbfs();
    if (!reading_.original_lufs || !reading_.processed_lufs) return;
    const double difference_db = *reading_.processed_lufs - *reading_.original_lufs;
    const double before_db = smoothed_db_.value_or(difference_db);
    smoothed_db_ = before_db + (difference_db - before_db) * -std::expm1(-kStep_s / kSmoothing_s);
    reading_.processed_gain_db = std::min(-*smoothed_db_, 0.0);
    reading_.original_gain_db = std::min(*smoothed_db_, 0.0);
}

}  // namespace sonivex_tool
