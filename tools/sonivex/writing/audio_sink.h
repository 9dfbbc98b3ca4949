#pragma once

#include <cstdint>

#include "audio_source.h"
#include "encoder_plan.h"
#include "output_file.h"
#include "reframer.h"

namespace sonivex_tool {

/** Encodes frames and muxes them into a file. */
class AudioSink {
  public:
    /** Opens the encoder and writes the file's header with the tags of `source`.
     *
     * `file` must outlive this object. The constructor and every member below throw Failure (OutputFormat,
     * OutputNotWritable, or the failure that `file` recorded) and std::bad_alloc. */
    AudioSink(const EncoderPlan& plan, const AudioSource& source, OutputFile& file);
    ~AudioSink();
    AudioSink(const AudioSink&) = delete;
    AudioSink& operator=(const AudioSink&) = delete;

    /** Encodes a frame, which must have the plan's spec. The samples are copied. */
    void write(const AVFrame& frame);

    /** Encodes the remaining samples, drains the encoder and writes the trailer. The caller then commits the
     * file. */
    void finish();

  private:
    void openEncoder();
    void openMuxer(const AudioSource& source);
    void encode(AVFrame* frame);
    void check(int result) const;

    EncoderPlan plan_;
    OutputFile& file_;
    AVFormatContext* muxer_ = nullptr;
    AVStream* stream_ = nullptr;
    CodecContextPtr encoder_;
    PacketPtr packet_;
    Reframer pending_;
    int64_t position_ = 0;  // frames given to the encoder
};

}  // namespace sonivex_tool
