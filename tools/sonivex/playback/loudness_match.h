#pragma once

#include <ebur128.h>

#include <memory>
#include <optional>

#include "peak_hold.h"

namespace sonivex_tool {

/** Holds what a LoudnessMatch has found so far; a value that cannot be given is missing. */
struct MatchReading {
    std::optional<double> original_lufs;  // EBU R128 short-term loudness: of the last 3 s, or of all if less
    std::optional<double> processed_lufs;
    std::optional<double> original_peak_dbfs;  // highest sample of the last second
    std::optional<double> processed_peak_dbfs;
    double original_gain_db = 0.0;  // 0 or less; one of the two is 0
    double processed_gain_db = 0.0;
};

// Finds the gains at which two versions of the same sound are equally loud:
//
//   every 0.1 s, as soon as 0.4 s are known:
//     difference = loudness(processed) - loudness(original), both of the same last 3 s
//     smoothed  += (difference - smoothed) * (1 - exp(-0.1 s / 0.5 s)); the first difference counts in full
//   gain of the louder one = -|smoothed|, gain of the other one = 0 dB
//
// No gain is above 0 dB, so matching clips nothing. A passage below the absolute gate of R128 (-70 LUFS) in
// either version changes nothing.

/** Measures the original and the processed sound of one effect, and matches their loudness. */
class LoudnessMatch {
  public:
    /** @throw std::bad_alloc, from add() too */
    explicit LoudnessMatch(int rate_hz);

    /** Adds frames of both versions at the same positions. @param original, processed [frames][2] */
    void add(const float* original, const float* processed, int frames);

    /** Returns what is known so far. */
    const MatchReading& reading() const { return reading_; }

  private:
    struct Closer {
        void operator()(ebur128_state* state) const { ebur128_destroy(&state); }
    };
    using Meter = std::unique_ptr<ebur128_state, Closer>;

    std::optional<double> shortTerm_lufs(const Meter& meter) const;
    void update();

    int rate_hz_;
    Meter original_;
    Meter processed_;
    PeakHold original_peak_;
    PeakHold processed_peak_;
    int step_frames_;
    int frames_in_step_ = 0;
    double measured_s_ = 0.0;
    std::optional<double> smoothed_db_;
    MatchReading reading_;
};

}  // namespace sonivex_tool
