#pragma once

#include <ebur128.h>

#include <memory>
#include <optional>
#include <string>

#include "format_converter.h"

namespace sonivex_tool {

/** The loudness of a file; a value that cannot be given is missing. */
struct Loudness {
    std::optional<double> integrated_lufs = {};   // missing if nothing exceeds the gate of -70 LUFS
    std::optional<double> sample_peak_dbfs = {};  // missing for digital silence
    std::optional<double> true_peak_dbtp =
        {};  // ITU-R BS.1770; missing for digital silence, or if not measured
};

/** Which peaks are measured. The true peak takes several times as long as all the rest. */
enum class Peaks { Samples, SamplesAndTruePeak };

/** Gives each channel of a meter its weight in ITU-R BS.1770, by the position of its loudspeaker.
 *  @param layout has as many channels as the meter */
void placeLoudspeakers(ebur128_state& meter, const AVChannelLayout& layout);

/** Explains, in a message for the user, why loudness and levels of such audio cannot be measured.
 *  @return empty if they can */
std::string whyUnmeasurable(const AudioSpec& spec);

/** Measures the integrated loudness (EBU R128) and the peaks of frames that share one spec. */
class LoudnessMeter {
  public:
    /** @throw Failure (UnsupportedAudio) if `spec` cannot be measured (see whyUnmeasurable); std::bad_alloc,
     *  from add() too */
    explicit LoudnessMeter(const AudioSpec& spec, Peaks peaks = Peaks::Samples);
    ~LoudnessMeter();

    /** Measures the next frame of the stream. */
    void add(const AVFrame& frame);
    /** Returns the loudness of all frames so far. */
    Loudness result() const;

  private:
    struct Closer {
        void operator()(ebur128_state* state) const;
    };

    double highestPeak(int (*peak_of)(ebur128_state*, unsigned, double*)) const;

    FormatConverter to_double_;
    Peaks peaks_;
    std::unique_ptr<ebur128_state, Closer> state_;
};

}  // namespace sonivex_tool
