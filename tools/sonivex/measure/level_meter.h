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

/** Levels of one channel or of all channels together; a level that cannot be given is missing. */
struct Levels {
    bool is_finite = true;                   // false: a sample is NaN or infinite, and every level is missing
    std::optional<double> rms_dbfs;          // 0 is a full-scale square wave; missing for digital silence
    std::optional<double> sample_peak_dbfs;  // missing for digital silence
    std::optional<double> true_peak_dbtp;    // ITU-R BS.1770, by oversampling; missing for digital silence
    std::optional<double> integrated_lufs;   // EBU R128; missing if nothing exceeds the gate of -70 LUFS
};

/** The result of a LevelMeter. */
struct LevelReport {
    int64_t frames = 0;
    std::vector<Levels> channels;  // the loudness of a channel is that of a mono file of it
    Levels all;                    // the channels' mean power, their highest peaks, and the mix's loudness
    std::optional<int64_t> first_audible_frame;  // first frame with a sample above -60 dBFS in any channel
};

/** Measures the levels of frames that share one spec. */
class LevelMeter {
  public:
    /** @throw Failure (UnsupportedAudio) if `spec` cannot be measured (see whyUnmeasurable); std::bad_alloc,
     *  from add() too */
    explicit LevelMeter(const AudioSpec& spec);
    ~LevelMeter();

    /** Measures the next frame of the stream. */
    void add(const AVFrame& frame);
    /** Returns the levels of all frames so far. */
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
