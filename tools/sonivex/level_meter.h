#pragma once

#include <ebur128.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "format_converter.h"
#include "loudness.h"

namespace sonivex_tool {

/** Levels of one channel or of all together; what cannot be said is missing. */
struct Levels {
    bool is_finite = true;                   // else a sample is no number, and nothing below can be said
    std::optional<double> rms_dbfs;          // 0 is a full-scale square wave; missing for digital silence
    std::optional<double> sample_peak_dbfs;  // likewise
    std::optional<double> true_peak_dbtp;    // ITU-R BS.1770, by oversampling; likewise
    std::optional<double> integrated_lufs;   // missing when nothing rises above the gate of -70 LUFS
};

/** What a LevelMeter found. */
struct LevelReport {
    int64_t frames = 0;
    std::vector<Levels> channels;  // a channel's loudness is that of a mono file of it
    Levels all;                    // the mean power of the channels, the highest peaks, the mix's loudness
    std::optional<int64_t> first_audible_frame;  // the first with a sample above -60 dBFS
};

/** Measures levels of frames of one spec. */
class LevelMeter {
  public:
    /** @throw Failure (UnsupportedAudio) for what is unmeasurable; std::bad_alloc, here and below */
    explicit LevelMeter(const AudioSpec& spec);
    ~LevelMeter();

    void add(const AVFrame& frame);
    LevelReport result() const;

  private:
    struct Closer {
        void operator()(ebur128_state* state) const;
    };
    struct Channel {
        std::unique_ptr<ebur128_state, Closer> meter;
        double energy = 0.0;  // sum of the squared samples
    };

    void addChannel(Channel& channel, const double* samples, int frames);

    FormatConverter to_planes_;
    LoudnessMeter mix_;
    std::vector<Channel> channels_;
    int64_t frames_ = 0;
    std::optional<int64_t> first_audible_frame_;
};

}  // namespace sonivex_tool
