#pragma once

#include <ebur128.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "format_converter.h"

namespace sonivex_tool {

/** Time between two readings of a loudness curve. */
inline constexpr double kLoudnessStep_s = 0.1;

/** Holds the readings of the meters of EBU R128 at one time. A value is missing as long as its window is not
 *  full, and for silence. */
struct LoudnessReading {
    double time_s = 0.0;                    // the end of the windows
    std::optional<double> momentary_lufs;   // of the last 400 ms
    std::optional<double> short_term_lufs;  // of the last 3 s
    std::optional<double> true_peak_dbtp;   // of the last step, the highest of all channels
};

/** The loudness of a sound over its time, and of the whole. */
struct LoudnessCurve {
    std::vector<LoudnessReading> readings;     // each kLoudnessStep_s
    std::optional<double> integrated_lufs;     // missing if nothing exceeds the absolute gate of -70 LUFS
    std::optional<double> relative_gate_lufs;  // below which the integrated loudness leaves sound out
    std::optional<double> range_lu;            // EBU Tech 3342; missing for less than 3 s of sound
    std::optional<double> true_peak_dbtp;      // missing for digital silence
};

/** Measures a loudness curve of frames that share one spec. */
class LoudnessCurveMeter {
  public:
    /** @throw Failure (UnsupportedAudio) if `spec` cannot be measured (see whyUnmeasurable); std::bad_alloc,
     *  from add() and finish() too */
    explicit LoudnessCurveMeter(const AudioSpec& spec);
    ~LoudnessCurveMeter();

    /** Measures the next frame. */
    void add(const AVFrame& frame);
    /** Measures the last, shorter step and returns the curve. Call it once. */
    LoudnessCurve finish();

  private:
    struct Closer {
        void operator()(ebur128_state* state) const;
    };

    void addSamples(const double* samples, int frames);
    void read();

    FormatConverter to_double_;
    std::unique_ptr<ebur128_state, Closer> state_;
    int channels_;
    int rate_hz_;
    int step_frames_;
    int in_step_ = 0;
    int64_t frames_ = 0;
    double step_peak_ = 0.0;
    double peak_ = 0.0;
    LoudnessCurve curve_;
};

}  // namespace sonivex_tool
