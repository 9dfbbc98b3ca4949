#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "format_converter.h"
#include "level_stage.h"
#include "measuring_thread.h"
#include "media_sink.h"
#include "work_thread.h"

namespace sonivex_tool {

/** Tells what a Destination does to the audio. */
struct DestinationSettings {
    bool measure = true;                  // false: `loudness` stays empty
    bool dither = true;                   // where the encoder's samples have fewer bits
    std::optional<LevelPlan> level = {};  // gain and limiter; with it the true peak is measured too
};

/** Converts audio to the encoder's format, then measures it and encodes it on two threads. The packets of
 *  other streams go to the output between the frames, in the order of the calls.
 *
 *  The members throw what MediaSink, FormatConverter, LevelStage and LoudnessMeter throw, also for earlier
 *  calls. */
class Destination {
  public:
    /** The parameters but `settings` are those of MediaSink. */
    Destination(const OutputPlan& plan, const AVFormatContext& source, double audio_start_s, Output& output,
                const DestinationSettings& settings);

    /** Appends a frame of any spec. */
    void write(FramePtr frame);
    /** Appends a packet of another stream. */
    void copy(PacketPtr packet);
    /** Waits until everything is encoded, and writes the file's end. */
    void finish();

    /** Returns the samples per channel that were handed to the encoder. */
    int64_t frames() const { return frames_; }
    /** Returns what the user should know about the copied streams; call it after `finish`. */
    std::vector<std::string> notes() const { return sink_.notes(); }
    /** Returns the loudness of the encoder's input; call it after `finish`. */
    const Loudness& loudness() const { return loudness_; }

  private:
    // Either of the two.
    struct Item {
        FramePtr frame;
        PacketPtr packet;
    };

    void writeConverted(FramePtr frame);

    FormatConverter converter_;
    std::optional<LevelStage> level_;  // before the converter
    MediaSink sink_;
    int64_t frames_ = 0;
    Loudness loudness_;
    std::optional<MeasuringThread> meter_;
    WorkThread<Item> encoder_;
};

}  // namespace sonivex_tool
