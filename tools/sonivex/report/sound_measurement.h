#pragma once

#include <optional>

#include "loudness.h"
#include "measured_report.h"
#include "opus_sound.h"
#include "spectrogram.h"

namespace sonivex_tool {

/** Measures one version of the sound as it is made: its loudness in its own layout, and the pictures of the
 *  stereo sound that is heard. Other layouts are mixed to stereo as ITU-R BS.775 folds them down. */
class SoundMeasurement {
  public:
    /** @param presence receives the stereo sound as output, if any; must outlive this object */
    SoundMeasurement(const AudioSpec& spec, PresenceMeter* presence);

    /** Measures the next frame. Its spec is that of the constructor. */
    void add(const AVFrame& frame);
    /** Fills in what was measured. Call it once. */
    void finish(MeasuredVersion& version);

  private:
    void addStereo(const AVFrame* frame);

    AudioSpec spec_;
    int64_t frames_ = 0;
    FormatConverter to_measurable_;
    LoudnessCurveMeter loudness_;
    FormatConverter to_stereo_;
    WaveformMeter waveform_;
    SpectrogramMeter spectrogram_;
    PresenceMeter* presence_;
};

/** Encodes and measures the stretch of a version that is heard. */
class HeardSound {
  public:
    /** @param plan the stretch and the bit rate */
    explicit HeardSound(const SoundPlan& plan);

    /** Takes the next frame of the version, of any spec. */
    void add(const AVFrame& frame);
    /** Fills in the sound. Call it once. */
    void finish(MeasuredVersion& version);

  private:
    void addStereo(FramePtr frame);

    int64_t start_;  // at kPageRate_hz
    int64_t end_;
    int64_t position_ = 0;
    FormatConverter to_stereo_;
    LoudnessMeter meter_;
    OpusSound opus_;
};

/** Returns the AudioSpec in which a page's sound is heard: interleaved floats, stereo, at kPageRate_hz. */
AudioSpec heardSpec();

}  // namespace sonivex_tool
