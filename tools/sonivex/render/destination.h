#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "audio_sink.h"
#include "format_converter.h"
#include "level_stage.h"
#include "measuring_thread.h"
#include "work_thread.h"

namespace sonivex_tool {

/** What a Destination does to the audio. */
struct DestinationSettings {
    bool measure = true;                  // false: `loudness` stays empty
    bool dither = true;                   // where the encoder's samples have fewer bits
    std::optional<LevelPlan> level = {};  // gain and limiter; with it the true peak is measured too
};

/** Converts audio to the encoder's format, then measures it and encodes it into a file on two threads.
 *
 *  The members throw what AudioSink, FormatConverter, LevelStage and LoudnessMeter throw, also for earlier
 *  calls. */
class Destination {
  public:
    Destination(const EncoderPlan& plan, const AudioSource& source, OutputFile& file,
                const DestinationSettings& settings);

    /** Appends a frame of any spec. */
    void write(FramePtr frame);
    /** Waits until everything is encoded, and writes the file's end. */
    void finish();

    /** Returns the samples per channel that were handed to the encoder. */
    int64_t frames() const { return frames_; }
    /** Returns the loudness of the encoder's input; call it after `finish`. */
    const Loudness& loudness() const { return loudness_; }

  private:
    void writeConverted(FramePtr frame);

    FormatConverter converter_;
    std::optional<LevelStage> level_;  // before the converter
    AudioSink sink_;
    int64_t frames_ = 0;
    Loudness loudness_;
    std::optional<MeasuringThread> meter_;
    WorkThread<FramePtr> encoder_;
};

}  // namespace sonivex_tool
