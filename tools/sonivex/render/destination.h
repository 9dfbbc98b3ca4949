#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "audio_sink.h"
#include "format_converter.h"
#include "measuring_thread.h"
#include "work_thread.h"

namespace sonivex_tool {

/** Converts audio to the encoder's format, then measures it and encodes it into a file on two threads.
 *
 *  The members throw what AudioSink, FormatConverter and LoudnessMeter throw, also for earlier calls. */
class Destination {
  public:
    /** @param measure false: `loudness` stays empty
     *  @param dither when the encoder takes fewer bits than the audio has */
    Destination(const EncoderPlan& plan, const AudioSource& source, OutputFile& file, bool measure,
                bool dither);

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
    AudioSink sink_;
    int64_t frames_ = 0;
    Loudness loudness_;
    std::optional<MeasuringThread> meter_;
    WorkThread<FramePtr> encoder_;
};

}  // namespace sonivex_tool
